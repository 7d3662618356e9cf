// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileTail_p.h>

#include <vector>

namespace qv::encrypted {

/// Finds the record that holds a plain position, walking from where it stood, from the file's start or from its end,
/// whichever is nearest. Keeps the last record decrypted.
class PlainReader {
public:
    /// The record that holds @p position, which lies before @p tail. Throws Failure where it or the way to it is
    /// damaged.
    GoodRecord const& recordAt(RecordReader& reader, Tail const& tail, qint64 position);
    /// Copies what one record holds from @p position on, at most @p maxSize bytes.
    qint64 read(RecordReader& reader, Tail const& tail, qint64 position, char* to, qint64 maxSize);
    void forget();

private:
    bool holds(qint64 position) const;
    /// From where to walk to @p position, the nearest first.
    std::vector<Tail> startsFor(Tail const& tail, qint64 position) const;

    GoodRecord m_current;
};

} // namespace qv::encrypted

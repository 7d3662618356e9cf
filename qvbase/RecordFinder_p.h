// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/EncryptedFormat_p.h>

#include <optional>

namespace qv::encrypted {

/// A record as far as it can be told without keys: checksum, both lengths and the file's end fit.
struct WholeRecord {
    qint64 offset = 0;
    RecordHeader header;

    qint64 end() const { return offset + header.length; }
    /// What follows it, but for the tag.
    Tail tail() const { return {end(), header.index + 1, qint64(header.plainOffset) + header.plainSize(), {}}; }
    /// Whether it is what is due there, or came with the same write.
    bool isOfWriteAt(Tail const& due) const;
};

/// Finds records by their bytes, and keeps a part of the file for that: what lies near what was asked for before costs
/// no call of the system. Every function throws Failure where the system cannot read.
class RecordFinder {
public:
    explicit RecordFinder(int fd);

    /// From here on the file is read anew.
    void forget() { m_window = Window(); }
    /// Keeps @p size bytes from where the file is read next, at the least. Most records are shorter than the default:
    /// one read brings header and payload.
    void readAhead(qint64 size) { m_usualSize = size; }

    /// Nothing where the file ends before. Good until the next call.
    uchar const* bytesAt(qint64 offset, qint64 size);

    /// A header alone, whether or not the rest of its record is there.
    std::optional<RecordHeader> headerAt(qint64 offset);
    std::optional<WholeRecord> wholeAt(qint64 offset);
    std::optional<WholeRecord> wholeEndingAt(qint64 end);
    /// The last whole record that ends at or before @p end, wherever it begins. Where none ends there, the bytes are
    /// searched in memory: each is read twice at most, in pieces of 2 MiB, whatever lengths they pretend to be.
    std::optional<WholeRecord> lastWholeUpTo(qint64 end);
    /// The first whole record that begins at or behind @p offset; searched likewise.
    std::optional<WholeRecord> firstWholeFrom(qint64 offset);

    struct Window {
        QByteArray bytes;
        qint64 offset = FileHeader::Length;
        bool isFileEnd = false;

        qint64 end() const { return offset + bytes.size(); }
        /// Nothing where not all of it was read.
        uchar const* at(qint64 from, qint64 size) const;
    };
    /// To be put back after a look elsewhere.
    Window window() const { return m_window; }
    void setWindow(Window const& window) { m_window = window; }

private:
    /// Needs the first @p size bytes, takes up to @p wanted.
    void load(qint64 offset, qint64 size, qint64 wanted);

    int m_fd;
    qint64 m_usualSize = 1024;
    Window m_window;
};

} // namespace qv::encrypted

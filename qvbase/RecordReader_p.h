// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileCipher_p.h>

#include <map>
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

/// A record whose tag has been checked.
struct GoodRecord : WholeRecord {
    Tag tag;
    QByteArray plain; ///< empty in a session record

    Tail tail() const { return Tail::behind(header, offset, tag.data()); }
};

/// Finds, checks and decrypts records. Every function throws Failure where the system cannot read.
class RecordReader {
public:
    enum Habit {
        Fresh, ///< what is told of a record is read when it is asked for
        Ahead ///< goodAt() may tell what was there since the reader was made: for one pass through the file
    };
    RecordReader(int fd, SecretKey const& fileKey, Habit habit = Fresh);
    ~RecordReader();

    qint64 fileSize() const;
    /// Whether the record before @p tail still is the last one: the file neither grew, shrank nor changed there.
    bool endsAt(Tail const& tail) const;
    Tag tagBefore(qint64 offset) const;

    bool endsInZeros(qint64 count) const;

    /// A header alone, whether or not the rest of its record is there.
    std::optional<RecordHeader> headerAt(qint64 offset) const;
    std::optional<WholeRecord> wholeAt(qint64 offset) const;
    std::optional<WholeRecord> wholeEndingAt(qint64 end) const;
    /// The last whole record that ends at or before @p end, wherever it begins.
    std::optional<WholeRecord> lastWholeUpTo(qint64 end) const;
    /// The first whole record that begins at or behind @p offset.
    std::optional<WholeRecord> firstWholeFrom(qint64 offset) const;

    /// Nothing where it is not whole or its tag is wrong.
    std::optional<GoodRecord> goodAt(qint64 offset);

private:
    /// Nothing where the file ends before. Good until the next call.
    uchar const* bytesAt(qint64 offset, qint64 size);
    bool open(GoodRecord& record, uchar const* from);
    bool openSession(GoodRecord const& record, RecordCipher::Associated const& with, uchar const* payload);
    bool openData(GoodRecord& record, RecordCipher::Associated const& with, uchar const* payload);
    RecordCipher* cipherOf(qint64 session);

    int m_fd;
    SecretKey m_fileKey;
    Habit m_habit;
    /// What bytesAt() has read, from where.
    QByteArray m_window;
    qint64 m_windowOffset = 0;
    /// By where the session's record begins.
    std::map<qint64, RecordCipher> m_ciphers;
};

} // namespace qv::encrypted

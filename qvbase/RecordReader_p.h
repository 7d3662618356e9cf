// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileCipher_p.h>
#include <qvbase/RecordFinder_p.h>

#include <map>
#include <optional>

namespace qv::encrypted {

/// A record whose tag has been checked.
struct GoodRecord : WholeRecord {
    Tag tag;
    QByteArray plain; ///< empty in a session record

    Tail tail() const { return Tail::behind(header, offset, tag.data()); }
};

/// Checks and decrypts records. Every function throws Failure where the system cannot read.
class RecordReader {
public:
    RecordReader(int fd, SecretKey const& fileKey);
    ~RecordReader();

    qint64 fileSize() const;
    /// Whether the record before @p tail still is the last one: the file neither grew, shrank nor changed there.
    bool endsAt(Tail const& tail) const;
    Tag tagBefore(qint64 offset) const;

    bool endsInZeros(qint64 count) const;

    /// What it has read counts until it is told to forget.
    RecordFinder& finder() { return m_finder; }

    /// Nothing where it is not whole or its tag is wrong.
    std::optional<GoodRecord> goodAt(qint64 offset);

private:
    uchar const* bytesOf(GoodRecord& record, qint64 offset);
    bool open(GoodRecord& record, uchar const* from);
    bool openSession(GoodRecord const& record, RecordCipher::Associated const& with, uchar const* payload);
    bool openData(GoodRecord& record, RecordCipher::Associated const& with, uchar const* payload);
    RecordCipher* cipherOf(qint64 session);

    struct Session {
        Bytes32 salt;
        RecordCipher cipher;
    };

    int m_fd;
    SecretKey m_fileKey;
    RecordFinder m_finder;
    /// By where the session's record begins.
    std::map<qint64, Session> m_sessions;
};

} // namespace qv::encrypted

// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileCipher_p.h>

#include <optional>
#include <vector>

namespace qv::encrypted {

/// Turns plain bytes into the bytes of records. Its session begins with the first of them; the key is never used
/// beyond the session, the number never goes back, whatever becomes of the bytes.
class RecordWriter {
public:
    /// What one seal() takes at most.
    static constexpr qint64 MaxSize = 16 * qint64(RecordHeader::MaxPayload);

    struct Bytes {
        uchar const* data;
        qint64 size;
    };

    explicit RecordWriter(SecretKey const& fileKey);

    /// The records that bring @p text behind @p tail, with a session record first where one is due; @p tail is then
    /// what follows them. Good until the next call.
    Bytes seal(Tail& tail, char const* text, qint64 size);
    /// The next record begins a new session. Needed where the bytes of the last seal() did not reach the file.
    void endSession() { m_session.reset(); }
    /// Whether the session's record stands in the file where it should, if there is one.
    bool isSessionIn(int fd) const;

private:
    struct Session {
        RecordCipher cipher;
        qint64 offset;
        std::vector<uchar> record;
        quint64 number;
        quint64 plainBytes;
    };

    void beginSession(Tail& tail);
    void sealData(Tail& tail, char const* text, int size);
    RecordHeader nextRecord(Tail const& tail, RecordType type, int payload);
    uchar* grow(RecordHeader const& header);
    void finish(Tail& tail, RecordHeader const& header, uchar* record);
    bool isSpent() const;

    SecretKey m_fileKey;
    std::optional<Session> m_session;
    /// Never shrinks, so that a record is written over the one before and not over zeros.
    std::vector<uchar> m_buffer;
    size_t m_used = 0;
    /// Of the next record within the write.
    quint16 m_place = 0;
};

} // namespace qv::encrypted

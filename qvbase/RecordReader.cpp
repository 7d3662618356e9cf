// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/RecordReader_p.h>

#include <qvbase/Failure_p.h>
#include <qvbase/NamedFile_p.h>

#include <QtEndian>

#include <algorithm>

namespace qv::encrypted {

namespace {

    constexpr size_t maxSessions = 64;

    QByteArray readAt(int fd, qint64 size, qint64 offset)
    {
        bool ok = false;
        QByteArray bytes = posix::readAt(fd, size, offset, &ok);
        require(ok);
        return bytes;
    }

    uchar const* octets(QByteArray const& bytes, qint64 offset = 0)
    {
        return reinterpret_cast<uchar const*>(bytes.constData()) + offset;
    }

} // namespace

RecordReader::RecordReader(int fd, SecretKey const& fileKey)
    : m_fd(fd)
    , m_fileKey(fileKey)
    , m_finder(fd)
{
}

RecordReader::~RecordReader() = default;

qint64 RecordReader::fileSize() const
{
    qint64 const size = posix::sizeOf(m_fd);
    require(size >= 0);
    return size;
}

bool RecordReader::endsAt(Tail const& tail) const
{
    std::array<uchar, RecordHeader::TagAndLength + 1> bytes;
    qint64 const offset = tail.end - RecordHeader::TagAndLength;
    // Before every append one call is enough: the system stops early between two pages only.
    constexpr qint64 pageSize = 4096;
    bool const mayStopEarly = tail.end % pageSize == 0;
    qint64 const count = mayStopEarly ? posix::readAt(m_fd, bytes.data(), qint64(bytes.size()), offset)
                                      : posix::readSomeAt(m_fd, bytes.data(), qint64(bytes.size()), offset);
    require(count >= 0);
    return count == RecordHeader::TagAndLength && std::equal(tail.tag.begin(), tail.tag.end(), bytes.begin());
}

Tag RecordReader::tagBefore(qint64 offset) const
{
    QByteArray const bytes = readAt(m_fd, sizeof(Tag), offset - RecordHeader::TagAndLength);
    Tag tag = {};
    std::copy_n(octets(bytes), bytes.size(), tag.begin());
    return tag;
}

bool RecordReader::endsInZeros(qint64 count) const
{
    QByteArray const bytes = readAt(m_fd, count, fileSize() - count);
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == 0; });
}

std::optional<GoodRecord> RecordReader::goodAt(qint64 offset)
{
    GoodRecord record;
    uchar const* const bytes = bytesOf(record, offset);
    return bytes && open(record, bytes) ? std::make_optional(std::move(record)) : std::nullopt;
}

/// From the tag and length before the record on; nothing where it is not whole.
uchar const* RecordReader::bytesOf(GoodRecord& record, qint64 offset)
{
    // The tag before it is authenticated with it.
    qint64 const from = offset - RecordHeader::TagAndLength;
    uchar const* bytes = m_finder.bytesAt(from, RecordHeader::TagAndLength + RecordHeader::Length);
    record.offset = offset;
    if (!bytes || !record.header.fromBytes(bytes + RecordHeader::TagAndLength, offset))
        return nullptr;
    quint32 const length = record.header.length;
    bytes = m_finder.bytesAt(from, qint64(RecordHeader::TagAndLength) + length);
    // Read again, it may have changed.
    bool const isWhole = bytes && record.header.fromBytes(bytes + RecordHeader::TagAndLength, offset)
        && record.header.length == length && qFromLittleEndian<quint32>(bytes + length + sizeof(Tag)) == length;
    return isWhole ? bytes : nullptr;
}

/// @p from the tag and length before the record.
bool RecordReader::open(GoodRecord& record, uchar const* from)
{
    uchar const* const header = from + RecordHeader::TagAndLength;
    uchar const* const payload = header + RecordHeader::Length;
    std::copy_n(payload + record.header.payload(), record.tag.size(), record.tag.begin());
    if (record.header.type == RecordType::Session)
        return openSession(record, {header, from, payload, record.header.payload()}, payload);
    return openData(record, {header, from, nullptr, 0}, payload);
}

bool RecordReader::openSession(GoodRecord const& record, RecordCipher::Associated const& with, uchar const* payload)
{
    auto const isAuthentic = [&](RecordCipher& cipher) {
        return cipher.open(record.header.number, with, nullptr, 0, nullptr, record.tag.data());
    };
    Bytes32 salt = {};
    std::copy_n(payload, salt.size(), salt.begin());
    auto const known = m_sessions.find(record.offset);
    if (known != m_sessions.end() && known->second.salt == salt)
        return isAuthentic(known->second.cipher);

    Session session = {salt, RecordCipher(deriveSessionKey(m_fileKey, payload))};
    if (!isAuthentic(session.cipher))
        return false;
    if (m_sessions.size() >= maxSessions)
        m_sessions.clear();
    m_sessions.insert_or_assign(record.offset, std::move(session));
    return true;
}

bool RecordReader::openData(GoodRecord& record, RecordCipher::Associated const& with, uchar const* payload)
{
    record.plain.resize(record.header.payload());
    auto* const plain = reinterpret_cast<uchar*>(record.plain.data());
    auto const session = qint64(record.header.session);
    auto const tryOpen = [&] {
        RecordCipher* const cipher = cipherOf(session);
        return cipher
            && cipher->open(record.header.number, with, payload, record.plain.size(), plain, record.tag.data());
    };
    if (tryOpen())
        return true;
    // The file may have been cut and gone on since: then another session begins there now.
    return m_sessions.erase(session) > 0 && tryOpen();
}

RecordCipher* RecordReader::cipherOf(qint64 session)
{
    auto known = m_sessions.find(session);
    if (known == m_sessions.end()) {
        // The record that asks still stands in it.
        RecordFinder::Window const window = m_finder.window();
        GoodRecord record;
        uchar const* const bytes = bytesOf(record, session);
        // A data record there would name another, and that the next: a way as deep as the file has records.
        if (bytes && record.header.type == RecordType::Session)
            open(record, bytes);
        m_finder.setWindow(window);
        known = m_sessions.find(session);
    }
    return known == m_sessions.end() ? nullptr : &known->second.cipher;
}

} // namespace qv::encrypted

// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/RecordReader_p.h>

#include <qvbase/Failure_p.h>
#include <qvbase/NamedFile_p.h>

#include <QtEndian>

#include <algorithm>

namespace qv::encrypted {

namespace {

    constexpr qint64 chunkSize = 65536;
    constexpr size_t maxCiphers = 64;

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

    quint32 lengthIn(QByteArray const& bytes, qint64 offset)
    {
        return qFromLittleEndian<quint32>(octets(bytes, offset));
    }

} // namespace

bool WholeRecord::isOfWriteAt(Tail const& due) const
{
    quint64 const first = header.index - header.place;
    bool const standsInIt = header.index >= due.index && (header.place > 0 || offset == due.end);
    return standsInIt && first <= due.index;
}

RecordReader::RecordReader(int fd, SecretKey const& fileKey, Habit habit)
    : m_fd(fd)
    , m_fileKey(fileKey)
    , m_habit(habit)
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

std::optional<RecordHeader> RecordReader::headerAt(qint64 offset) const
{
    QByteArray const bytes = readAt(m_fd, RecordHeader::Length, offset);
    RecordHeader header;
    bool const isHeader = bytes.size() == RecordHeader::Length && header.fromBytes(octets(bytes), offset);
    return isHeader ? std::make_optional(header) : std::nullopt;
}

std::optional<WholeRecord> RecordReader::wholeAt(qint64 offset) const
{
    auto const header = headerAt(offset);
    if (!header)
        return std::nullopt;
    WholeRecord const record = {offset, *header};
    QByteArray const again = readAt(m_fd, 4, record.end() - 4);
    bool const isWhole = again.size() == 4 && lengthIn(again, 0) == header->length;
    return isWhole ? std::make_optional(record) : std::nullopt;
}

std::optional<WholeRecord> RecordReader::wholeEndingAt(qint64 end) const
{
    QByteArray const bytes = readAt(m_fd, 4, end - 4);
    if (bytes.size() < 4)
        return std::nullopt;
    quint32 const length = lengthIn(bytes, 0);
    if (!RecordHeader::isLength(length) || end - length < FileHeader::Length)
        return std::nullopt;
    auto const record = wholeAt(end - length);
    return record && record->end() == end ? record : std::nullopt;
}

std::optional<WholeRecord> RecordReader::lastWholeUpTo(qint64 end) const
{
    constexpr qint64 lowestEnd = FileHeader::Length + RecordHeader::Overhead;
    while (end > lowestEnd) {
        qint64 const from = std::max(end - chunkSize, lowestEnd - 4);
        QByteArray const bytes = readAt(m_fd, end - from, from);
        for (qint64 at = bytes.size() - 4; at >= 0; --at) {
            if (!RecordHeader::isLength(lengthIn(bytes, at)))
                continue;
            if (auto record = wholeEndingAt(from + at + 4))
                return record;
        }
        end = from + 3;
    }
    return std::nullopt;
}

std::optional<WholeRecord> RecordReader::firstWholeFrom(qint64 offset) const
{
    for (;;) {
        QByteArray const bytes = readAt(m_fd, chunkSize, offset);
        int const count = bytes.size() - RecordHeader::Length + 1;
        for (int at = 0; at < count; ++at) {
            RecordHeader header;
            if (!header.fromBytes(octets(bytes, at), offset + at))
                continue;
            if (auto record = wholeAt(offset + at))
                return record;
        }
        if (bytes.size() < chunkSize)
            return std::nullopt;
        offset += count;
    }
}

uchar const* RecordReader::bytesAt(qint64 offset, qint64 size)
{
    // Most records are shorter: one read brings header and payload.
    constexpr qint64 usualSize = 1024;
    if (offset < m_windowOffset || offset + size > m_windowOffset + m_window.size()) {
        m_window = readAt(m_fd, std::max(size, m_habit == Ahead ? chunkSize : usualSize), offset);
        m_windowOffset = offset;
    }
    qint64 const at = offset - m_windowOffset;
    return at + size <= m_window.size() ? octets(m_window, at) : nullptr;
}

std::optional<GoodRecord> RecordReader::goodAt(qint64 offset)
{
    if (m_habit == Fresh)
        m_window.clear();
    // The tag before it is authenticated with it.
    qint64 const from = offset - RecordHeader::TagAndLength;
    uchar const* bytes = bytesAt(from, RecordHeader::TagAndLength + RecordHeader::Length);
    GoodRecord record;
    record.offset = offset;
    if (!bytes || !record.header.fromBytes(bytes + RecordHeader::TagAndLength, offset))
        return std::nullopt;
    quint32 const length = record.header.length;
    bytes = bytesAt(from, qint64(RecordHeader::TagAndLength) + length);
    // Read again, it may have changed.
    if (!bytes || !record.header.fromBytes(bytes + RecordHeader::TagAndLength, offset) || record.header.length != length
        || qFromLittleEndian<quint32>(bytes + length + sizeof(Tag)) != length)
        return std::nullopt;
    return open(record, bytes) ? std::make_optional(std::move(record)) : std::nullopt;
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
    RecordCipher cipher(deriveSessionKey(m_fileKey, payload), AesGcm::Open);
    if (!cipher.open(record.header.number, with, nullptr, 0, nullptr, record.tag.data()))
        return false;
    if (m_ciphers.size() >= maxCiphers)
        m_ciphers.clear();
    m_ciphers.insert_or_assign(record.offset, std::move(cipher));
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
    return m_ciphers.erase(session) > 0 && tryOpen();
}

RecordCipher* RecordReader::cipherOf(qint64 session)
{
    auto known = m_ciphers.find(session);
    if (known == m_ciphers.end()) {
        // The record that asks still stands in the window.
        QByteArray const window = m_window;
        qint64 const windowOffset = m_windowOffset;
        goodAt(session);
        m_window = window;
        m_windowOffset = windowOffset;
        known = m_ciphers.find(session);
    }
    return known == m_ciphers.end() ? nullptr : &known->second;
}

} // namespace qv::encrypted

// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/RecordWriter_p.h>

#include <qvbase/Failure_p.h>
#include <qvbase/NamedFile_p.h>

#include <QtEndian>

#include <algorithm>

namespace qv::encrypted {

namespace {

    uchar const* bytesOf(char const* text)
    {
        return reinterpret_cast<uchar const*>(text);
    }

    void requireCipher(bool succeeded)
    {
        if (!succeeded)
            throw Failure{QStringLiteral("The cipher or the source of random numbers failed")};
    }

} // namespace

RecordWriter::RecordWriter(SecretKey const& fileKey)
    : m_fileKey(fileKey)
{
}

RecordWriter::Bytes RecordWriter::seal(Tail& tail, char const* text, qint64 size)
{
    m_used = 0;
    m_place = 0;
    for (qint64 done = 0; done < size;) {
        if (!m_session || isSpent())
            beginSession(tail);
        int const count = int(std::min(size - done, qint64(RecordHeader::MaxPayload)));
        sealData(tail, text + done, count);
        done += count;
    }
    return {m_buffer.data(), qint64(m_used)};
}

bool RecordWriter::isSpent() const
{
    return m_session->number >= hooks().sessionRecords || m_session->plainBytes >= hooks().sessionBytes;
}

bool RecordWriter::isSessionIn(int fd) const
{
    if (!m_session)
        return true;
    std::vector<uchar> stored(m_session->record.size());
    qint64 const size = qint64(stored.size());
    return posix::readAt(fd, stored.data(), size, m_session->offset) == size && stored == m_session->record;
}

RecordHeader RecordWriter::nextRecord(Tail const& tail, RecordType type, int payload)
{
    RecordHeader header;
    header.length = RecordHeader::Overhead + quint32(payload);
    header.type = type;
    header.place = m_place++;
    header.index = tail.index;
    header.plainOffset = quint64(tail.plainSize);
    return header;
}

uchar* RecordWriter::grow(RecordHeader const& header)
{
    size_t const begin = m_used;
    m_used += header.length;
    if (m_used > m_buffer.size())
        m_buffer.resize(m_used);
    uchar* const record = m_buffer.data() + begin;
    header.toBytes(record);
    return record;
}

/// The tag stands in the record already.
void RecordWriter::finish(Tail& tail, RecordHeader const& header, uchar* record)
{
    qToLittleEndian(header.length, record + header.length - 4);
    tail = Tail::behind(header, tail.end, record + header.length - RecordHeader::TagAndLength);
}

void RecordWriter::beginSession(Tail& tail)
{
    auto const salt = randomBytes32();
    requireCipher(salt.has_value());
    RecordHeader header = nextRecord(tail, RecordType::Session, int(salt->size()));
    header.session = quint64(tail.end);
    m_session.emplace(Session{RecordCipher(deriveSessionKey(m_fileKey, salt->data())), tail.end, {}, 1, 0});

    uchar* const record = grow(header);
    uchar* const payload = record + RecordHeader::Length;
    std::copy(salt->begin(), salt->end(), payload);
    requireCipher(m_session->cipher.seal(header.number, {record, tail.tag.data(), payload, header.payload()}, nullptr,
        0, nullptr, payload + header.payload()));
    finish(tail, header, record);
    m_session->record.assign(record, record + header.length);
}

void RecordWriter::sealData(Tail& tail, char const* text, int size)
{
    RecordHeader header = nextRecord(tail, RecordType::Data, size);
    header.session = quint64(m_session->offset);
    header.number = m_session->number++;
    m_session->plainBytes += quint64(size);

    uchar* const record = grow(header);
    uchar* const payload = record + RecordHeader::Length;
    requireCipher(m_session->cipher.seal(
        header.number, {record, tail.tag.data(), nullptr, 0}, bytesOf(text), size, payload, payload + size));
    finish(tail, header, record);
}

} // namespace qv::encrypted

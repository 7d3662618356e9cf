// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/RecordFinder_p.h>

#include <qvbase/Failure_p.h>
#include <qvbase/NamedFile_p.h>

#include <QtEndian>

#include <algorithm>

namespace qv::encrypted {

namespace {

    constexpr qint64 maxRecord = RecordHeader::Overhead + RecordHeader::MaxPayload;
    constexpr qint64 searchSize = 2 * maxRecord;

    quint32 lengthIn(uchar const* bytes)
    {
        return qFromLittleEndian<quint32>(bytes);
    }

    /// @p bytesOf tells the bytes of the file at an offset, or nothing.
    template <typename BytesOf> std::optional<WholeRecord> wholeBy(BytesOf bytesOf, qint64 offset)
    {
        WholeRecord record;
        record.offset = offset;
        uchar const* const header = bytesOf(offset, RecordHeader::Length);
        if (!header || !record.header.fromBytes(header, offset))
            return std::nullopt;
        uchar const* const again = bytesOf(record.end() - 4, 4);
        return again && lengthIn(again) == record.header.length ? std::make_optional(record) : std::nullopt;
    }

    template <typename BytesOf> std::optional<WholeRecord> wholeEndingBy(BytesOf bytesOf, qint64 end)
    {
        uchar const* const last = bytesOf(end - 4, 4);
        quint32 const length = last ? lengthIn(last) : 0;
        if (!RecordHeader::isLength(length) || end - length < FileHeader::Length)
            return std::nullopt;
        WholeRecord record;
        record.offset = end - length;
        uchar const* const header = bytesOf(record.offset, RecordHeader::Length);
        bool const isWhole = header && record.header.fromBytes(header, record.offset) && record.end() == end;
        return isWhole ? std::make_optional(record) : std::nullopt;
    }

} // namespace

bool WholeRecord::isOfWriteAt(Tail const& due) const
{
    quint64 const first = header.index - header.place;
    bool const standsInIt = header.index >= due.index && (header.place > 0 || offset == due.end);
    return standsInIt && first <= due.index;
}

RecordFinder::RecordFinder(int fd)
    : m_fd(fd)
{
}

uchar const* RecordFinder::Window::at(qint64 from, qint64 size) const
{
    bool const isIn = from >= offset && from + size <= end();
    return isIn ? reinterpret_cast<uchar const*>(bytes.constData()) + (from - offset) : nullptr;
}

void RecordFinder::load(qint64 offset, qint64 size, qint64 wanted)
{
    QByteArray bytes(int(wanted), Qt::Uninitialized);
    qint64 count = posix::readSomeAt(m_fd, bytes.data(), wanted, offset);
    if (count >= 0 && count < size) {
        qint64 const more = posix::readAt(m_fd, bytes.data() + count, wanted - count, offset + count);
        count = more < 0 ? more : count + more;
    }
    require(count >= 0);
    bytes.truncate(int(count));
    m_window = {bytes, offset, count < size};
}

uchar const* RecordFinder::bytesAt(qint64 offset, qint64 size)
{
    if (!m_window.at(offset, size))
        load(offset, size, std::max(size, m_usualSize));
    return m_window.at(offset, size);
}

std::optional<RecordHeader> RecordFinder::headerAt(qint64 offset)
{
    uchar const* const bytes = bytesAt(offset, RecordHeader::Length);
    RecordHeader header;
    return bytes && header.fromBytes(bytes, offset) ? std::make_optional(header) : std::nullopt;
}

std::optional<WholeRecord> RecordFinder::wholeAt(qint64 offset)
{
    return wholeBy([this](qint64 from, qint64 size) { return bytesAt(from, size); }, offset);
}

std::optional<WholeRecord> RecordFinder::wholeEndingAt(qint64 end)
{
    if (!m_window.at(end - 4, 4)) {
        qint64 const from = std::max(end - m_usualSize, qint64(0));
        load(from, end - from, end - from);
    }
    return wholeEndingBy([this](qint64 from, qint64 size) { return bytesAt(from, size); }, end);
}

std::optional<WholeRecord> RecordFinder::lastWholeUpTo(qint64 end)
{
    constexpr qint64 lowestEnd = FileHeader::Length + RecordHeader::Overhead;
    auto const inWindow = [this](qint64 from, qint64 size) { return m_window.at(from, size); };
    if (auto record = end > lowestEnd ? wholeEndingAt(end) : std::nullopt)
        return record;
    while (end > lowestEnd) {
        // All that a length there may lead back to is read before.
        qint64 const from = std::max(end - maxRecord, qint64(0));
        if (!m_window.at(from, end - from)) {
            qint64 const begin = std::max(end - searchSize, qint64(0));
            load(begin, end - begin, end - begin);
            // The file may have been cut meanwhile.
            end = m_window.end();
        }
        if (auto record = wholeEndingBy(inWindow, end))
            return record;
        --end;
    }
    return std::nullopt;
}

std::optional<WholeRecord> RecordFinder::firstWholeFrom(qint64 offset)
{
    auto const inWindow = [this](qint64 from, qint64 size) { return m_window.at(from, size); };
    for (;; ++offset) {
        bool const isEnough = offset >= m_window.offset && (m_window.isFileEnd || offset + maxRecord <= m_window.end());
        if (!isEnough)
            load(offset, searchSize, searchSize);
        if (offset + RecordHeader::Overhead > m_window.end())
            return std::nullopt;
        if (auto record = wholeBy(inWindow, offset))
            return record;
    }
}

} // namespace qv::encrypted

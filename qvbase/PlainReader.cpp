// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/PlainReader_p.h>

#include <qvbase/Failure_p.h>

#include <openssl/crypto.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace qv::encrypted {

namespace {

    bool holdsPosition(RecordHeader const& header, qint64 position)
    {
        qint64 const begin = qint64(header.plainOffset);
        return position >= begin && position < begin + header.plainSize();
    }

    /// What follows @p at, if it is what must follow.
    std::optional<WholeRecord> after(RecordReader& reader, Tail const& at)
    {
        auto const record = reader.finder().wholeAt(at.end);
        return record && at.isContinuedBy(record->header) ? record : std::nullopt;
    }

    std::optional<WholeRecord> before(RecordReader& reader, Tail const& at)
    {
        auto const record = reader.finder().wholeEndingAt(at.end);
        return record && record->tail().isSamePlace(at) ? record : std::nullopt;
    }

    /// The first record from @p at on that has text.
    std::optional<GoodRecord> readOn(RecordReader& reader, Tail at)
    {
        auto record = reader.goodAt(at.end);
        while (record && at.isContinuedBy(record->header) && record->plain.isEmpty()) {
            at = record->tail();
            record = reader.goodAt(at.end);
        }
        return record && at.isContinuedBy(record->header) ? std::move(record) : std::nullopt;
    }

    /// Record by record from @p at towards @p position; nothing where the way is damaged.
    std::optional<WholeRecord> walk(RecordReader& reader, Tail at, qint64 position)
    {
        bool const isForward = position >= at.plainSize;
        auto record = isForward ? after(reader, at) : before(reader, at);
        while (record && !holdsPosition(record->header, position)) {
            at = isForward ? record->tail() : Tail::before(record->header, record->offset);
            record = isForward ? after(reader, at) : before(reader, at);
        }
        return record;
    }

    std::optional<GoodRecord> search(RecordReader& reader, Tail const& start, qint64 position)
    {
        auto const place = walk(reader, start, position);
        return place ? reader.goodAt(place->offset) : std::nullopt;
    }

    [[noreturn]] void throwDamage()
    {
        throw Failure{QStringLiteral("The file is damaged where it is read")};
    }

} // namespace

void PlainReader::forget()
{
    OPENSSL_cleanse(m_current.plain.data(), size_t(m_current.plain.size()));
    m_current = GoodRecord();
}

bool PlainReader::holds(qint64 position) const
{
    return m_current.offset > 0 && holdsPosition(m_current.header, position);
}

GoodRecord const& PlainReader::recordAt(RecordReader& reader, Tail const& tail, qint64 position)
{
    if (holds(position))
        return m_current;
    reader.finder().forget();
    for (Tail const& start : startsFor(tail, position)) {
        auto record = start.plainSize == position ? readOn(reader, start) : search(reader, start, position);
        if (record) {
            m_current = std::move(*record);
            return m_current;
        }
        // Read on from there, the fault is met; another way would lead around it.
        if (start.plainSize == position)
            break;
    }
    throwDamage();
}

std::vector<Tail> PlainReader::startsFor(Tail const& tail, qint64 position) const
{
    std::vector<Tail> starts = {Tail(), tail};
    if (m_current.offset > 0)
        starts.insert(starts.end(), {m_current.tail(), Tail::before(m_current.header, m_current.offset)});
    std::stable_sort(starts.begin(), starts.end(), [position](Tail const& a, Tail const& b) {
        return std::abs(a.plainSize - position) < std::abs(b.plainSize - position);
    });
    return starts;
}

qint64 PlainReader::read(RecordReader& reader, Tail const& tail, qint64 position, char* to, qint64 maxSize)
{
    GoodRecord const& record = recordAt(reader, tail, position);
    // A file's end that tells of less than stands before it would hide the rest.
    if (record.tail().plainSize > tail.plainSize)
        throwDamage();
    qint64 const skipped = position - qint64(record.header.plainOffset);
    qint64 const count = std::min(maxSize, record.plain.size() - skipped);
    std::memcpy(to, record.plain.constData() + skipped, size_t(count));
    return count;
}

} // namespace qv::encrypted

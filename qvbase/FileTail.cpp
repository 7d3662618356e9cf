// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileTail_p.h>

#include <qvbase/Failure_p.h>
#include <qvbase/NamedFile_p.h>

#include <algorithm>

namespace qv::encrypted {

using Verified = FileEncrypt::VerifyResult;

namespace {

    /// Two whole records, both bad, that are not of one write: no crash leaves that, and nothing is gained by looking
    /// further. The places within a write go down on the way, so there is an end to it.
    bool areOfOneWrite(WholeRecord const& earlier, std::optional<WholeRecord> const& later)
    {
        return !later
            || (earlier.header.place < later->header.place
                && earlier.header.index - earlier.header.place == later->header.index - later->header.place);
    }

    bool hasMisplacedRecord(RecordReader& reader, Tail const& due)
    {
        std::optional<WholeRecord> before;
        auto record = reader.finder().firstWholeFrom(due.end);
        while (record && record->isOfWriteAt(due) && (!before || areOfOneWrite(*before, record))) {
            before = record;
            record = reader.finder().firstWholeFrom(record->end());
        }
        return record.has_value();
    }

    bool isCutShort(RecordReader& reader, Tail const& due, qint64 restSize)
    {
        auto const header = reader.finder().headerAt(due.end);
        return restSize < RecordHeader::Overhead || (header && header->length > restSize);
    }

    Tail startOf(FileHeader const& header)
    {
        Tail tail;
        tail.tag = header.chainStart();
        return tail;
    }

    /// Whether @p record continues the one before it. What is not there, or damaged, is not looked for.
    bool followsOn(WholeRecord const& record, std::optional<WholeRecord> const& before)
    {
        if (record.offset == FileHeader::Length)
            return Tail().isContinuedBy(record.header);
        return !before || before->tail().isContinuedBy(record.header);
    }

    /// Whether the records that came with the same write stand before @p record, for a loss of power may leave its end
    /// alone, and all of them in their order. @p record is then the first of them that does: where the write is not
    /// whole, none behind that is any better.
    bool isWriteWhole(RecordReader& reader, WholeRecord& record)
    {
        for (;;) {
            auto const before = reader.finder().wholeEndingAt(record.offset);
            if (!followsOn(record, before))
                return false;
            int const place = record.header.place;
            if (place == 0)
                return true;
            if (!before || before->header.place != place - 1 || !reader.goodAt(before->offset))
                return false;
            record = *before;
        }
    }

    FileTail withRest(RecordReader& reader, Tail const& tail, qint64 fileSize)
    {
        FileTail result = {tail, fileSize, Verified::Intact};
        if (tail.end < fileSize)
            result.rest = classOfRest(reader, tail);
        return result;
    }

    FileTail searchTail(RecordReader& reader, FileHeader const& header)
    {
        qint64 const size = reader.fileSize();
        std::optional<WholeRecord> bad;
        qint64 end = size;
        while (auto record = reader.finder().lastWholeUpTo(end)) {
            auto const good = reader.goodAt(record->offset);
            if (good && isWriteWhole(reader, *record))
                return withRest(reader, good->tail(), size);
            if (!areOfOneWrite(*record, bad))
                return {Tail::before(record->header, record->offset), size, Verified::RecordDamaged};
            bad = record;
            end = record->offset;
        }
        return withRest(reader, startOf(header), size);
    }

} // namespace

qint64 FileTail::readableSize() const
{
    bool const isSuspect = rest == Verified::TornOrTampered || rest == Verified::RecordDamaged;
    return tail.plainSize + (isSuspect ? std::max(restSize() - qint64(RecordHeader::Overhead), qint64(1)) : 0);
}

FileTail::Class classOfRest(RecordReader& reader, Tail const& due)
{
    reader.finder().forget();
    qint64 const restSize = reader.fileSize() - due.end;
    // An authentic record that does not follow was put there by somebody with the password.
    if (reader.goodAt(due.end) || hasMisplacedRecord(reader, due))
        return Verified::RecordDamaged;
    if (isCutShort(reader, due, restSize) || reader.endsInZeros(std::min(restSize, qint64(RecordHeader::TagAndLength))))
        return Verified::Torn;
    return Verified::TornOrTampered;
}

FileTail findTail(RecordReader& reader, FileHeader const& header)
{
    reader.finder().forget();
    FileTail result = searchTail(reader, header);
    reader.finder().forget();
    return result;
}

} // namespace qv::encrypted

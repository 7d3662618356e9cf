// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileVerifier_p.h>

#include <qvbase/EncryptedFile_p.h>

#include <QtEndian>

namespace qv::encrypted {

using Verified = FileEncrypt::VerifyResult;

namespace {

    constexpr int anchorSize = 56;

    QString textOf(Verified::Class result)
    {
        switch (result) {
        case Verified::Intact:
            break;
        case Verified::Torn:
            return QStringLiteral("The last write is incomplete");
        case Verified::TornOrTampered:
            return QStringLiteral("The last write is torn or was tampered with");
        case Verified::RecordDamaged:
            return QStringLiteral("A record is damaged, or is not the one that belongs here");
        case Verified::HeaderRefused:
        case Verified::NotReadable:
            break;
        }
        return {};
    }

    /// What a keeper noted of the file at an earlier time.
    struct Anchor {
        explicit Anchor(QByteArray const& bytes)
            : isGiven(!bytes.isEmpty())
            , isValid(bytes.size() == anchorSize)
            , fileId(bytes.left(32))
            , count(isValid ? qFromLittleEndian<quint64>(bytes.constData() + 32) : 0)
            , tag(bytes.mid(40))
        {
        }
        bool isOf(FileHeader const& header) const { return isValid && header.bytes().mid(60, fileId.size()) == fileId; }
        bool isPassedWith(Tail const& tail) const
        {
            return !isGiven || tail.index != count
                || QByteArray(reinterpret_cast<char const*>(tail.tag.data()), tag.size()) == tag;
        }

        bool isGiven;
        bool isValid;
        QByteArray fileId;
        quint64 count;
        QByteArray tag;
    };

    Verified notAnchored(Tail const& tail)
    {
        return {Verified::RecordDamaged, tail.end, qint64(tail.index),
            QStringLiteral("The file does not continue the anchor")};
    }

    Verified walk(RecordReader& reader, Tail tail, Anchor const& anchor)
    {
        int place = -1;
        for (qint64 size = 0; tail.end < size || tail.end < (size = reader.fileSize());) {
            auto const record = reader.goodAt(tail.end);
            bool const isNext = record && tail.isContinuedBy(record->header)
                && (record->header.place == 0 || record->header.place == place + 1);
            if (!isNext) {
                Verified::Class const result = classOfRest(reader, tail);
                return {result, tail.end, qint64(tail.index), textOf(result)};
            }
            tail = record->tail();
            place = record->header.place;
            if (!anchor.isPassedWith(tail))
                return notAnchored(tail);
        }
        if (anchor.isGiven && tail.index < anchor.count)
            return notAnchored(tail);
        return {Verified::Intact, tail.end, qint64(tail.index), {}};
    }

    Verified verify(int fd, Credentials const& credentials, Anchor const& anchor)
    {
        auto const found = readHeader(fd, credentials);
        if (!found) {
            bool const isEmpty = posix::sizeOf(fd) == 0;
            Verified::Class const result = isEmpty ? Verified::Intact : Verified::Torn;
            return isEmpty && anchor.isGiven ? notAnchored({0, 0, 0, {}}) : Verified{result, 0, 0, textOf(result)};
        }
        RecordReader reader(fd, found->second.fileKey);
        reader.finder().readAhead(65536);
        Tail start;
        start.tag = found->first.chainStart();
        bool const isAnchored = !anchor.isGiven || (anchor.isOf(found->first) && anchor.isPassedWith(start));
        return isAnchored ? walk(reader, start, anchor) : notAnchored(start);
    }

} // namespace

Verified verifyFile(int fd, Credentials const& credentials, QByteArray const& anchor)
{
    // A fault at the end of a file that grows may be a write in progress.
    for (;;) {
        qint64 const before = posix::sizeOf(fd);
        Verified result = verify(fd, credentials, Anchor(anchor));
        if (result.result == Verified::Intact || posix::sizeOf(fd) == before)
            return result;
    }
}

} // namespace qv::encrypted

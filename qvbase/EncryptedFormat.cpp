// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFormat_p.h>

#include <qvbase/Crc32c_p.h>

#include <QtEndian>

#include <algorithm>

namespace qv::encrypted {

namespace {

    constexpr std::array<uchar, 8> magic = {0x89, 0x41, 0x4C, 0x45, 0x0D, 0x0A, 0x1A, 0x0A};
    constexpr quint16 majorVersion = 1;
    /// Any version keeps its header within this, so that the checksum can be found.
    constexpr quint32 maxHeaderLength = 4096;
    /// Offsets and counts beyond it are refused, so that sums of a few of them fit 63 bits.
    constexpr quint64 maxNumber = Q_UINT64_C(1) << 61;

    namespace header {
        constexpr int Major = 8, HeaderLength = 12, LogN = 16, R = 20, P = 24, Salt = 28, FileId = 60, Mac = 92,
                      Crc = 124;
    }
    namespace record {
        constexpr int Type = 4, Place = 6, Index = 8, PlainOffset = 16, Session = 24, Number = 32, Crc = 40;
    }

    template <typename Number> Number get(uchar const* from)
    {
        return qFromLittleEndian<Number>(from);
    }
    template <typename Number> void put(Number value, uchar* to)
    {
        qToLittleEndian<Number>(value, to);
    }
    uchar const* data(QByteArray const& bytes)
    {
        return reinterpret_cast<uchar const*>(bytes.constData());
    }
    template <typename Bytes> QByteArray asByteArray(Bytes const& bytes)
    {
        return QByteArray(reinterpret_cast<char const*>(bytes.data()), int(bytes.size()));
    }
    Bytes32 bytes32(QByteArray const& bytes, int offset)
    {
        Bytes32 result;
        std::copy_n(data(bytes) + offset, result.size(), result.begin());
        return result;
    }
    bool endsInZeros(QByteArray const& bytes, int count)
    {
        return std::all_of(bytes.end() - count, bytes.end(), [](char c) { return c == 0; });
    }

} // namespace

bool ScryptCost::isGranted() const
{
    auto const within = [](quint32 value, quint32 bound) { return value >= 1 && value <= bound; };
    // RFC 7914: N is less than 2^(128 r / 8).
    return within(logN, 17) && within(r, 8) && within(p, 8) && logN < 16 * r;
}

FileHeader::FileHeader(ScryptCost cost, Bytes32 const& salt, Bytes32 const& fileId)
{
    std::array<uchar, Length> bytes = {};
    uchar* const to = bytes.data();
    std::copy(magic.begin(), magic.end(), to);
    put(majorVersion, to + header::Major);
    put(quint32(Length), to + header::HeaderLength);
    put(cost.logN, to + header::LogN);
    put(cost.r, to + header::R);
    put(cost.p, to + header::P);
    std::copy(salt.begin(), salt.end(), to + header::Salt);
    std::copy(fileId.begin(), fileId.end(), to + header::FileId);
    m_bytes = asByteArray(bytes);
}

FileEncrypt::HeaderError FileHeader::check(QByteArray const& bytes)
{
    if (!bearsMagic(bytes))
        return FileEncrypt::NotOurFormat;
    auto const length = get<quint32>(data(bytes) + header::HeaderLength);
    if (length < Length || length > maxHeaderLength || length > quint32(bytes.size()))
        return FileEncrypt::Damaged;
    int const crc = int(length) - 4;
    if (get<quint32>(data(bytes) + crc) != crc32c(data(bytes), crc))
        return FileEncrypt::Damaged;
    if (get<quint16>(data(bytes) + header::Major) != majorVersion)
        return FileEncrypt::UnknownVersion;
    return length == Length && fromBytes(bytes).cost().isGranted() ? FileEncrypt::NoHeaderError : FileEncrypt::Damaged;
}

bool FileHeader::isTorn(QByteArray const& bytes)
{
    if (bytes.size() > Length)
        return false;
    int const begun = std::min(bytes.size(), int(magic.size()));
    bool const isBegun = std::equal(data(bytes), data(bytes) + begun, magic.begin());
    if (bytes.size() < Length)
        return isBegun || endsInZeros(bytes, bytes.size());
    return (isBegun && endsInZeros(bytes, 32)) || endsInZeros(bytes, Length);
}

bool FileHeader::bearsMagic(QByteArray const& bytes)
{
    return bytes.size() >= int(magic.size()) && std::equal(magic.begin(), magic.end(), data(bytes));
}

FileHeader FileHeader::fromBytes(QByteArray const& bytes)
{
    FileHeader result;
    result.m_bytes = bytes.left(Length);
    return result;
}

ScryptCost FileHeader::cost() const
{
    uchar const* const from = data(m_bytes);
    return {get<quint32>(from + header::LogN), get<quint32>(from + header::R), get<quint32>(from + header::P)};
}

Bytes32 FileHeader::salt() const
{
    return bytes32(m_bytes, header::Salt);
}

Bytes32 FileHeader::fileId() const
{
    return bytes32(m_bytes, header::FileId);
}

Bytes32 FileHeader::mac() const
{
    return bytes32(m_bytes, header::Mac);
}

void FileHeader::setMac(Bytes32 const& mac)
{
    m_bytes.replace(header::Mac, int(mac.size()), asByteArray(mac));
    std::array<uchar, 4> crc;
    put(crc32c(data(m_bytes), header::Crc), crc.data());
    m_bytes.replace(header::Crc, int(crc.size()), asByteArray(crc));
}

Tag FileHeader::chainStart() const
{
    Tag tag;
    std::copy_n(data(m_bytes) + Length - RecordHeader::TagAndLength, tag.size(), tag.begin());
    return tag;
}

void RecordHeader::toBytes(uchar* bytes) const
{
    put(length, bytes);
    put(quint16(type), bytes + record::Type);
    put(place, bytes + record::Place);
    put(index, bytes + record::Index);
    put(plainOffset, bytes + record::PlainOffset);
    put(session, bytes + record::Session);
    put(number, bytes + record::Number);
    put(crc32c(bytes, record::Crc), bytes + record::Crc);
}

bool RecordHeader::fromBytes(uchar const* bytes, qint64 offset)
{
    length = get<quint32>(bytes);
    type = RecordType(get<quint16>(bytes + record::Type));
    // First what is cheap to tell: a search for records tries every byte.
    if (!isLength(length) || (type != RecordType::Session && type != RecordType::Data))
        return false;
    if (get<quint32>(bytes + record::Crc) != crc32c(bytes, record::Crc))
        return false;
    place = get<quint16>(bytes + record::Place);
    index = get<quint64>(bytes + record::Index);
    plainOffset = get<quint64>(bytes + record::PlainOffset);
    session = get<quint64>(bytes + record::Session);
    number = get<quint64>(bytes + record::Number);
    if (std::max({index, plainOffset, session}) > maxNumber || place > index)
        return false;
    if (type == RecordType::Session)
        return session == quint64(offset) && number == 0 && payload() == int(SessionPayload);
    return session >= quint64(FileHeader::Length) && session < quint64(offset) && number > 0;
}

Tail Tail::before(RecordHeader const& header, qint64 offset)
{
    return {offset, header.index, qint64(header.plainOffset), {}};
}

Tail Tail::behind(RecordHeader const& header, qint64 offset, uchar const* tag)
{
    Tail tail = {offset + header.length, header.index + 1, qint64(header.plainOffset) + header.plainSize(), {}};
    std::copy_n(tag, tail.tag.size(), tail.tag.begin());
    return tail;
}

bool Tail::isSamePlace(Tail const& other) const
{
    return end == other.end && index == other.index && plainSize == other.plainSize;
}

bool Tail::isContinuedBy(RecordHeader const& header) const
{
    return header.index == index && header.plainOffset == quint64(plainSize);
}

} // namespace qv::encrypted

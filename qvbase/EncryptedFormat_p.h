// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileEncrypt.h>

#include <QByteArray>
#include <QtGlobal>

#include <array>

/// The bytes of an encrypted file, without keys. docs/formats.md describes them; stored, never change the numbers.
namespace qv::encrypted {

using Bytes32 = std::array<uchar, 32>;
using Tag = std::array<uchar, 16>;

struct ScryptCost {
    quint32 logN = 15;
    quint32 r = 8;
    quint32 p = 3;

    /// Beyond this a file could ask for gigabytes or minutes. At the bound, scrypt takes 128 MiB.
    bool isGranted() const;
    bool operator==(ScryptCost const& other) const { return logN == other.logN && r == other.r && p == other.p; }
};

/// The header of a file, kept as the bytes that are stored.
class FileHeader {
public:
    static constexpr int Length = 128;
    static constexpr int AuthenticatedLength = 92;

    FileHeader() = default;
    /// A header of the version written today; its mac is still to be set.
    FileHeader(ScryptCost cost, Bytes32 const& salt, Bytes32 const& fileId);

    /// Why @p bytes (at least Length) are no header, or NoHeaderError. Says nothing about the mac.
    static FileEncrypt::HeaderError check(QByteArray const& bytes);
    /// Whether a file that begins with @p bytes (all it has, or more than Length) was torn when it was made.
    static bool isTorn(QByteArray const& bytes);
    static bool bearsMagic(QByteArray const& bytes);
    /// @p bytes have passed check().
    static FileHeader fromBytes(QByteArray const& bytes);

    bool isNull() const { return m_bytes.isEmpty(); }
    QByteArray const& bytes() const { return m_bytes; }
    QByteArray authenticated() const { return m_bytes.left(AuthenticatedLength); }
    ScryptCost cost() const;
    Bytes32 salt() const;
    Bytes32 fileId() const;
    Bytes32 mac() const;
    void setMac(Bytes32 const& mac);
    /// What stands for "the tag of the record before" at the first record.
    Tag chainStart() const;

private:
    QByteArray m_bytes;
};

enum class RecordType : quint16 { Session = 1, Data = 2 };

struct RecordHeader {
    static constexpr int Length = 44;
    /// Header, tag and the repeated length.
    static constexpr quint32 Overhead = 64;
    static constexpr int TagAndLength = 20;
    static constexpr quint32 MaxPayload = 1048576;
    static constexpr quint32 SessionPayload = 32;

    quint32 length = 0;
    RecordType type = RecordType::Data;
    quint16 place = 0;
    quint64 index = 0;
    quint64 plainOffset = 0;
    quint64 session = 0;
    quint64 number = 0;

    static bool isLength(quint32 length) { return length > Overhead && length <= Overhead + MaxPayload; }
    int payload() const { return static_cast<int>(length - Overhead); }
    int plainSize() const { return type == RecordType::Data ? payload() : 0; }
    void toBytes(uchar* bytes) const;
    /// Whether @p bytes (Length of them) are the header of a record that begins at @p offset of its file.
    bool fromBytes(uchar const* bytes, qint64 offset);
};

/// What the next record of a file continues.
struct Tail {
    qint64 end = FileHeader::Length; ///< where in the file it will begin
    quint64 index = 0;
    qint64 plainSize = 0;
    Tag tag = {};

    static Tail before(RecordHeader const& header, qint64 offset);
    static Tail behind(RecordHeader const& header, qint64 offset, uchar const* tag);
    bool isSamePlace(Tail const& other) const;
    bool isContinuedBy(RecordHeader const& header) const;
};

} // namespace qv::encrypted

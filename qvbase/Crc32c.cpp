// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/Crc32c_p.h>

#include <QtEndian>

#include <array>

#ifdef Q_PROCESSOR_X86_64
#include <nmmintrin.h>
#endif

namespace qv {

namespace {

    constexpr quint32 startAndFinalXor = 0xFFFFFFFFu;

    /// What a byte adds to the checksum, with 0 to 3 bytes behind it.
    using CrcTables = std::array<std::array<quint32, 256>, 4>;

    constexpr CrcTables crcTables()
    {
        constexpr quint32 reflectedPolynomial = 0x82F63B78u;
        CrcTables tables = {};
        for (quint32 i = 0; i < 256; ++i) {
            quint32 value = i;
            for (int bit = 0; bit < 8; ++bit)
                value = (value >> 1) ^ ((value & 1) ? reflectedPolynomial : 0);
            tables[0][i] = value;
        }
        for (size_t i = 0; i < 256; ++i) {
            for (size_t behind = 1; behind < 4; ++behind)
                tables[behind][i] = (tables[behind - 1][i] >> 8) ^ tables[0][tables[behind - 1][i] & 0xFFu];
        }
        return tables;
    }

#ifdef Q_PROCESSOR_X86_64
    bool hasInstruction()
    {
        static bool const has = __builtin_cpu_supports("sse4.2") != 0;
        return has;
    }

    __attribute__((target("sse4.2"))) quint32 crc32cByInstruction(uchar const* bytes, qint64 size)
    {
        quint64 value = startAndFinalXor;
        for (; size >= 8; size -= 8, bytes += 8)
            value = _mm_crc32_u64(value, qFromLittleEndian<quint64>(bytes));
        for (; size > 0; --size, ++bytes)
            value = _mm_crc32_u8(quint32(value), *bytes);
        return quint32(value) ^ startAndFinalXor;
    }
#endif

} // namespace

quint32 crc32c(uchar const* bytes, qint64 size)
{
#ifdef Q_PROCESSOR_X86_64
    if (hasInstruction())
        return crc32cByInstruction(bytes, size);
#endif
    return crc32cByTables(bytes, size);
}

quint32 crc32cByTables(uchar const* bytes, qint64 size)
{
    static constexpr CrcTables tables = crcTables();
    quint32 value = startAndFinalXor;
    for (; size >= 4; size -= 4, bytes += 4) {
        value ^= qFromLittleEndian<quint32>(bytes);
        value = tables[3][value & 0xFFu] ^ tables[2][(value >> 8) & 0xFFu] ^ tables[1][(value >> 16) & 0xFFu]
            ^ tables[0][value >> 24];
    }
    for (; size > 0; --size, ++bytes)
        value = (value >> 8) ^ tables[0][(value ^ *bytes) & 0xFFu];
    return value ^ startAndFinalXor;
}

} // namespace qv

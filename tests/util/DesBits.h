// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>

/// A block or key of DES as 64 bytes of 0 or 1, the most significant bit first, which setkey_r and encrypt_r work on.
inline QByteArray bitsOf(QByteArray const& eightBytes)
{
    QByteArray bits;
    for (char const byte : eightBytes) {
        for (int bit = 7; bit >= 0; --bit)
            bits += static_cast<char>((byte >> bit) & 1);
    }
    return bits;
}

inline QByteArray bytesOf(QByteArray const& bits)
{
    QByteArray bytes(bits.size() / 8, '\0');
    for (int i = 0; i < bits.size(); ++i)
        bytes[i / 8] = static_cast<char>(bytes[i / 8] | bits[i] << (7 - i % 8));
    return bytes;
}

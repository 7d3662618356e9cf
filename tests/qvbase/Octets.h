// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>

/// Bytes as ciphers and checksums take them.
///@{
inline uchar const* octets(QByteArray const& bytes)
{
    return reinterpret_cast<uchar const*>(bytes.constData());
}

inline uchar* octets(QByteArray& bytes)
{
    return reinterpret_cast<uchar*>(bytes.data());
}
///@}

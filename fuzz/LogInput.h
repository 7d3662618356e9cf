// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Input.h"

#include <QByteArray>
#include <QIODevice>

#include <algorithm>

/// What the fuzzers of log files share.
namespace fuzz {

/// The bytes behind the first three, of which up to 31 at the end are repeated: short inputs reach bounds, too.
inline QByteArray logBytes(uint8_t const* data, int size)
{
    auto const bytes = QByteArray(reinterpret_cast<char const*>(data) + 3, size - 3);
    int const tail = data[1] % 32;
    return bytes + bytes.right(tail).repeated(tail > 0 ? 4 * data[2] : 0);
}

/// Gives bytes in pieces of one size, as a pipe may.
class Pieces : public QIODevice {
public:
    Pieces(QByteArray const& bytes, int pieceSize)
        : m_bytes(bytes)
        , m_pieceSize(pieceSize)
    {
        open(ReadOnly | Unbuffered);
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        int const size = std::min({m_bytes.size() - m_position, m_pieceSize, static_cast<int>(maxSize)});
        std::copy_n(m_bytes.constData() + m_position, size, data);
        m_position += size;
        return size;
    }
    qint64 writeData(char const*, qint64) override { return -1; }

private:
    QByteArray const m_bytes;
    int const m_pieceSize;
    int m_position = 0;
};

} // namespace fuzz

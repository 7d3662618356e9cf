// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QString>
#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QByteArray;
class QTextStream;
QT_END_NAMESPACE

namespace qv {

/// A code of four 8-bit characters that names entry types, categories and values, in memory and in stored files. It is
/// one 32-bit number with the first character in its most significant byte, and is ordered as that number.
class GENERICUTILITIES_EXPORT FourChars {
public:
    /// Four blanks: no code.
    constexpr FourChars() = default;
    /// The first four characters of @p text as Latin-1 ("?" for any beyond it), filled up with blanks.
    FourChars(QString const& text);
    /// The same; four blanks where @p text is null.
    FourChars(QString const* text);
    /// A literal of exactly four characters.
    constexpr FourChars(char const (&text)[5])
        : m_value(byte(text[0], 24) | byte(text[1], 16) | byte(text[2], 8) | byte(text[3], 0))
    {
    }
    constexpr explicit FourChars(quint32 value)
        : m_value(value)
    {
    }

    /// Takes the code from the first four of @p bytes, which it fills up with blanks where they are fewer.
    void initFourChars(QByteArray& bytes);

    constexpr quint32 value() const { return m_value; }
    /// All four characters, with trailing blanks.
    QString toString() const;
    void writeTo(QTextStream& stream) const;

private:
    static constexpr quint32 byte(char character, int shift)
    {
        return static_cast<quint32>(static_cast<unsigned char>(character)) << shift;
    }

    quint32 m_value = 0x20202020;
};

constexpr bool operator==(FourChars left, FourChars right)
{
    return left.value() == right.value();
}
constexpr bool operator!=(FourChars left, FourChars right)
{
    return !(left == right);
}
constexpr bool operator<(FourChars left, FourChars right)
{
    return left.value() < right.value();
}
constexpr bool operator>(FourChars left, FourChars right)
{
    return right < left;
}
constexpr bool operator<=(FourChars left, FourChars right)
{
    return !(right < left);
}
constexpr bool operator>=(FourChars left, FourChars right)
{
    return !(left < right);
}

} // namespace qv

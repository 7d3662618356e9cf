// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/FourChars.h>

#include <QByteArray>
#include <QTextStream>

#include <algorithm>
#include <array>

namespace qv {

FourChars::FourChars(QString const& text)
{
    QByteArray bytes = text.toLatin1();
    initFourChars(bytes);
}

FourChars::FourChars(QString const* text)
    : FourChars(text ? FourChars(*text) : FourChars())
{
}

void FourChars::initFourChars(QByteArray& bytes)
{
    bytes.append(std::max(0, 4 - bytes.size()), ' ');
    m_value = byte(bytes.at(0), 24) | byte(bytes.at(1), 16) | byte(bytes.at(2), 8) | byte(bytes.at(3), 0);
}

QString FourChars::toString() const
{
    auto const character = [this](int shift) { return static_cast<char>(m_value >> shift & 0xFF); };
    std::array<char, 4> const bytes = {character(24), character(16), character(8), character(0)};
    return QString::fromLatin1(bytes.data(), 4);
}

void FourChars::writeTo(QTextStream& stream) const
{
    stream << toString();
}

} // namespace qv

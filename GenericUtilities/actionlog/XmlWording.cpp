// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/XmlWording_p.h>

#include <algorithm>

namespace qv::xml {

namespace {

    bool isBetween(ushort unit, char first, char last)
    {
        return unit >= static_cast<ushort>(first) && unit <= static_cast<ushort>(last);
    }

    /// NameStartChar of XML 1.0 in Latin-1, without the colon.
    bool startsName(QChar character)
    {
        ushort const unit = character.unicode();
        bool const isAscii = isBetween(unit, 'A', 'Z') || isBetween(unit, 'a', 'z') || unit == '_';
        return isAscii || (unit >= 0xC0 && unit != 0xD7 && unit != 0xF7);
    }

    /// NameChar of XML 1.0 in Latin-1, without the colon.
    bool continuesName(QChar character)
    {
        ushort const unit = character.unicode();
        return startsName(character) || isBetween(unit, '0', '9') || unit == '-' || unit == '.' || unit == 0xB7;
    }

    bool isChar(QChar character)
    {
        ushort const unit = character.unicode();
        return unit >= 0x20 ? unit < 0xFFFE : unit == '\t' || unit == '\n' || unit == '\r';
    }

    /// How many code units from @p at on make a character of XML: 1, 2 for a surrogate pair, or 0.
    int charLength(QString const& text, int at)
    {
        QChar const unit = text.at(at);
        if (!unit.isSurrogate())
            return isChar(unit) ? 1 : 0;
        bool const isPair = unit.isHighSurrogate() && at + 1 < text.size() && text.at(at + 1).isLowSurrogate();
        return isPair ? 2 : 0;
    }

} // namespace

QString reducedName(FourChars code)
{
    QString name;
    for (QChar const character : code.toString()) {
        if (name.isEmpty() ? startsName(character) : continuesName(character))
            name += character;
    }
    return name;
}

QString writtenName(FourChars code)
{
    QString const text = code.toString();
    auto const isBlank = [](QChar character) { return character == QLatin1Char(' '); };
    auto const blanks = std::find_if_not(text.crbegin(), text.crend(), isBlank) - text.crbegin();
    return reducedName(code) + QString(static_cast<int>(blanks), QLatin1Char(' '));
}

QString writtenText(QString const& text)
{
    QString result = text;
    for (int at = 0; at < text.size();) {
        int const length = charLength(text, at);
        if (length == 0)
            result[at] = QChar::ReplacementCharacter;
        at += std::max(1, length);
    }
    return result;
}

} // namespace qv::xml

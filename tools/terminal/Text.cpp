// SPDX-License-Identifier: LGPL-2.1-or-later
#include <terminal/Text.h>

#include <QLocale>
#include <QVector>

#include <algorithm>
#include <wchar.h>

namespace {

bool isPrintable(uint codePoint)
{
    switch (QChar::category(codePoint)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

QString escaped(uint codePoint)
{
    if (codePoint == '\n')
        return QStringLiteral("\\n");
    if (codePoint == '\t')
        return QStringLiteral("\\t");
    return codePoint < 0x100 ? QStringLiteral("\\x%1").arg(codePoint, 2, 16, QLatin1Char('0'))
                             : QStringLiteral("\\u%1").arg(codePoint, 4, 16, QLatin1Char('0'));
}

int columns(uint codePoint)
{
    // -1 is "unknown in this locale", as nearly everything is in the locale C.
    int const width = wcwidth(static_cast<wchar_t>(codePoint));
    return width < 0 ? 1 : width;
}

/// The number of code points from @p first on that fit into @p width columns.
int fitting(QVector<uint> const& codePoints, int width, int first = 0)
{
    int count = 0;
    for (int used = 0; first + count < codePoints.size(); ++count) {
        used += columns(codePoints.at(first + count));
        if (used > width)
            break;
    }
    return count;
}

/// The blank behind @p first that ends a line which has room up to @p end; -1 for none.
int lineEnd(QVector<uint> const& codePoints, int first, int end)
{
    int const before = codePoints.lastIndexOf(' ', end);
    return before > first ? before : codePoints.indexOf(' ', end);
}

} // namespace

QString printable(QString const& text)
{
    // As most texts are.
    if (std::all_of(text.begin(), text.end(), [](QChar unit) { return unit >= ' ' && unit <= '~'; }))
        return text;
    QString result;
    for (uint const codePoint : text.toUcs4())
        result += isPrintable(codePoint) ? QString::fromUcs4(&codePoint, 1) : escaped(codePoint);
    return result;
}

int displayWidth(QString const& text)
{
    int width = 0;
    for (uint const codePoint : text.toUcs4())
        width += columns(codePoint);
    return width;
}

QString elided(QString const& text, int width, Elide side)
{
    if (displayWidth(text) <= width)
        return text;
    auto const dots = QStringLiteral("...");
    QVector<uint> codePoints = text.toUcs4();
    if (side == Elide::Left)
        std::reverse(codePoints.begin(), codePoints.end());
    codePoints.resize(fitting(codePoints, width - dots.size()));
    if (side == Elide::Left)
        std::reverse(codePoints.begin(), codePoints.end());
    QString const rest = QString::fromUcs4(codePoints.constData(), codePoints.size());
    return side == Elide::Left ? dots + rest : rest + dots;
}

QString wrapped(QString const& text, int width, int indent)
{
    QVector<uint> const codePoints = text.toUcs4();
    auto const piece
        = [&](int first, int end) { return QString::fromUcs4(codePoints.constData() + first, end - first); };
    QString result;
    int first = 0;
    for (int room = width;; room = width - indent) {
        int const end = first + fitting(codePoints, room, first);
        int const blank = end < codePoints.size() ? lineEnd(codePoints, first, end) : -1;
        if (blank <= first)
            return result + piece(first, codePoints.size());
        result += piece(first, blank) + QLatin1Char('\n') + QString(indent, QLatin1Char(' '));
        first = blank + 1;
    }
}

QString grouped(qulonglong number)
{
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(number);
}

QString counted(int number, QString const& noun)
{
    return grouped(static_cast<qulonglong>(number)) + QLatin1Char(' ') + noun
        + (number == 1 ? QString() : QStringLiteral("s"));
}

// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Moments.h"

#include <QRegularExpression>

namespace {

QDateTime local(QString const& text)
{
    // Of a text that names no offset, Qt makes local time; a day begins at its first moment, which need not be 00:00.
    return QDateTime::fromString(text, Qt::ISODate).toLocalTime();
}

} // namespace

Moments momentsOf(QString const& text)
{
    static QRegularExpression const shape(
        QStringLiteral("\\A(\\d{4}-\\d\\d-\\d\\d)(?:[T ](\\d\\d:\\d\\d)(:\\d\\d)?(Z|[+-]\\d\\d:?\\d\\d)?)?\\z"));
    auto const match = shape.match(text);
    if (!match.hasMatch())
        return {};
    QDate const day = QDate::fromString(match.captured(1), Qt::ISODate);
    if (match.captured(2).isEmpty())
        return day.isValid() ? Moments{day.startOfDay(), day.endOfDay()} : Moments{};
    QString const seconds = match.captured(3).isEmpty() ? QStringLiteral(":00") : match.captured(3);
    QDateTime const first
        = local(match.captured(1) + QLatin1Char('T') + match.captured(2) + seconds + match.captured(4));
    if (!first.isValid())
        return {};
    return {first, first.addMSecs((match.captured(3).isEmpty() ? 60 : 1) * 1000 - 1)};
}

// SPDX-License-Identifier: LGPL-2.1-or-later
#include "LogTimes.h"

namespace {

bool hasTwoDigitYears(QString const& format)
{
    return format.contains(QLatin1String("yy")) && !format.contains(QLatin1String("yyyy"));
}

int centuryFor(QLocale const& locale, QDateTime const& logDate)
{
    bool const isMissing = hasTwoDigitYears(locale.dateTimeFormat(QLocale::ShortFormat));
    return isMissing && logDate.isValid() ? logDate.date().year() / 100 * 100 : 0;
}

} // namespace

LogTimes::LogTimes(QLocale const& locale, QDateTime const& logDate)
    : m_locale(locale)
    , m_hasSeconds(locale.dateTimeFormat(QLocale::ShortFormat).contains(QLatin1Char('s')))
    , m_century(centuryFor(locale, logDate))
{
}

QDateTime LogTimes::read(QString const& text)
{
    if (text != m_text) {
        m_time = parsed(text);
        m_text = text;
    }
    return m_time;
}

QDateTime LogTimes::parsed(QString const& text) const
{
    QDateTime time = m_locale.toDateTime(text, QLocale::ShortFormat);
    if (!time.isValid() || m_century == 0)
        return time;
    QDate const day(m_century + time.date().year() % 100, time.date().month(), time.date().day());
    return day.isValid() ? QDateTime(day, time.time()) : QDateTime();
}

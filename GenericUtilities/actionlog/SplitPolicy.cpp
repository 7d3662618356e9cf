// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/SplitPolicy_p.h>

#include <algorithm>
#include <iterator>

namespace qv::split {

namespace {

    struct CalendarPolicy {
        ESplitPolicy policy;
        int (*number)(QDate const& date);
        /// QDate's letters; "%1" stands for the number of the week.
        char const* name;
    };

    int weekOf(QDate const& date)
    {
        return date.weekNumber();
    }

    CalendarPolicy const calendarPolicies[] = {
        {SplitDaily, [](QDate const& date) { return date.dayOfYear(); }, "yyyy-%1-dd"},
        {SplitWeekly, weekOf, "yyyy-%1"},
        {SplitMonthly, [](QDate const& date) { return date.month(); }, "yyyy-MMM"},
    };

    CalendarPolicy const* calendarPolicy(int policy)
    {
        auto const* const found = std::find_if(std::begin(calendarPolicies), std::end(calendarPolicies),
            [policy](CalendarPolicy const& row) { return row.policy == policy; });
        return found == std::end(calendarPolicies) ? nullptr : found;
    }

    QString dateName(CalendarPolicy const& calendar, QDate const& date)
    {
        QString const name = date.toString(QLatin1String(calendar.name));
        return QString(name).replace(QLatin1String("%1"), QString::number(weekOf(date)));
    }

} // namespace

ESplitPolicy policyFrom(int number)
{
    bool const isPolicy = number == SplitBySize || calendarPolicy(number);
    return isPolicy ? static_cast<ESplitPolicy>(number) : SplitNone;
}

bool isDue(ESplitPolicy policy, int splitSize, QDateTime const& logDate, QDateTime const& now, qint64 plainSize)
{
    if (policy == SplitBySize)
        return plainSize > splitSize;
    CalendarPolicy const* const calendar = calendarPolicy(policy);
    // Without the year, as ESplitPolicy tells: those who file the logs count on when they are split.
    return calendar && calendar->number(now.date()) > calendar->number(logDate.date());
}

QString movedAsideName(ESplitPolicy policy, QDateTime const& logDate, QDateTime const& now, QString const& baseName,
    QString const& applicationName)
{
    CalendarPolicy const* const calendar = calendarPolicy(policy);
    return calendar ? dateName(*calendar, logDate.date()) + QLatin1Char(' ') + baseName
                    : momentName(now) + QLatin1Char(' ') + applicationName;
}

QString momentName(QDateTime const& moment)
{
    return moment.toString(QStringLiteral("yyyy-MM-dd hh-mm-ss"));
}

} // namespace qv::split

// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QDateTime>

#include <string>

/// Conversions between calendar time and counts since 1970-01-01 00:00:00 UTC.
///
/// Frame time is the unsigned 64-bit count of microseconds since that moment which stamps video frames. Counts pass
/// through a 32-bit unsigned count of seconds, so they are exact from 1970 to 2106-02-07 06:28:15 UTC only: a count
/// that lies outside wraps on its way to a date, and a date that lies outside by a second or more (or is invalid)
/// counts as 2^32 - 1 seconds. All functions are reentrant; local time is that of the process's time zone.
namespace qv {

/// Local time.
GENERICUTILITIES_EXPORT QDateTime fromSeconds(qint64 seconds);
/// UTC, in whole seconds: the part below a second is dropped.
GENERICUTILITIES_EXPORT QDateTime fromMilliSeconds(qint64 milliSeconds);
GENERICUTILITIES_EXPORT QDateTime fromMicroSeconds(qint64 microSeconds);
GENERICUTILITIES_EXPORT QDateTime fromFrameTime(quint64 frameTime);
GENERICUTILITIES_EXPORT QDateTime fromNanoSeconds(qint64 nanoSeconds);
/// A count beyond 64 bits of nanoseconds is taken as the nearest that fits, NaN as the lowest.
GENERICUTILITIES_EXPORT QDateTime fromSeconds(double seconds);

GENERICUTILITIES_EXPORT qint64 toSeconds(QDateTime const& time);
GENERICUTILITIES_EXPORT qint64 toMilliSeconds(QDateTime const& time);
/// In steps of a millisecond, as all others of a date.
GENERICUTILITIES_EXPORT qint64 toMicroSeconds(QDateTime const& time);
GENERICUTILITIES_EXPORT quint64 toFrameTime(QDateTime const& time);
GENERICUTILITIES_EXPORT qint64 toNanoSeconds(QDateTime const& time);
GENERICUTILITIES_EXPORT double toSecondsFrac(QDateTime const& time);
/// To the microsecond, as far as the digits of a double reach.
GENERICUTILITIES_EXPORT double toSecondsFrac(quint64 const& frameTime);

GENERICUTILITIES_EXPORT qint64 currentSeconds();
GENERICUTILITIES_EXPORT double currentSecondsFrac();
GENERICUTILITIES_EXPORT qint64 currentMilliSeconds();
GENERICUTILITIES_EXPORT qint64 currentMicroSeconds();
GENERICUTILITIES_EXPORT qint64 currentNanoSeconds();
GENERICUTILITIES_EXPORT quint64 currentFrameTime();

/// A count of time split into the calendar fields of local time, and formatted.
class GENERICUTILITIES_EXPORT CTimeTranscoder {
public:
    static constexpr qint64 MICROSECONDS_PER_DAY = 86400000000;
    static constexpr qint32 MILLISECONDS_PER_DAY = 86400000;

    explicit CTimeTranscoder(unsigned long long frameTime);
    /// 32 bits reach 49.7 days beyond 1970-01-01.
    explicit CTimeTranscoder(unsigned int milliSeconds);

    /// The part below a millisecond, 0 to 999.
    int microsecond() const { return m_microsecond; }
    /// These in local time; days and months count from 1.
    int millisecond() const { return m_millisecond; }
    int second() const { return m_second; }
    int minute() const { return m_minute; }
    int hour() const { return m_hour; }
    int day() const { return m_day; }
    int month() const { return m_month; }
    int year() const { return m_year; }

    /// As "dd.MM.yyyy-hh:mm:ss.zzz".
    std::string toString() const { return m_text; }
    /// As "yyyyMMdd_hhmmss_zzz".
    std::string toIdString() const { return m_idText; }

private:
    CTimeTranscoder(QDateTime const& localTime, int microsecond);

    int m_microsecond;
    int m_millisecond;
    int m_second;
    int m_minute;
    int m_hour;
    int m_day;
    int m_month;
    int m_year;
    std::string m_text;
    std::string m_idText;
};

} // namespace qv

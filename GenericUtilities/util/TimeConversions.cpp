// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/TimeConversions.h>

#include <GenericUtilities/util/Clamp.h>

#include <QLocale>

namespace qv {

namespace {

    constexpr qint64 millisPerSecond = 1000;
    constexpr qint64 microsPerMilli = 1000;
    constexpr qint64 nanosPerMilli = 1000000;
    constexpr double nanosPerSecond = 1e9;
    constexpr double microsPerSecond = 1e6;

    // The count of seconds has 32 bits: what lies outside wraps.
    QDateTime fromWrappedSeconds(qint64 seconds, Qt::TimeSpec spec)
    {
        return QDateTime::fromSecsSinceEpoch(static_cast<quint32>(seconds), spec);
    }

    QDateTime localTimeOf(qint64 milliSeconds)
    {
        return QDateTime::fromMSecsSinceEpoch(milliSeconds, Qt::LocalTime);
    }

    // In ASCII digits: QDateTime::toString() takes those of the system's locale.
    std::string formatted(QDateTime const& time, QString const& format)
    {
        return QLocale::c().toString(time, format).toStdString();
    }

} // namespace

QDateTime fromSeconds(qint64 seconds)
{
    return fromWrappedSeconds(seconds, Qt::LocalTime);
}

QDateTime fromMilliSeconds(qint64 milliSeconds)
{
    // Whole seconds on purpose: stored dates and conditions were made with them.
    return fromWrappedSeconds(milliSeconds / millisPerSecond, Qt::UTC);
}

QDateTime fromMicroSeconds(qint64 microSeconds)
{
    return fromMilliSeconds(microSeconds / microsPerMilli);
}

QDateTime fromFrameTime(quint64 frameTime)
{
    return fromMilliSeconds(static_cast<qint64>(frameTime / quint64(microsPerMilli)));
}

QDateTime fromNanoSeconds(qint64 nanoSeconds)
{
    return fromMilliSeconds(nanoSeconds / nanosPerMilli);
}

QDateTime fromSeconds(double seconds)
{
    return fromNanoSeconds(clampTo<qint64>(seconds * nanosPerSecond));
}

qint64 toSeconds(QDateTime const& time)
{
    return time.toTimeSpec(Qt::UTC).toTime_t();
}

qint64 toMilliSeconds(QDateTime const& time)
{
    int const milliSecond = time.time().isValid() ? time.time().msec() : 0;
    return toSeconds(time) * millisPerSecond + milliSecond;
}

qint64 toMicroSeconds(QDateTime const& time)
{
    return toMilliSeconds(time) * microsPerMilli;
}

quint64 toFrameTime(QDateTime const& time)
{
    return static_cast<quint64>(toMicroSeconds(time));
}

qint64 toNanoSeconds(QDateTime const& time)
{
    return toMilliSeconds(time) * nanosPerMilli;
}

double toSecondsFrac(QDateTime const& time)
{
    return static_cast<double>(toNanoSeconds(time)) / nanosPerSecond;
}

double toSecondsFrac(quint64 const& frameTime)
{
    return static_cast<double>(frameTime) / microsPerSecond;
}

qint64 currentSeconds()
{
    return toSeconds(QDateTime::currentDateTime());
}

double currentSecondsFrac()
{
    return toSecondsFrac(QDateTime::currentDateTime());
}

qint64 currentMilliSeconds()
{
    return toMilliSeconds(QDateTime::currentDateTime());
}

qint64 currentMicroSeconds()
{
    return toMicroSeconds(QDateTime::currentDateTime());
}

qint64 currentNanoSeconds()
{
    return toNanoSeconds(QDateTime::currentDateTime());
}

quint64 currentFrameTime()
{
    return toFrameTime(QDateTime::currentDateTime());
}

CTimeTranscoder::CTimeTranscoder(unsigned long long frameTime)
    : CTimeTranscoder(localTimeOf(static_cast<qint64>(frameTime / microsPerMilli)), int(frameTime % microsPerMilli))
{
}

CTimeTranscoder::CTimeTranscoder(unsigned int milliSeconds)
    : CTimeTranscoder(localTimeOf(milliSeconds), 0)
{
}

CTimeTranscoder::CTimeTranscoder(QDateTime const& localTime, int microsecond)
    : m_microsecond(microsecond)
    , m_millisecond(localTime.time().msec())
    , m_second(localTime.time().second())
    , m_minute(localTime.time().minute())
    , m_hour(localTime.time().hour())
    , m_day(localTime.date().day())
    , m_month(localTime.date().month())
    , m_year(localTime.date().year())
    , m_text(formatted(localTime, QStringLiteral("dd.MM.yyyy-hh:mm:ss.zzz")))
    , m_idText(formatted(localTime, QStringLiteral("yyyyMMdd_hhmmss_zzz")))
{
}

} // namespace qv

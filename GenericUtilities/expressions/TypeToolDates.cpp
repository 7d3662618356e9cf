// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/TypeToolRules_p.h>

#include <GenericUtilities/util/Clamp.h>
#include <GenericUtilities/util/TimeConversions.h>

#include <QDateTime>

namespace qvgen {

namespace {

    constexpr qint64 microsPerMilli = 1000;
    constexpr double microsPerSecond = 1000000;
    constexpr qint64 microsPerDay = qv::CTimeTranscoder::MICROSECONDS_PER_DAY;

    // A date as a number of type `target`, at `micros` microseconds.
    QVariant numberOfDate(qint64 micros, QVariant::Type target)
    {
        auto const unsignedMicros = static_cast<quint64>(micros);
        // Cut to 32 bits before the division: SQL that clients stored was made with these numbers.
        auto const low = static_cast<quint32>(unsignedMicros);
        switch (target) {
        case QVariant::Int:
            return static_cast<int>(low) / int(microsPerMilli);
        case QVariant::UInt:
            return low / uint(microsPerMilli);
        case QVariant::Double:
            return static_cast<double>(unsignedMicros) / static_cast<double>(microsPerDay);
        default:
            return unsignedMicros;
        }
    }

    quint64 frameTimeOfNumber(QVariant const& number)
    {
        if (number.type() == QVariant::Double)
            return qv::clampTo<quint64>(number.toDouble() * static_cast<double>(microsPerDay));
        return static_cast<quint64>(TypeTool::dateMicroSeconds(number));
    }

} // namespace

qint64 TypeTool::dateMicroSeconds(QVariant const& value)
{
    switch (value.type()) {
    case QVariant::Int:
        return value.toInt() * microsPerMilli;
    case QVariant::UInt:
        return value.toUInt() * microsPerMilli;
    case QVariant::LongLong:
        return value.toLongLong();
    case QVariant::ULongLong:
        return static_cast<qint64>(value.toULongLong());
    case QVariant::Double:
        return qv::clampTo<qint64>(value.toDouble() * static_cast<double>(microsPerDay));
    case QVariant::Date:
        return wrappedProduct(EPOCH.daysTo(value.toDate()), microsPerDay);
    case QVariant::Time:
        return MIDNIGHT.msecsTo(value.toTime()) * microsPerMilli;
    case QVariant::DateTime:
        return qv::toMicroSeconds(value.toDateTime());
    default:
        return isText(value) ? qv::toMicroSeconds(QDateTime::fromString(value.toString(), Qt::TextDate)) : 0;
    }
}

double TypeTool::dateSeconds(QVariant const& value)
{
    return static_cast<double>(dateMicroSeconds(value)) / microsPerSecond;
}

QVariant TypeTool::dateAdd(QVariant const& value, qint64 micros) const
{
    qint64 const moved = wrappedSum(dateMicroSeconds(value), micros);
    auto const unsignedMoved = static_cast<quint64>(moved);
    QDateTime const moment = qv::fromMicroSeconds(moved);
    switch (value.type()) {
    case QVariant::Int:
    case QVariant::UInt:
        return static_cast<int>(unsignedMoved / microsPerMilli);
    case QVariant::LongLong:
    case QVariant::ULongLong:
        return moved % microsPerMilli == 0 ? QVariant(static_cast<int>(moved / microsPerMilli))
                                           : QVariant(unsignedMoved);
    case QVariant::Double:
        return static_cast<double>(unsignedMoved) / static_cast<double>(microsPerDay);
    case QVariant::Date:
        return unsignedMoved % microsPerDay == 0 ? QVariant(moment.date()) : QVariant(moment);
    case QVariant::Time:
        return unsignedMoved < microsPerDay ? QVariant(moment.time()) : QVariant(moment);
    default:
        return moment;
    }
}

QVariant TypeTool::castDate(QVariant const& value, QVariant::Type target)
{
    if (isDate(value.type()) && isNumeric(target))
        return numberOfDate(dateMicroSeconds(value), target);
    if (!isDate(target) || !isNumeric(value.type()))
        return {};
    QDateTime const moment = qv::fromFrameTime(frameTimeOfNumber(value));
    switch (target) {
    case QVariant::Date:
        return moment.date();
    case QVariant::Time:
        return moment.time();
    default:
        return moment;
    }
}

} // namespace qvgen

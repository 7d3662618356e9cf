// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/VariantStream_p.h>

#include <qvbase/Mutex.h>

#include <QDateTime>
#include <QFileInfo>
#include <QHash>
#include <QTimeZone>

#include <algorithm>

/// How a stream holds a date with time: date, time of day, a byte for the kind of clock, and what that kind needs.
namespace qvgen {

namespace {

    constexpr int maxOffsetSeconds = 14 * 60 * 60;

    bool isOffset(qint32 seconds)
    {
        return -maxOffsetSeconds <= seconds && seconds <= maxOffsetSeconds;
    }

    bool isName(QByteArray const& id)
    {
        auto const isAllowed = [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '+'
                || c == '-' || c == ':' || c == '/';
        };
        return !id.isEmpty() && !id.startsWith('/') && !id.contains("//")
            && std::all_of(id.begin(), id.end(), isAllowed);
    }

    // Whether the system has a zone of this name. Qt would also open any file that a name leads to, and make a zone of
    // any text that looks like a rule for one: of these there is no end.
    bool isKnownToSystem(QByteArray const& id)
    {
        static auto const* const ids = new QList<QByteArray>(QTimeZone::availableTimeZoneIds()); // sorted
        if (std::binary_search(ids->begin(), ids->end(), id) || id == QTimeZone::systemTimeZoneId())
            return true;
        // Older names of zones are files only.
        QString const file = QString::fromLatin1(id);
        return isName(id)
            && (QFileInfo(QStringLiteral("/usr/share/zoneinfo/") + file).isFile()
                || QFileInfo(QStringLiteral("/usr/lib/zoneinfo/") + file).isFile());
    }

    // Invalid for a name that no zone has. Zones are kept, since making one reads a file; the system has some hundreds.
    QTimeZone zoneOf(QByteArray const& id)
    {
        static auto* const mutex = new qv::Mutex;
        static auto* const zones = new QHash<QByteArray, QTimeZone>;
        qv::MutexLocker const locker(*mutex);
        auto const found = zones->constFind(id);
        if (found != zones->constEnd())
            return found.value();
        QTimeZone const zone = isKnownToSystem(id) ? QTimeZone(id) : QTimeZone();
        if (zone.isValid())
            zones->insert(id, zone);
        return zone;
    }

    // A zone that is no more than an offset is stored with all that describes it.
    QTimeZone readOffsetZone(QDataStream& in)
    {
        QString id;
        qint32 offsetSeconds = 0;
        QString name;
        QString abbreviation;
        qint32 country = 0;
        QString comment;
        in >> id >> offsetSeconds >> name >> abbreviation >> country >> comment;
        QTimeZone const known = zoneOf(id.toUtf8());
        bool const isCountry = country >= 0 && country <= QLocale::LastCountry;
        if (known.isValid() || !isName(id.toUtf8()) || !isOffset(offsetSeconds) || !isCountry)
            return known;
        return {id.toUtf8(), offsetSeconds, name, abbreviation, static_cast<QLocale::Country>(country), comment};
    }

    QTimeZone readZone(QDataStream& in)
    {
        QString id;
        in >> id;
        return id == QLatin1String("OffsetFromUtc") ? readOffsetZone(in) : zoneOf(id.toUtf8());
    }

    QDateTime corrupt(QDataStream& in)
    {
        in.setStatus(QDataStream::ReadCorruptData);
        return {};
    }

    // Stored; a byte that is none of these would crash Qt when the date is written again.
    enum Clock : qint8 { Local = 0, Utc = 1, Offset = 2, Zone = 3 };

    QDateTime readFrom52(QDataStream& in, qint8 clock, QDate date, QTime time)
    {
        if (clock == Local || clock == Utc)
            return {date, time, clock == Utc ? Qt::UTC : Qt::LocalTime};
        if (clock == Offset) {
            qint32 seconds = 0;
            in >> seconds;
            return isOffset(seconds) ? QDateTime(date, time, Qt::OffsetFromUTC, seconds) : corrupt(in);
        }
        if (clock == Zone) {
            QTimeZone const zone = readZone(in);
            return zone.isValid() ? QDateTime(date, time, zone) : corrupt(in);
        }
        return corrupt(in);
    }

    // Qt 5.0 wrote the time in UTC whatever the clock; offsets and zones got lost.
    QDateTime readAs50(QDataStream& in, qint8 clock, QDate date, QTime time)
    {
        if (clock < Local || clock > Zone)
            return corrupt(in);
        QDateTime const moment(date, time, Qt::UTC);
        return clock == Local || clock == Zone ? moment.toLocalTime() : moment;
    }

    // Local time with an unknown, a standard or a summer offset; UTC; an offset or a zone that got lost.
    QDateTime readBefore52(QDataStream& in, qint8 clock, QDate date, QTime time)
    {
        constexpr Qt::TimeSpec specs[] = {Qt::LocalTime, Qt::LocalTime, Qt::LocalTime, Qt::UTC, Qt::UTC, Qt::LocalTime};
        constexpr qint8 lowest = -1;
        int const index = clock - lowest;
        return index >= 0 && index < int(std::size(specs)) ? QDateTime(date, time, specs[index]) : corrupt(in);
    }

} // namespace

QDateTime readDateTime(QDataStream& in)
{
    QDate date;
    QTime time;
    qint8 clock = 0;
    in >> date >> time >> clock;
    if (in.status() != QDataStream::Ok)
        return {};
    if (in.version() >= QDataStream::Qt_5_2)
        return readFrom52(in, clock, date, time);
    return in.version() == QDataStream::Qt_5_0 ? readAs50(in, clock, date, time) : readBefore52(in, clock, date, time);
}

} // namespace qvgen

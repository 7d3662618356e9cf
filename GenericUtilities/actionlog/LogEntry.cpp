// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogEntry.h>

#include <GenericUtilities/actionlog/LogWriter.h>
#include <GenericUtilities/actionlog/UntimedEntry_p.h>

#include <QTextStream>

#include <algorithm>
#include <memory>
#include <utility>

namespace qv {

namespace {

    /// Time and user, which no description repeats.
    constexpr int CommonValues = 2;

    /// Of a text that is made of @p given characters: a file of entries whose values multiply each other must not take
    /// hours to be shown.
    qint64 maxDescription(qint64 given)
    {
        constexpr qint64 least = 4096;
        constexpr qint64 most = qint64{32} * 1024 * 1024;
        return std::clamp(8 * given, least, most);
    }

    /// The placeholders that QString::arg would replace next.
    struct Placeholders {
        int number = 100; // that of none: "%99" is the last one
        qint64 count = 0;
    };

    Placeholders lowestPlaceholders(QString const& text)
    {
        Placeholders lowest;
        for (int at = text.indexOf(QLatin1Char('%')); at >= 0; at = text.indexOf(QLatin1Char('%'), at + 1)) {
            auto const digitAt = [&](int index) { return index < text.size() ? text.at(index).digitValue() : -1; };
            int const first = at + 1 + (at + 1 < text.size() && text.at(at + 1) == QLatin1Char('L') ? 1 : 0);
            if (digitAt(first) < 0)
                continue;
            int const number = digitAt(first + 1) < 0 ? digitAt(first) : 10 * digitAt(first) + digitAt(first + 1);
            if (number < lowest.number)
                lowest = {number, 0};
            lowest.count += number == lowest.number ? 1 : 0;
        }
        return lowest;
    }

    bool canFill(QString const& text, QString const& value, qint64 maxSize)
    {
        Placeholders const next = lowestPlaceholders(text);
        return next.count > 0 && text.size() + next.count * value.size() <= maxSize;
    }

    QString filled(QString text, QList<LogValue*> const& values)
    {
        qint64 given = text.size();
        for (int i = CommonValues; i < values.size(); ++i) {
            QString const value = values.at(i)->toString();
            given += value.size();
            if (!canFill(text, value, maxDescription(given)))
                break;
            // One by one: a template that is a value itself is filled by the values behind it.
            text = text.arg(value);
        }
        return text;
    }

    QString listed(QList<LogValue*> const& values)
    {
        QString text;
        QTextStream stream(&text, QIODevice::ReadWrite);
        ProsaLogWriter writer(stream, ' ');
        for (int i = CommonValues; i < values.size(); ++i)
            writer.writeAttribute(*values.at(i));
        stream.flush();
        return text;
    }

    /// Whether the next entry that this thread makes is an untimed one.
    thread_local bool isUntimedNext = false;

    QDateTime momentOfConstruction()
    {
        return std::exchange(isUntimedNext, false) ? QDateTime() : QDateTime::currentDateTime();
    }

    bool isSameTime(QDateTime const& left, QDateTime const& right)
    {
        // A null time compares equal to the first second of 1970.
        return left.isNull() == right.isNull() && left == right;
    }

} // namespace

LogEntry::LogEntry()
    : m_time("Time", QStringLiteral("Time"), momentOfConstruction())
    , m_user("User", QStringLiteral("User"))
{
    append(&m_time);
    append(&m_user);
}

LogEntry::~LogEntry() = default;

QString LogEntry::description() const
{
    QString const text = descriptionText();
    return text.isEmpty() ? listed(m_values) : filled(text, m_values);
}

LogValue const* LogEntry::logValue(FourChars code) const
{
    auto const hasCode = [code](LogValue const* value) { return value->code() == code; };
    auto const found = std::find_if(m_values.begin(), m_values.end(), hasCode);
    return found != m_values.end() ? *found : nullptr;
}

LogValue* LogEntry::logValue(FourChars code)
{
    return const_cast<LogValue*>(static_cast<LogEntry const*>(this)->logValue(code));
}

void LogEntry::copyFrom(LogEntry const& other)
{
    int const count = std::min(m_values.size(), other.m_values.size());
    for (int i = 0; i < count; ++i)
        m_values.at(i)->copyFrom(*other.m_values.at(i));
}

LogEntry* LogEntry::clone() const
{
    std::unique_ptr<LogEntry> copy = newUntimedEntry(id());
    if (copy)
        copy->copyFrom(*this);
    return copy.release();
}

std::unique_ptr<LogEntry> newUntimedEntry(FourChars id)
{
    // Taken back also where nothing is made.
    struct Untimed {
        Untimed() { isUntimedNext = true; }
        ~Untimed() { isUntimedNext = false; }
    } const untimed;
    return std::unique_ptr<LogEntry>(logEntryFactory().create(id));
}

void LogEntry::writeTo(ILogWriter& writer) const
{
    writer.writeStartElement(*this);
    for (LogValue const* value : m_values)
        writer.writeAttribute(*value);
    writer.writeEndElement(*this);
}

bool LogEntry::operator==(LogEntry const& other) const
{
    return isSameTime(m_time.value(), other.m_time.value()) && id() == other.id() && category() == other.category()
        && m_user.value() == other.m_user.value();
}

} // namespace qv

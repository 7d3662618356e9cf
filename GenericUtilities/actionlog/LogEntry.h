// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/LogCategory.h>
#include <GenericUtilities/actionlog/LogEntryFactory.h>
#include <GenericUtilities/actionlog/LogValue.h>

#include <QList>
#include <QString>

namespace qv {

class ILogWriter;

/// An action of a user or of the system: when, who, what kind, and the values that this kind has.
///
/// A type of entry derives from this class, holds its values as members, appends them in its constructor in an order
/// that is part of the stored format, and registers a creator under its id (LogEntryFactoryRegistrar), so that readers
/// can make entries of it. Its static texts `sAction` and `sDescriptionText` stay untranslated.
///
/// An entry belongs to one thread at a time.
class GENERICUTILITIES_EXPORT LogEntry {
public:
    LogEntry(LogEntry const&) = delete;
    LogEntry& operator=(LogEntry const&) = delete;
    virtual ~LogEntry();

    /// The code of the type, stored with every entry.
    virtual FourChars id() const = 0;
    virtual ELogCategory category() const = 0;
    /// The translated sentence in which "%1" stands for the third value, "%2" for the fourth …; may be empty.
    virtual QString descriptionText() const = 0;
    /// The translated title of the action.
    virtual QString action() const = 0;
    /// For people: descriptionText() filled with the values behind time and user, or the list of these values where it
    /// is empty. Placeholders within a value are filled by the values behind it. Filling stops before the text would
    /// exceed 4,096 characters and eight times what it and the values have, or 32 Mi characters, as hostile files can
    /// make it.
    virtual QString description() const;

    /// Time, user, then those of the type, in stored order; members of this entry.
    QList<LogValue*> const& values() const { return m_values; }
    /// The moment of construction, local time, unless set.
    TLogValue<QDateTime>& time() { return m_time; }
    TLogValue<QDateTime> const& time() const { return m_time; }
    TLogValue<QString>& user() { return m_user; }
    TLogValue<QString> const& user() const { return m_user; }
    /// The first value of that code, a member of this entry; null where there is none.
    LogValue* logValue(FourChars code);
    LogValue const* logValue(FourChars code) const;

    /// Takes over the values of an entry of the same type, matched by their place.
    void copyFrom(LogEntry const& other);
    /// A copy that the caller owns; null where the id is not registered.
    LogEntry* clone() const;
    void writeTo(ILogWriter& writer) const;

    /// Whether time, id, category and user are equal; the values of the type are not looked at.
    bool operator==(LogEntry const& other) const;
    bool operator!=(LogEntry const& other) const { return !(*this == other); }

protected:
    LogEntry();

    /// @p value is a member of the derived class.
    void append(LogValue* value) { m_values.append(value); }

private:
    QList<LogValue*> m_values;
    TLogValue<QDateTime> m_time;
    TLogValue<QString> m_user;
};

} // namespace qv

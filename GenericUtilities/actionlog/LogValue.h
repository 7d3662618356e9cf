// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/FourChars.h>

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <type_traits>

namespace qv {

/// A value of a log entry: a code by which files know it, a name by which people do, and a text form.
class GENERICUTILITIES_EXPORT LogValue {
public:
    LogValue(LogValue const&) = delete;
    LogValue& operator=(LogValue const&) = delete;
    virtual ~LogValue();

    /// False where the value is what a reader assumes of one that is not there; files leave it out then.
    virtual bool hasValue() const = 0;
    /// Reads the text form. A text that has no meaning gives the value that hasValue() denies.
    virtual void setValue(QString const& text) = 0;
    /// Takes over the value, neither code nor name, of @p other where that is of the same class; else does nothing.
    virtual void copyFrom(LogValue const& other) = 0;
    /// Writes the text form.
    virtual void writeTo(QTextStream& stream) const = 0;

    /// What writeTo() writes.
    QString toString() const;

    FourChars code() const { return m_code; }
    QString const& name() const { return m_name; }

protected:
    LogValue(FourChars code, QString const& name);

private:
    FourChars const m_code;
    QString const m_name;
};

/// The values there are. Their text forms, and when they have a value:
///
/// | T           | text form                                                                | has a value when |
/// |-------------|--------------------------------------------------------------------------|------------------|
/// | QString     | the text itself                                                          | not empty        |
/// | QDateTime   | the system locale's short format: another locale may not read it         | not null         |
/// | int         | decimal                                                                  | not 0            |
/// | bool        | "true" or nothing; any text but the empty one is read as true            | true             |
/// | QStringList | the items with ";" between them; the empty text is read as one empty item | not empty        |
template <typename T> class GENERICUTILITIES_EXPORT TLogValue : public LogValue {
public:
    TLogValue(FourChars code, QString const& name, T const& value = T())
        : LogValue(code, name)
        , m_value(value)
    {
    }

    T const& value() const { return m_value; }
    /// The value itself, of no other type than T: a text is always taken as the text form.
    template <typename Value, typename = std::enable_if_t<std::is_same_v<Value, T>>> void setValue(Value const& value)
    {
        m_value = value;
    }

    bool hasValue() const override;
    void setValue(QString const& text) override;
    void copyFrom(LogValue const& other) override;
    void writeTo(QTextStream& stream) const override;

private:
    T m_value;
};

// Exported each: Qt's QStringList is of hidden visibility, and so would be its instance.
extern template class GENERICUTILITIES_EXPORT TLogValue<QString>;
extern template class GENERICUTILITIES_EXPORT TLogValue<QDateTime>;
extern template class GENERICUTILITIES_EXPORT TLogValue<int>;
extern template class GENERICUTILITIES_EXPORT TLogValue<bool>;
extern template class GENERICUTILITIES_EXPORT TLogValue<QStringList>;

} // namespace qv

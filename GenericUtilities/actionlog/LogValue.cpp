// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogValue.h>

#include <QLocale>
#include <QTextStream>

#include <utility>

namespace qv {

namespace {

    constexpr QLatin1Char ItemSeparator(';');

    bool isThere(QString const& value)
    {
        return !value.isEmpty();
    }
    bool isThere(QDateTime const& value)
    {
        // Not a comparison with QDateTime(): that one equals the first second of 1970.
        return !value.isNull();
    }
    bool isThere(int value)
    {
        return value != 0;
    }
    bool isThere(bool value)
    {
        return value;
    }
    bool isThere(QStringList const& value)
    {
        return !value.isEmpty();
    }

    void parse(QString const& text, QString& value)
    {
        value = text;
    }
    void parse(QString const& text, QDateTime& value)
    {
        // Neighbours in a log often have the same minute, and Qt takes 50 µs for each.
        static thread_local std::pair<QString, QDateTime> last;
        if (text != last.first)
            last = {text, QLocale::system().toDateTime(text, QLocale::ShortFormat)};
        value = last.second;
    }
    void parse(QString const& text, int& value)
    {
        value = text.toInt();
    }
    void parse(QString const& text, bool& value)
    {
        // "false" is true, too: files hold the attribute of a true value only.
        value = !text.isEmpty();
    }
    void parse(QString const& text, QStringList& value)
    {
        value = text.split(ItemSeparator);
    }

    QString print(QString const& value)
    {
        return value;
    }
    QString print(QDateTime const& value)
    {
        return QLocale::system().toString(value, QLocale::ShortFormat);
    }
    QString print(int value)
    {
        return QString::number(value);
    }
    QString print(bool value)
    {
        return value ? QStringLiteral("true") : QString();
    }
    QString print(QStringList const& value)
    {
        return value.join(ItemSeparator);
    }

} // namespace

LogValue::LogValue(FourChars code, QString const& name)
    : m_code(code)
    , m_name(name)
{
}

LogValue::~LogValue() = default;

QString LogValue::toString() const
{
    QString text;
    QTextStream stream(&text, QIODevice::ReadWrite);
    writeTo(stream);
    stream.flush();
    return text;
}

template <typename T> bool TLogValue<T>::hasValue() const
{
    return isThere(m_value);
}

template <typename T> void TLogValue<T>::setValue(QString const& text)
{
    parse(text, m_value);
}

template <typename T> void TLogValue<T>::copyFrom(LogValue const& other)
{
    if (auto const* same = dynamic_cast<TLogValue const*>(&other))
        m_value = same->m_value;
}

template <typename T> void TLogValue<T>::writeTo(QTextStream& stream) const
{
    stream << print(m_value);
}

template class TLogValue<QString>;
template class TLogValue<QDateTime>;
template class TLogValue<int>;
template class TLogValue<bool>;
template class TLogValue<QStringList>;

} // namespace qv

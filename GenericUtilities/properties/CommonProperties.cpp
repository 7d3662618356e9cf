// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/CommonProperties.h>

#include <qvbase/Exceptions.h>

#include <QTextStream>

#include <utility>

namespace qvgen {

namespace {

    [[noreturn]] void throwWrongType(BaseProperty const& property, QString const& expectedType)
    {
        throw qv::UnexpectedTypeException(
            property.name(), property.type(), expectedType, QStringLiteral("Property has the wrong type."));
    }

    template <class Property, class Value>
    Value valueOf(BaseProperty const& property, Value const& defaultValue, QString const& expectedType)
    {
        if (auto const* typed = dynamic_cast<Property const*>(&property))
            return typed->value();
        if (dynamic_cast<IllegalProperty const*>(&property))
            return defaultValue;
        throwWrongType(property, expectedType);
    }

    template <class Property> Property& checkedCast(BaseProperty& property, QString const& expectedType)
    {
        if (auto* const typed = dynamic_cast<Property*>(&property))
            return *typed;
        throwWrongType(property, expectedType);
    }

    template <class Text> QTextStream& dumpValue(QTextStream& out, Text const& value)
    {
        return out << "Property value: " << value << '\n';
    }

    QTextStream& dumpEnd(QTextStream& out)
    {
        return out << "--------------------------------------------" << '\n';
    }

} // namespace

IntProperty::IntProperty(
    QString const& name, QString const& description, int value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

int IntProperty::getValue(BaseProperty const& property, int defaultValue)
{
    return valueOf<IntProperty, int>(property, defaultValue, QStringLiteral("IntProperty"));
}

void IntProperty::setValue(BaseProperty& property, int value)
{
    checkedCast<IntProperty>(property, QStringLiteral("IntProperty")).m_value = value;
}

QString IntProperty::type() const
{
    return QStringLiteral("IntProperty");
}

QTextStream& IntProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value));
}

QVariant IntProperty::variantValue() const
{
    return m_value;
}

bool IntProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::Int))
        return false;
    m_value = value.toInt();
    return true;
}

UIntProperty::UIntProperty(
    QString const& name, QString const& description, unsigned int value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

unsigned int UIntProperty::getValue(BaseProperty const& property, unsigned int defaultValue)
{
    return valueOf<UIntProperty, unsigned int>(property, defaultValue, QStringLiteral("UIntProperty"));
}

void UIntProperty::setValue(BaseProperty& property, unsigned int value)
{
    checkedCast<UIntProperty>(property, QStringLiteral("UIntProperty")).m_value = value;
}

QString UIntProperty::type() const
{
    return QStringLiteral("UIntProperty");
}

QTextStream& UIntProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value));
}

QVariant UIntProperty::variantValue() const
{
    return m_value;
}

bool UIntProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::UInt))
        return false;
    m_value = value.toUInt();
    return true;
}

U64Property::U64Property(
    QString const& name, QString const& description, unsigned long long value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

unsigned long long U64Property::getValue(BaseProperty const& property, unsigned long long defaultValue)
{
    return valueOf<U64Property, unsigned long long>(property, defaultValue, QStringLiteral("U64Property"));
}

void U64Property::setValue(BaseProperty& property, unsigned long long value)
{
    checkedCast<U64Property>(property, QStringLiteral("U64Property")).m_value = value;
}

QString U64Property::type() const
{
    return QStringLiteral("U64Property");
}

QTextStream& U64Property::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value));
}

QVariant U64Property::variantValue() const
{
    return m_value;
}

bool U64Property::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::ULongLong))
        return false;
    m_value = value.toULongLong();
    return true;
}

StringProperty::StringProperty(
    QString const& name, QString const& description, QString const& value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

QString StringProperty::getValue(BaseProperty const& property, QString const& defaultValue)
{
    return valueOf<StringProperty, QString>(property, defaultValue, QStringLiteral("StringProperty"));
}

void StringProperty::setValue(BaseProperty& property, QString const& value)
{
    checkedCast<StringProperty>(property, QStringLiteral("StringProperty")).m_value = value;
}

QString StringProperty::type() const
{
    return QStringLiteral("StringProperty");
}

QTextStream& StringProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value));
}

QVariant StringProperty::variantValue() const
{
    return m_value;
}

bool StringProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::String))
        return false;
    m_value = value.toString();
    return true;
}

StringListProperty::StringListProperty(
    QString const& name, QString const& description, QStringList const& value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

QStringList StringListProperty::getValue(BaseProperty const& property, QStringList const& defaultValue)
{
    return valueOf<StringListProperty, QStringList>(property, defaultValue, QStringLiteral("StringListProperty"));
}

void StringListProperty::setValue(BaseProperty& property, QStringList const& value)
{
    // Clients match this text: setValue() has always named the class of a single text.
    checkedCast<StringListProperty>(property, QStringLiteral("StringProperty")).m_value = value;
}

QString StringListProperty::type() const
{
    return QStringLiteral("StringListProperty");
}

QTextStream& StringListProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value.join(QLatin1Char(','))));
}

QVariant StringListProperty::variantValue() const
{
    return m_value;
}

bool StringListProperty::setVariantValue(QVariant const& value)
{
    // A text counts as convertible to a list, but would become a list of one: lists are taken as such, texts are split.
    bool const isText = value.type() == QVariant::String;
    m_value = !isText && value.canConvert(QVariant::StringList)
        ? value.toStringList()
        : value.toString().split(QLatin1Char(','), Qt::KeepEmptyParts, Qt::CaseSensitive);
    return true;
}

FloatProperty::FloatProperty(
    QString const& name, QString const& description, float value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

float FloatProperty::getValue(BaseProperty const& property, float defaultValue)
{
    return valueOf<FloatProperty, float>(property, defaultValue, QStringLiteral("FloatProperty"));
}

void FloatProperty::setValue(BaseProperty& property, float value)
{
    checkedCast<FloatProperty>(property, QStringLiteral("FloatProperty")).m_value = value;
}

QString FloatProperty::type() const
{
    return QStringLiteral("FloatProperty");
}

QTextStream& FloatProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value));
}

QVariant FloatProperty::variantValue() const
{
    return m_value;
}

bool FloatProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::Double))
        return false;
    m_value = static_cast<float>(value.toDouble());
    return true;
}

DoubleProperty::DoubleProperty(
    QString const& name, QString const& description, double value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

double DoubleProperty::getValue(BaseProperty const& property, double defaultValue)
{
    return valueOf<DoubleProperty, double>(property, defaultValue, QStringLiteral("DoubleProperty"));
}

void DoubleProperty::setValue(BaseProperty& property, double value)
{
    checkedCast<DoubleProperty>(property, QStringLiteral("DoubleProperty")).m_value = value;
}

QString DoubleProperty::type() const
{
    return QStringLiteral("DoubleProperty");
}

QTextStream& DoubleProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value));
}

QVariant DoubleProperty::variantValue() const
{
    return m_value;
}

bool DoubleProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::Double))
        return false;
    m_value = value.toDouble();
    return true;
}

BoolProperty::BoolProperty(
    QString const& name, QString const& description, bool value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

bool BoolProperty::getValue(BaseProperty const& property, bool defaultValue)
{
    return valueOf<BoolProperty, bool>(property, defaultValue, QStringLiteral("BoolProperty"));
}

void BoolProperty::setValue(BaseProperty& property, bool value)
{
    checkedCast<BoolProperty>(property, QStringLiteral("BoolProperty")).m_value = value;
}

QString BoolProperty::type() const
{
    return QStringLiteral("BoolProperty");
}

QTextStream& BoolProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value ? 1 : 0));
}

QVariant BoolProperty::variantValue() const
{
    return m_value;
}

bool BoolProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::Bool))
        return false;
    m_value = value.toBool();
    return true;
}

RectProperty::RectProperty(
    QString const& name, QString const& description, QRect value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

QRect RectProperty::getValue(BaseProperty const& property, QRect defaultValue)
{
    return valueOf<RectProperty, QRect>(property, defaultValue, QStringLiteral("RectProperty"));
}

void RectProperty::setValue(BaseProperty& property, QRect value)
{
    checkedCast<RectProperty>(property, QStringLiteral("RectProperty")).m_value = value;
}

QString RectProperty::type() const
{
    return QStringLiteral("RectProperty");
}

QTextStream& RectProperty::dump(QTextStream& out) const
{
    // In 64 bits: the width of a rectangle that spans all coordinates does not fit into an int.
    qint64 const width = qint64(m_value.right()) - m_value.left() + 1;
    qint64 const height = qint64(m_value.bottom()) - m_value.top() + 1;
    dumpHead(out);
    out << "Property value: (" << m_value.x() << ',' << m_value.y() << ',' << width << ',' << height << ")" << '\n';
    return dumpEnd(out);
}

QVariant RectProperty::variantValue() const
{
    return m_value;
}

bool RectProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::Rect))
        return false;
    m_value = value.toRect();
    return true;
}

VariantProperty::VariantProperty(
    QString const& name, QString const& description, QVariant const& value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

QVariant VariantProperty::getValue(BaseProperty const& property, QVariant const& defaultValue)
{
    return valueOf<VariantProperty, QVariant>(property, defaultValue, QStringLiteral("VariantProperty"));
}

void VariantProperty::setValue(BaseProperty& property, QVariant const& value)
{
    checkedCast<VariantProperty>(property, QStringLiteral("VariantProperty")).m_value = value;
}

QString VariantProperty::type() const
{
    return QStringLiteral("VariantProperty");
}

QTextStream& VariantProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value.toString()));
}

QVariant VariantProperty::variantValue() const
{
    return m_value;
}

bool VariantProperty::setVariantValue(QVariant const& value)
{
    m_value = value;
    return true;
}

DateProperty::DateProperty(
    QString const& name, QString const& description, QDate const& value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

QString DateProperty::type() const
{
    return QStringLiteral("DateProperty");
}

QTextStream& DateProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value.toString(Qt::TextDate)));
}

QVariant DateProperty::variantValue() const
{
    return m_value;
}

bool DateProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::Date))
        return false;
    m_value = value.toDate();
    return true;
}

TimeProperty::TimeProperty(
    QString const& name, QString const& description, QTime const& value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

QTime TimeProperty::getValue(BaseProperty const& property, QTime const& defaultValue)
{
    return valueOf<TimeProperty, QTime>(property, defaultValue, QStringLiteral("TimeProperty"));
}

void TimeProperty::setValue(BaseProperty& property, QTime const& value)
{
    checkedCast<TimeProperty>(property, QStringLiteral("TimeProperty")).m_value = value;
}

QString TimeProperty::type() const
{
    return QStringLiteral("TimeProperty");
}

QTextStream& TimeProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value.toString(Qt::TextDate)));
}

QVariant TimeProperty::variantValue() const
{
    return m_value;
}

bool TimeProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::Time))
        return false;
    m_value = value.toTime();
    return true;
}

DateTimeProperty::DateTimeProperty(
    QString const& name, QString const& description, QDateTime const& value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

QDateTime DateTimeProperty::getValue(BaseProperty const& property, QDateTime const& defaultValue)
{
    return valueOf<DateTimeProperty, QDateTime>(property, defaultValue, QStringLiteral("DateTimeProperty"));
}

void DateTimeProperty::setValue(BaseProperty& property, QDateTime const& value)
{
    checkedCast<DateTimeProperty>(property, QStringLiteral("DateTimeProperty")).m_value = value;
}

QString DateTimeProperty::type() const
{
    return QStringLiteral("DateTimeProperty");
}

QTextStream& DateTimeProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    return dumpEnd(dumpValue(out, m_value.toString(Qt::TextDate)));
}

QVariant DateTimeProperty::variantValue() const
{
    return m_value;
}

bool DateTimeProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::DateTime))
        return false;
    m_value = value.toDateTime();
    return true;
}

PropertySetProperty::PropertySetProperty(
    QString const& name, QString const& description, PropertySet const& value, qvm::smart<PropertyValidator> validator)
    : BaseProperty(name, description, std::move(validator))
    , m_value(value)
{
}

PropertySet PropertySetProperty::getValue(BaseProperty const& property, PropertySet const& defaultValue)
{
    return valueOf<PropertySetProperty, PropertySet>(property, defaultValue, QStringLiteral("PropertySetProperty"));
}

void PropertySetProperty::setValue(BaseProperty& property, PropertySet const& value)
{
    checkedCast<PropertySetProperty>(property, QStringLiteral("PropertySetProperty")).m_value = value;
}

QString PropertySetProperty::type() const
{
    return QStringLiteral("PropertySetProperty");
}

QTextStream& PropertySetProperty::dump(QTextStream& out) const
{
    dumpHead(out);
    out << "Embedded property set: " << '\n';
    m_value.dump(out) << '\n';
    return dumpEnd(out);
}

QVariant PropertySetProperty::variantValue() const
{
    return m_value.variantValues();
}

bool PropertySetProperty::setVariantValue(QVariant const& value)
{
    if (!value.canConvert(QVariant::Map))
        return false;
    QVariantMap const values = value.toMap();
    bool allTaken = true;
    for (auto entry = values.begin(); entry != values.end(); ++entry)
        allTaken = m_value[entry.key()].setVariantValue(entry.value()) && allTaken;
    return allTaken;
}

} // namespace qvgen

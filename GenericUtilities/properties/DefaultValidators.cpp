// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/DefaultValidators.h>

#include <GenericUtilities/properties/CommonProperties.h>

namespace qvgen {

namespace {

    // Widening to one type up to long double is exact, so the comparisons are those of the numbers themselves.
    template <class Value, class Bound> bool judge(BaseProperty& property, Value value, Bound min, Bound max)
    {
        bool const inRange = min <= value && value <= max;
        property.setValidationResult(inRange, inRange ? QString() : QObject::tr("Value out of range."));
        return inRange;
    }

} // namespace

DefaultIntValidator::DefaultIntValidator(int min, int max)
    : m_min(min)
    , m_max(max)
{
}

bool DefaultIntValidator::validate(PropertySet&, BaseProperty& property)
{
    return judge(property, IntProperty::getValue(property, 0), m_min, m_max);
}

DefaultUIntValidator::DefaultUIntValidator(unsigned int min, unsigned int max)
    : m_min(min)
    , m_max(max)
{
}

bool DefaultUIntValidator::validate(PropertySet&, BaseProperty& property)
{
    return judge(property, UIntProperty::getValue(property, 0), m_min, m_max);
}

DefaultU64Validator::DefaultU64Validator(unsigned long long min, unsigned long long max)
    : m_min(min)
    , m_max(max)
{
}

bool DefaultU64Validator::validate(PropertySet&, BaseProperty& property)
{
    // Ranges are set up for counts of 32 bits; clients keep flags of their own above them.
    auto const value = static_cast<quint32>(U64Property::getValue(property, 0));
    return judge(property, value, m_min, m_max);
}

DefaultFloatValidator::DefaultFloatValidator(float min, float max)
    : m_min(min)
    , m_max(max)
{
}

bool DefaultFloatValidator::validate(PropertySet&, BaseProperty& property)
{
    return judge<long double, long double>(property, FloatProperty::getValue(property, 0), m_min, m_max);
}

DefaultDoubleValidator::DefaultDoubleValidator(double min, double max)
    : m_min(min)
    , m_max(max)
{
}

bool DefaultDoubleValidator::validate(PropertySet&, BaseProperty& property)
{
    return judge<long double, long double>(property, DoubleProperty::getValue(property, 0), m_min, m_max);
}

} // namespace qvgen

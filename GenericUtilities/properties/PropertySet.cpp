// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/PropertySet.h>

#include <QTextStream>

namespace qvgen {

namespace {

    char const banner[] = "=======================================";

    BaseProperty& propertyOf(qvm::smart<BaseProperty> const& handle)
    {
        return handle.null() ? IllegalProperty::ms_illegalProperty : *handle;
    }

} // namespace

int const PropertySet::MetaType = qRegisterMetaType<PropertySet>("qvgen::PropertySet");

void PropertySet::add(qvm::smart<BaseProperty> property)
{
    if (!property.null())
        m_properties.insert(property->name(), property);
}

BaseProperty const* PropertySet::find(QString const& name) const
{
    // The empty name sorts first, and asking for it (as for every reference without alias) needs no search.
    if (name.isEmpty() && (m_properties.isEmpty() || !m_properties.firstKey().isEmpty()))
        return nullptr;
    auto const found = m_properties.constFind(name);
    return found == m_properties.constEnd() ? nullptr : &propertyOf(found.value());
}

BaseProperty const& PropertySet::operator[](QString const& name) const
{
    BaseProperty const* const property = find(name);
    return property ? *property : IllegalProperty::ms_illegalProperty;
}

BaseProperty& PropertySet::operator[](QString const& name)
{
    auto const found = m_properties.constFind(name);
    return found == m_properties.constEnd() ? IllegalProperty::ms_illegalProperty : propertyOf(found.value());
}

void PropertySet::validate()
{
    // A validator may change the set that it is given: walk a copy, which shares the properties.
    auto const properties = m_properties;
    for (auto const& property : properties)
        propertyOf(property).validate(*this);
}

QMap<QString, QVariant> PropertySet::variantValues() const
{
    QMap<QString, QVariant> values;
    for (auto entry = begin(); entry != end(); ++entry)
        values.insert(values.cend(), entry.key(), propertyOf(entry.value()).variantValue());
    return values;
}

bool PropertySet::setVariantValues(QMap<QString, QVariant> const& values)
{
    bool allTaken = true;
    for (auto value = values.begin(); value != values.end(); ++value) {
        // Unknown names are entered on purpose: clients see from count() and contains() which values found no property.
        auto const& property = m_properties[value.key()];
        allTaken = !property.null() && property->setVariantValue(value.value()) && allTaken;
    }
    return allTaken;
}

bool PropertySet::operator==(PropertySet const& other) const
{
    auto const sameEntry = [](const_iterator const& left, const_iterator const& right) {
        if (left.key() != right.key())
            return false;
        // An invalid value equals nothing, itself included: "unknown" is never known to be the same.
        QVariant const leftValue = propertyOf(left.value()).variantValue();
        QVariant const rightValue = propertyOf(right.value()).variantValue();
        return leftValue.isValid() && rightValue.isValid() && leftValue == rightValue;
    };
    if (count() != other.count())
        return false;
    for (auto left = begin(), right = other.begin(); left != end(); ++left, ++right) {
        if (!sameEntry(left, right))
            return false;
    }
    return true;
}

QTextStream& PropertySet::dump(QTextStream& out) const
{
    out << banner << '\n';
    for (auto const& property : m_properties)
        propertyOf(property).dump(out) << '\n';
    return out << banner;
}

} // namespace qvgen

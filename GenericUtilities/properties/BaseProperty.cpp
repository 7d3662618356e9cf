// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/properties/BaseProperty.h>

#include <QTextStream>

#include <utility>

namespace qvgen {

PropertyValidator::~PropertyValidator() = default;

BaseProperty::BaseProperty(QString const& name, QString const& description, qvm::smart<PropertyValidator> validator)
    : m_description(description)
    , m_validator(std::move(validator))
    , m_name(name)
{
}

BaseProperty::~BaseProperty() = default;

bool BaseProperty::validate(PropertySet& set)
{
    return m_validator.null() || m_validator->validate(set, *this);
}

void BaseProperty::setValidationResult(bool valid, QString const& errorText)
{
    m_valid = valid;
    m_errorText = errorText;
}

void BaseProperty::dumpHead(QTextStream& out) const
{
    out << "Property name: " << m_name << '\n' << "Property description: " << m_description << '\n';
}

IllegalProperty IllegalProperty::ms_illegalProperty;

IllegalProperty::IllegalProperty()
    : BaseProperty(QString(), QString(), {})
{
    setValidationResult(false, QString());
}

QString IllegalProperty::type() const
{
    return QStringLiteral("IllegalProperty");
}

QTextStream& IllegalProperty::dump(QTextStream& out) const
{
    // Readers of dumps know this spelling.
    return out << "IllegaProperty" << '\n';
}

QVariant IllegalProperty::variantValue() const
{
    return {};
}

bool IllegalProperty::setVariantValue(QVariant const&)
{
    return false;
}

} // namespace qvgen

// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <qvbase/SmartHandle.h>

#include <QString>
#include <QVariant>

QT_BEGIN_NAMESPACE
class QTextStream;
QT_END_NAMESPACE

namespace qvgen {

class BaseProperty;
class PropertySet;

/// Judges the value of a property. One validator may serve several properties; it keeps nothing about any of them.
class GENERICUTILITIES_EXPORT PropertyValidator {
public:
    /// Judges @p property, which is being validated as a member of @p set. Records the verdict with
    /// BaseProperty::setValidationResult() and returns it.
    virtual bool validate(PropertySet& set, BaseProperty& property) = 0;
    virtual ~PropertyValidator();

protected:
    PropertyValidator() = default;
    PropertyValidator(PropertyValidator const&) = default;
    PropertyValidator& operator=(PropertyValidator const&) = default;
};

/// A named, described, typed value that may carry a validator.
///
/// Properties are owned by shared handles, usually those of a PropertySet, and never copied. No operation locks: a
/// property shared between threads is its owner's to guard.
class GENERICUTILITIES_EXPORT BaseProperty {
public:
    BaseProperty(BaseProperty const&) = delete;
    BaseProperty& operator=(BaseProperty const&) = delete;
    virtual ~BaseProperty();

    /// Asks the validator and returns its verdict; true, and nothing recorded, without one.
    virtual bool validate(PropertySet& set);
    /// The name of the class without its namespace.
    virtual QString type() const = 0;
    /// Writes name, description and value, one line each, and a line of hyphens. Returns @p out.
    virtual QTextStream& dump(QTextStream& out) const = 0;
    virtual QVariant variantValue() const = 0;
    /// Takes @p value where its type can be converted to the property's; else returns false and keeps the old value
    /// (of an embedded set, those of the properties that refused theirs).
    /// As QVariant::canConvert() does, this looks at the type only: the text "abc" becomes the number 0.
    virtual bool setVariantValue(QVariant const& value) = 0;

    /// The key under which a property set keeps the property.
    QString const& name() const { return m_name; }
    QString const& description() const { return m_description; }
    /// The validator; an empty handle where there is none.
    qvm::smart<PropertyValidator> const& validator() const { return m_validator; }

    /// The verdict of the last validation; true before the first (but false in the illegal property).
    bool isValid() const { return m_valid; }
    /// The message of the last failed validation; null after a passed one.
    QString const& errorText() const { return m_errorText; }
    /// Records a verdict; for validators.
    void setValidationResult(bool valid, QString const& errorText);

protected:
    BaseProperty(QString const& name, QString const& description, qvm::smart<PropertyValidator> validator);
    /// Writes the lines before the value.
    void dumpHead(QTextStream& out) const;

private:
    QString m_description;
    QString m_errorText;
    bool m_valid = true;
    qvm::smart<PropertyValidator> m_validator;
    QString m_name;
};

/// Stands for a property that is not there: no name, no value, refuses every value.
class GENERICUTILITIES_EXPORT IllegalProperty : public BaseProperty {
public:
    /// The only instance, which lookups of a missing name refer to; lives as long as the library is loaded. A verdict
    /// recorded on it is seen by the whole process: threads that hand it to validators have to take turns.
    static IllegalProperty ms_illegalProperty;

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    /// An invalid variant.
    QVariant variantValue() const override;
    /// Always false.
    bool setVariantValue(QVariant const& value) override;

private:
    IllegalProperty();
};

} // namespace qvgen

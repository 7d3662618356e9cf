// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/properties/BaseProperty.h>
#include <GenericUtilities/properties/PropertySet.h>

#include <QDateTime>
#include <QRect>
#include <QStringList>

/// The concrete property classes, one per type of value.
///
/// Each class X of a type T (but DateProperty) has two static accessors that work on any property:
/// - `T X::getValue(property, defaultValue)`: the value of an X, @p defaultValue for the illegal property;
/// - `void X::setValue(property, value)`: changes an X; the illegal property is refused like any other class.
/// Both throw qv::UnexpectedTypeException ("Property has the wrong type.") on a property of another class.
namespace qvgen {

/// A 32-bit signed number.
class GENERICUTILITIES_EXPORT IntProperty : public BaseProperty {
public:
    IntProperty(
        QString const& name, QString const& description, int value, qvm::smart<PropertyValidator> validator = {});

    static int getValue(BaseProperty const& property, int defaultValue);
    static void setValue(BaseProperty& property, int value);
    int value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    int m_value;
};

/// A 32-bit unsigned number.
class GENERICUTILITIES_EXPORT UIntProperty : public BaseProperty {
public:
    UIntProperty(QString const& name, QString const& description, unsigned int value,
        qvm::smart<PropertyValidator> validator = {});

    static unsigned int getValue(BaseProperty const& property, unsigned int defaultValue);
    static void setValue(BaseProperty& property, unsigned int value);
    unsigned int value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    unsigned int m_value;
};

/// A 64-bit unsigned number, such as a frame time or a size in bytes.
class GENERICUTILITIES_EXPORT U64Property : public BaseProperty {
public:
    U64Property(QString const& name, QString const& description, unsigned long long value,
        qvm::smart<PropertyValidator> validator = {});

    static unsigned long long getValue(BaseProperty const& property, unsigned long long defaultValue);
    static void setValue(BaseProperty& property, unsigned long long value);
    unsigned long long value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    unsigned long long m_value;
};

/// A text.
class GENERICUTILITIES_EXPORT StringProperty : public BaseProperty {
public:
    StringProperty(QString const& name, QString const& description, QString const& value,
        qvm::smart<PropertyValidator> validator = {});

    static QString getValue(BaseProperty const& property, QString const& defaultValue);
    static void setValue(BaseProperty& property, QString const& value);
    QString const& value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    QString m_value;
};

/// A list of texts. Takes every variant: what is no list is split as text at ",", empty parts kept.
class GENERICUTILITIES_EXPORT StringListProperty : public BaseProperty {
public:
    StringListProperty(QString const& name, QString const& description, QStringList const& value,
        qvm::smart<PropertyValidator> validator = {});

    static QStringList getValue(BaseProperty const& property, QStringList const& defaultValue);
    static void setValue(BaseProperty& property, QStringList const& value);
    QStringList const& value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    QStringList m_value;
};

/// A single precision number; its variant has the type QMetaType::Float, which the type tool does not count as
/// numeric.
class GENERICUTILITIES_EXPORT FloatProperty : public BaseProperty {
public:
    FloatProperty(
        QString const& name, QString const& description, float value, qvm::smart<PropertyValidator> validator = {});

    static float getValue(BaseProperty const& property, float defaultValue);
    static void setValue(BaseProperty& property, float value);
    float value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    float m_value;
};

/// A double precision number.
class GENERICUTILITIES_EXPORT DoubleProperty : public BaseProperty {
public:
    DoubleProperty(
        QString const& name, QString const& description, double value, qvm::smart<PropertyValidator> validator = {});

    static double getValue(BaseProperty const& property, double defaultValue);
    static void setValue(BaseProperty& property, double value);
    double value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    double m_value;
};

/// A truth value; dumped as 1 or 0.
class GENERICUTILITIES_EXPORT BoolProperty : public BaseProperty {
public:
    BoolProperty(
        QString const& name, QString const& description, bool value, qvm::smart<PropertyValidator> validator = {});

    static bool getValue(BaseProperty const& property, bool defaultValue);
    static void setValue(BaseProperty& property, bool value);
    bool value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    bool m_value;
};

/// A rectangle in whole units; dumped as (x,y,width,height).
class GENERICUTILITIES_EXPORT RectProperty : public BaseProperty {
public:
    RectProperty(
        QString const& name, QString const& description, QRect value, qvm::smart<PropertyValidator> validator = {});

    static QRect getValue(BaseProperty const& property, QRect defaultValue);
    static void setValue(BaseProperty& property, QRect value);
    QRect value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    QRect m_value;
};

/// Any value, taken as it is.
class GENERICUTILITIES_EXPORT VariantProperty : public BaseProperty {
public:
    VariantProperty(QString const& name, QString const& description, QVariant const& value,
        qvm::smart<PropertyValidator> validator = {});

    static QVariant getValue(BaseProperty const& property, QVariant const& defaultValue);
    static void setValue(BaseProperty& property, QVariant const& value);
    QVariant const& value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    QVariant m_value;
};

/// A calendar date. Has no typed accessors: it is read and written through variants only.
class GENERICUTILITIES_EXPORT DateProperty : public BaseProperty {
public:
    DateProperty(QString const& name, QString const& description, QDate const& value,
        qvm::smart<PropertyValidator> validator = {});

    QDate const& value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    QDate m_value;
};

/// A time of day.
class GENERICUTILITIES_EXPORT TimeProperty : public BaseProperty {
public:
    TimeProperty(QString const& name, QString const& description, QTime const& value,
        qvm::smart<PropertyValidator> validator = {});

    static QTime getValue(BaseProperty const& property, QTime const& defaultValue);
    static void setValue(BaseProperty& property, QTime const& value);
    QTime const& value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    QTime m_value;
};

/// A moment.
class GENERICUTILITIES_EXPORT DateTimeProperty : public BaseProperty {
public:
    DateTimeProperty(QString const& name, QString const& description, QDateTime const& value,
        qvm::smart<PropertyValidator> validator = {});

    static QDateTime getValue(BaseProperty const& property, QDateTime const& defaultValue);
    static void setValue(BaseProperty& property, QDateTime const& value);
    QDateTime const& value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    QDateTime m_value;
};

/// An embedded set of properties; its variant is the map of their names and values.
///
/// It takes maps: each value is set on the property of its name. Where one is refused or its name unknown,
/// setVariantValue() returns false although the others are set; the set never grows.
class GENERICUTILITIES_EXPORT PropertySetProperty : public BaseProperty {
public:
    PropertySetProperty(QString const& name, QString const& description, PropertySet const& value,
        qvm::smart<PropertyValidator> validator = {});

    static PropertySet getValue(BaseProperty const& property, PropertySet const& defaultValue);
    static void setValue(BaseProperty& property, PropertySet const& value);
    PropertySet const& value() const { return m_value; }

    QString type() const override;
    QTextStream& dump(QTextStream& out) const override;
    QVariant variantValue() const override;
    bool setVariantValue(QVariant const& value) override;

private:
    PropertySet m_value;
};

} // namespace qvgen

// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/properties/BaseProperty.h>

#include <QObject>

/// Closed-range validators for the numeric property classes.
///
/// Each reads the value with the typed accessor of its property class: the illegal property is judged as 0, a property
/// of another class makes validate() throw qv::UnexpectedTypeException and keeps its old verdict. Both bounds are in
/// range; where the minimum exceeds the maximum, nothing is. A value out of range is told as "Value out of range."
/// (translation context "QObject").
namespace qvgen {

// None of these has Q_OBJECT: with it, tr() would look up the message in a context of the class's own.

/// The range of an IntProperty.
class GENERICUTILITIES_EXPORT DefaultIntValidator : public QObject, public PropertyValidator {
public:
    DefaultIntValidator(int min, int max);
    bool validate(PropertySet& set, BaseProperty& property) override;

private:
    int m_min;
    int m_max;
};

/// The range of a UIntProperty.
class GENERICUTILITIES_EXPORT DefaultUIntValidator : public QObject, public PropertyValidator {
public:
    DefaultUIntValidator(unsigned int min, unsigned int max);
    bool validate(PropertySet& set, BaseProperty& property) override;

private:
    unsigned int m_min;
    unsigned int m_max;
};

/// The range of a U64Property, of which only the low 32 bits are judged.
class GENERICUTILITIES_EXPORT DefaultU64Validator : public QObject, public PropertyValidator {
public:
    DefaultU64Validator(unsigned long long min, unsigned long long max);
    bool validate(PropertySet& set, BaseProperty& property) override;

private:
    unsigned long long m_min;
    unsigned long long m_max;
};

/// The range of a FloatProperty; NaN is out of every range.
class GENERICUTILITIES_EXPORT DefaultFloatValidator : public QObject, public PropertyValidator {
public:
    DefaultFloatValidator(float min, float max);
    bool validate(PropertySet& set, BaseProperty& property) override;

private:
    float m_min;
    float m_max;
};

/// The range of a DoubleProperty; NaN is out of every range.
class GENERICUTILITIES_EXPORT DefaultDoubleValidator : public QObject, public PropertyValidator {
public:
    DefaultDoubleValidator(double min, double max);
    bool validate(PropertySet& set, BaseProperty& property) override;

private:
    double m_min;
    double m_max;
};

} // namespace qvgen

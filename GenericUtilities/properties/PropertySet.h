// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/properties/BaseProperty.h>

#include <QMap>
#include <QMetaType>
#include <QStringList>

namespace qvgen {

/// Properties gathered by name, in ascending order of the names (by code units).
///
/// A value type: a copy shares the property objects, so that a value set through one copy is seen through the other,
/// while adding and removing names concerns one copy only. A set must not hold itself, not even through an embedded
/// set. An entry with an empty handle, as setVariantValues() makes for an unknown name, behaves as the illegal
/// property.
class GENERICUTILITIES_EXPORT PropertySet {
public:
    using iterator = QMap<QString, qvm::smart<BaseProperty>>::iterator;
    using const_iterator = QMap<QString, qvm::smart<BaseProperty>>::const_iterator;

    /// The number of the Qt meta type "qvgen::PropertySet".
    static int const MetaType;

    int count() const { return m_properties.count(); }
    bool contains(QString const& name) const { return m_properties.contains(name); }
    QStringList allPropertyNames() const { return m_properties.keys(); }

    /// Stores @p property under its own name, in place of one that had it before; an empty handle is ignored.
    void add(qvm::smart<BaseProperty> property);
    /// Lets go of the property of that name, if there is one.
    void remove(QString const& name) { m_properties.remove(name); }
    void clear() { m_properties.clear(); }

    /// The property of that name, or IllegalProperty::ms_illegalProperty; inserts nothing. The reference is good as
    /// long as a handle holds the property.
    BaseProperty& operator[](QString const& name);
    BaseProperty const& operator[](QString const& name) const;
    /// contains() and operator[] in one lookup: null where the name is missing.
    BaseProperty const* find(QString const& name) const;

    /// Iterators of the underlying map, in the order of the names.
    iterator begin() { return m_properties.begin(); }
    iterator end() { return m_properties.end(); }
    const_iterator begin() const { return m_properties.begin(); }
    const_iterator end() const { return m_properties.end(); }

    /// Validates every property, in the order of the names; each keeps its own verdict. What a validator throws passes
    /// through and leaves the rest unvalidated.
    void validate();

    QMap<QString, QVariant> variantValues() const;
    /// Sets each value on the property of its name. Returns false if any was refused or unknown; all are tried. An
    /// unknown name enters the set with an empty handle.
    bool setVariantValues(QMap<QString, QVariant> const& values);

    /// Same names, and valid and equal values (QVariant equality); types and descriptions do not matter. A set with an
    /// invalid value equals no set, not even itself.
    bool operator==(PropertySet const& other) const;
    bool operator!=(PropertySet const& other) const { return !(*this == other); }

    /// Writes the dump of every property between two lines of equals signs, the last without line end. Returns @p out.
    QTextStream& dump(QTextStream& out) const;

private:
    QMap<QString, qvm::smart<BaseProperty>> m_properties;
};

} // namespace qvgen

Q_DECLARE_METATYPE(qvgen::PropertySet)

// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QMap>
#include <QString>

namespace qv {

/// Something that users may be allowed to do. Open for derivation, as the groups are.
class GENERICUTILITIES_EXPORT Feature {
public:
    explicit Feature(int id, QString name = {});
    virtual ~Feature();

    int id() const { return m_id; }
    QString const& name() const { return m_name; }

private:
    int m_id;
    QString m_name;
};

/// Users with the same rights: a column of the matrix.
class GENERICUTILITIES_EXPORT UserGroup {
public:
    explicit UserGroup(int id, QString name = {});
    virtual ~UserGroup();

    /// The column, from 0.
    int id() const { return m_id; }
    QString const& name() const { return m_name; }

private:
    int m_id;
    QString m_name;
};

/// Features that are allowed together: a row of the matrix. Owns its features; one that several groups of a matrix hold
/// is deleted once, with the matrix.
class GENERICUTILITIES_EXPORT FeatureGroup {
public:
    explicit FeatureGroup(int id, QString name = {}, QString description = {});
    FeatureGroup(FeatureGroup const&) = delete;
    FeatureGroup& operator=(FeatureGroup const&) = delete;
    virtual ~FeatureGroup();

    /// Takes @p feature, in place of one of the same id: that one is not deleted. Null is ignored.
    void addFeature(Feature* feature);
    bool containsFeature(int featureId) const { return m_features.contains(featureId); }

    /// The row, from 0.
    int id() const { return m_id; }
    QString const& name() const { return m_name; }
    QString const& description() const { return m_description; }
    /// By their ids.
    QMap<int, Feature*> const& features() const { return m_features; }

private:
    friend class FeatureMatrix;

    int m_id;
    QString m_name;
    QString m_description;
    QMap<int, Feature*> m_features;
    bool m_ownsFeatures = true; // no longer once the matrix ends, which deletes them itself
};

} // namespace qv

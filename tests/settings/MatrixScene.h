// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/settings/FeatureMatrix.h>
#include <GenericUtilities/settings/Settings.h>

#include <QMap>

/// A destination in memory that keeps what it was asked for in order.
class MemoryDestination : public qv::IPersistDestination {
public:
    void beginGroup(QString const& prefix) override { m_group += prefix + '/'; }
    void endGroup() override { m_group.chop(m_group.size() - m_group.lastIndexOf('/', -2) - 1); }
    void beginWriteArray(QString const&, int) override { }
    int beginReadArray(QString const&) override { return 0; }
    void endArray() override { }
    void setArrayIndex(int) override { }
    void setValue(QString const& key, QVariant const& value) override
    {
        m_order += m_group + key;
        m_values[m_group + key] = value;
    }
    QVariant value(QString const& key, QVariant const& defaultValue) const override
    {
        m_defaults += defaultValue;
        return m_values.value(m_group + key, defaultValue);
    }
    void remove(QString const& key) override { m_values.remove(m_group + key); }
    bool contains(QString const& key) const override { return m_values.contains(m_group + key); }
    void sync() override { }

    QString const& group() const { return m_group; }
    QStringList const& order() const { return m_order; }
    /// What was to be given for a missing key, one for each that was asked for.
    QVariantList const& defaults() const { return m_defaults; }
    QVariant stored(QString const& path) const { return m_values.value(path); }
    void store(int rows, int columns, QVariant const& matrix)
    {
        m_values = {{"FeatureMatrix/Rows", rows}, {"FeatureMatrix/Columns", columns}, {"FeatureMatrix/Matrix", matrix}};
    }

private:
    QString m_group;
    QStringList m_order;
    mutable QVariantList m_defaults;
    QMap<QString, QVariant> m_values;
};

/// Adds groups of the ids 0 to n - 1.
inline void addGroups(qv::FeatureMatrix& matrix, int featureGroups, int userGroups)
{
    for (int id = 0; id < featureGroups; ++id)
        matrix.addFeatureGroup(new qv::FeatureGroup(id));
    for (int id = 0; id < userGroups; ++id)
        matrix.addUserGroup(new qv::UserGroup(id));
}

/// As many groups as cells.
class WholeMatrix : public qv::FeatureMatrix {
public:
    WholeMatrix(int rows, int columns)
        : FeatureMatrix(rows, columns)
        , m_rows(rows)
        , m_columns(columns)
    {
        addGroups(*this, rows, columns);
    }

    /// The cells row by row, "1" for an allowed one.
    QByteArray cells() const
    {
        QByteArray result;
        for (int row = 0; row < m_rows; ++row) {
            for (int column = 0; column < m_columns; ++column)
                result += isAllowed(row, column) ? '1' : '0';
        }
        return result;
    }
    void setCells(QByteArray const& cells)
    {
        for (int i = 0; i < cells.size(); ++i)
            setAllowed(i / m_columns, i % m_columns, cells[i] == '1');
    }

private:
    int m_rows;
    int m_columns;
};

// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/settings/FeatureGroup.h>

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QPair>

#include <vector>

namespace qv {

class IPersistDestination;

/// Which user groups may use which groups of features: a flag for each pair. A feature may be used where at least one
/// of the groups that hold it is allowed.
///
/// The numbers given to the constructor fix the cells. Give the groups the ids 0 to n - 1 and add as many as there are
/// rows and columns: saving and loading count groups. A cell that is not there is not allowed, and setting it does
/// nothing. One thread at a time.
class GENERICUTILITIES_EXPORT FeatureMatrix {
public:
    /// One of the groups that hold a feature, and whether it is allowed.
    struct Reason {
        FeatureGroup const* group; // the matrix's
        bool isAllowed;
    };
    /// A cell that two matrices do not have in common.
    struct Change {
        int row;
        int column;
        bool before;
        bool after;
    };

    /// All cells are allowed. Numbers below 0 count as 0.
    FeatureMatrix(int rows, int columns);
    FeatureMatrix(FeatureMatrix const&) = delete;
    FeatureMatrix& operator=(FeatureMatrix const&) = delete;
    /// Deletes all groups.
    virtual ~FeatureMatrix();

    /// Writes the cells into the group "FeatureMatrix"; then the matrix is not modified. @p destination, here as below,
    /// is the caller's and must not be null.
    virtual void save(IPersistDestination* destination) const;
    /// Reads cells as save() wrote them. What was saved for another number of groups is refused with a line in the log
    /// (LogQt, level 3); damaged text gives the cells that it holds, words that are no numbers none allowed.
    virtual void load(IPersistDestination* destination);

    /// Takes @p group, in place of one of the same id: that one is not deleted. Null is ignored.
    void addFeatureGroup(FeatureGroup* group);
    void addUserGroup(UserGroup* group);
    /// Takes @p feature for the group of that id. Where there is none, the id is entered without a group behind it, and
    /// the feature stays the caller's.
    void addFeatureToGroup(Feature* feature, int groupId);
    bool containsFeatureGroup(int groupId) const { return m_featureGroups.contains(groupId); }
    /// By their ids; an id without a group has null.
    QMap<int, FeatureGroup*> const& featureGroups() const { return m_featureGroups; }
    QMap<int, UserGroup*> const& userGroups() const { return m_userGroups; }

    void setAllowed(int row, int column, bool allowed);
    bool isAllowed(int row, int column) const;
    /// Whether one of the groups that hold the feature is allowed.
    bool isFeatureAllowed(int featureId, int userGroup) const;
    /// Whether a cell changed since construction, the last save or the last complete load.
    bool isModified() const { return m_modified; }

    /// For the editor that shows the matrix: setAllowed() changes such a cell all the same.
    void disableAbilityToChange(int row, int column);
    bool isChangeable(int row, int column) const;
    /// Rows and columns, in the order of their coming, repetitions included.
    QList<QPair<int, int>> const& fixedCells() const { return m_fixedCells; }

    /// Why a feature may be used or not: the groups that hold it, by their ids. Empty where none does.
    QList<Reason> explain(int featureId, int userGroup) const;
    /// The ids of all features that a user group may use, ascending.
    QList<int> effectiveFeatures(int userGroup) const;
    /// The cells that differ in @p other, row by row, from this matrix (before) to that (after). A cell that one of
    /// them does not have is not allowed there.
    QList<Change> difference(FeatureMatrix const& other) const;

private:
    bool hasCell(int row, int column) const;
    QByteArray packed() const;
    bool unpack(QByteArray const& text);

    QMap<int, FeatureGroup*> m_featureGroups;
    QMap<int, UserGroup*> m_userGroups;
    std::vector<std::vector<bool>> m_cells; // [row][column]
    QList<QPair<int, int>> m_fixedCells;
    mutable bool m_modified = false; // saving does not change what the matrix says
};

} // namespace qv

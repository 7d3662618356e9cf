// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/LogEntry.h>

#include <QAbstractTableModel>
#include <QList>
#include <QSharedPointer>

#include <array>
#include <memory>

namespace qv {

/// The entries of the action log as a table that follows the log: a row for each entry in memory, oldest first.
///
/// The model belongs to the thread it is made in. Whichever thread logs, the model keeps copies of the entries and
/// changes its rows when its own thread next handles events; until then it shows what it showed. It follows the log
/// that getInstance() returned when it was made, and keeps its rows when that log is deleted.
class GENERICUTILITIES_EXPORT ActionLogModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { TimeColumn, UserColumn, CategoryColumn, ActionColumn, DescriptionColumn, ColumnCount };

    /// The same in every column of a row.
    enum Role {
        TimeRole = Qt::UserRole, ///< QDateTime
        UserRole, ///< QString
        CategoryRole, ///< quint32, an ELogCategory
        IdRole, ///< QString of four characters, the id of the entry's type
        DescriptionRole ///< QString
    };

    explicit ActionLogModel(QObject* parent = nullptr);
    ~ActionLogModel() override;

    int rowCount(QModelIndex const& parent = {}) const override;
    int columnCount(QModelIndex const& parent = {}) const override;
    /// Qt::DisplayRole gives the QDateTime in the first column, and texts for people in the others.
    QVariant data(QModelIndex const& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Null where there is no such row.
    QSharedPointer<LogEntry const> entry(int row) const;

private:
    class Feed;

    void insert(int row, QSharedPointer<LogEntry const> const& entry);
    void remove(int first, int last);

    QList<QSharedPointer<LogEntry const>> m_rows;
    std::shared_ptr<Feed> m_feed;
    std::array<QMetaObject::Connection, 2> m_connections;
};

} // namespace qv

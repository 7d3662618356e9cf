// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Catalogue.h"
#include "Search.h"

#include <QSqlDatabase>
#include <QStringList>

class QSqlQuery;

/// The type of the column for values like @p value: "INTEGER", "REAL", "TEXT"; null where they fit into no column.
QString columnType(QVariant const& value);
/// The names of the properties that fit into columns.
QStringList columnsOf(qvgen::PropertySet const& recording);
/// @p value as a column or a bind value has it: a number, a text or a truth value; dates are microseconds.
QVariant storable(QVariant const& value);

/// A SQLite file with one table, `recordings`, whose columns are made from a property set: one for each property that
/// fits into a column, and `id`, which is the index of the recording in its list.
///
/// The table that an earlier run left is replaced when store() succeeds; a database of anyone else is refused.
/// Everything throws qv::ExceptionQt with one line for the user where SQLite refuses.
class RecordingDatabase {
public:
    /// Opens @p file and makes the columns from @p prototype.
    RecordingDatabase(QString const& file, qvgen::PropertySet const& prototype);
    ~RecordingDatabase();
    RecordingDatabase(RecordingDatabase const&) = delete;
    RecordingDatabase& operator=(RecordingDatabase const&) = delete;

    QString const& file() const { return m_file; }

    void store(QVector<qvgen::PropertySet> const& recordings, Progress const& progress);

    /// The statement that finds the rows of @p search, with "?" for the bind values of its condition.
    static QString statement(Search const& search);
    /// The ids of those rows, in the order of the search.
    QVector<int> find(Search const& search) const;
    /// Throws where find() would as SQLite does not understand the statement; even before store().
    void check(Search const& search) const;

private:
    void open();
    void refuseForeign();
    void createTable(qvgen::PropertySet const& prototype);
    QVariant value(QString const& statement) const;
    void run(QSqlQuery& query) const;
    QSqlQuery prepared(Search const& search) const;
    [[noreturn]] void fail(QString const& reason) const;

    QString m_file;
    QStringList m_columns;
    QSqlDatabase m_database;
};

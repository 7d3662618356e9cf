// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Answer.h"
#include "Searches.h"

QT_BEGIN_NAMESPACE
class QTextStream;
QT_END_NAMESPACE

/// Writes what the program has found, for people. Texts from outside are printed with their control characters escaped.
class Report {
public:
    /// Lines are kept to @p width columns where that is possible.
    Report(QTextStream& out, int width, int shownRows);

    void catalogue(Catalogue const& catalogue, double seconds);
    void stored(QString const& databaseFile, double seconds);
    void saved(QString const& searchFile);
    void exported(QString const& file, int rows);
    /// The properties of a recording: name, class, column type, value, description.
    void properties(qvgen::PropertySet const& recording);
    void search(Search const& search, Answer const& answer, QVector<qvgen::PropertySet> const& recordings);
    /// The last line: whether all searches were answered alike.
    void verdict();

    int disagreements() const { return m_disagreements; }

    /// One line that tells by which rows the two answers differ.
    static QString disagreement(
        Search const& search, Answer const& answer, QVector<qvgen::PropertySet> const& recordings);

private:
    void condition(Search const& search);
    void field(char const* name, QString const& text);
    void rows(QVector<int> const& rows, QVector<qvgen::PropertySet> const& recordings);

    QTextStream& m_out;
    int m_width;
    int m_shownRows;
    int m_searches = 0;
    int m_disagreements = 0;
};

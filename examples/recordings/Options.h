// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

/// What the command line asks for. A condition that was not asked for is an empty list or no value.
struct Options {
    QString folder; ///< Absolute and clean.
    QString database;
    int shownRows = 5; ///< Per search.

    QStringList names;
    QStringList suffixes; ///< In lower case, without dot; "" stands for files without one.
    QStringList folders; ///< Absolute and clean.
    QStringList owners;
    std::optional<qulonglong> largerThan; ///< In bytes, at most 2^63 - 1, as that is what a database holds.
    std::optional<qulonglong> smallerThan;
    std::optional<QDateTime> modifiedAfter; ///< In UTC, from 1970 to 2106.
    std::optional<QDateTime> modifiedBefore;
    QStringList sortTerms; ///< Lists of names, as given.
    QString searchFile; ///< Absolute and clean, as the next three; empty for none.
    QString saveFile;
    QString exportFile;
    QString log; ///< Empty for the log of this user and program.
    bool any = false; ///< Conditions are joined by OR instead of AND.
    bool negated = false;
};

/// Reads the arguments of the application. `--help` and `--version` print and end the process. Throws
/// qv::IllegalArgumentException with one line for the user where an argument makes no sense.
Options readOptions(QStringList const& arguments);

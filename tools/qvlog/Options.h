// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <optional>

enum class Command { Show, Follow, Verify, Stats, Convert };
enum class Format { Text, Csv, JsonLines, Xml };
/// Of convert: into a report, or into a log file again.
enum class Target { Csv, JsonLines, Xml, Plain, Encrypted };

/// Which entries are asked for. An empty list asks for all.
struct Wanted {
    QDateTime since; ///< Null for none, as the next.
    QDateTime until; ///< The last millisecond that belongs to the span.
    QStringList users;
    QStringList categories;
    QStringList ids; ///< Of four characters each.
    QStringList texts; ///< All of them are to be there.
};

/// What the command line asks for.
struct Options {
    Command command = Command::Show;
    QStringList sources; ///< Files and folders.
    QString fileUser;
    QString passwordFile; ///< Empty: the password comes from elsewhere, as the next.
    QString newPasswordFile;
    QString anchorsFile; ///< Empty for none, as the next.
    QString newAnchorsFile;
    Wanted wanted;
    QString language; ///< "de", "fr" or "en"; empty for that of the environment.
    std::optional<QLocale> logLocale;
    Format format = Format::Text;
    bool all = false; ///< Of follow: begin with the entries that are there.
    Target target = Target::Csv;
    QString targetFile;
};

/// Reads the command line; shows help or version and ends the program where asked to. Throws UsageException.
Options readOptions(QStringList const& arguments);

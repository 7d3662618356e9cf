// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QString>
#include <QStringList>

enum class Task { Append, Print, Verify };

/// What the command line asks for.
struct Options {
    Task task = Task::Append;
    QString file;
    QString user;
    QString passwordFile; ///< Empty: the password comes from elsewhere.
};

/// Reads the command line; shows help or version and ends the program where asked to. Throws
/// qv::IllegalArgumentException.
Options readOptions(QStringList const& arguments);

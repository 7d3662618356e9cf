// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QString>

/// @p text on one line of a terminal: control and format characters, as file names may hold them, become "\n", "\x1b",
/// "\u202e".
QString printable(QString const& text);

/// The number of terminal columns that @p text takes.
int displayWidth(QString const& text);

/// @p text cut to @p width columns, at least 4; "..." stands for what is missing at the end or, for ElideLeft, at the
/// start.
enum class Elide { Right, Left };
QString elided(QString const& text, int width, Elide side);

/// @p text broken at blanks into lines of at most @p width columns where it has blanks enough; lines after the first
/// are indented by @p indent blanks, which count.
QString wrapped(QString const& text, int width, int indent);

/// With commas between thousands.
QString grouped(qulonglong number);
/// "1 file", "2 files", "1,234 files".
QString counted(int number, QString const& noun);

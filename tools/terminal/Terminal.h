// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArray>

#include <optional>

/// Asks on the terminal that the program was started from, whatever standard input and output are, and reads a line
/// that is not shown. No value where there is no such terminal or its input ends. Whoever interrupts the question
/// (Ctrl-C) ends the program, with the terminal as it was before.
std::optional<QByteArray> askHidden(QByteArray const& question);

/// The columns of the terminal that standard output is; no value where it is none.
std::optional<int> terminalWidth();

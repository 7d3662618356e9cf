// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Access.h"
#include "Failures.h"
#include "Options.h"

/// The commands. What keeps them from doing anything throws an exception of Failures.h; what they meet in one of
/// several files they tell on standard error.
ExitCode show(Options const& options, Access& access);
/// Ends on SIGINT and SIGTERM.
ExitCode follow(Options const& options, Access& access);
ExitCode verify(Options const& options, Access& access);
ExitCode stats(Options const& options, Access& access);
ExitCode convert(Options const& options, Access& access);

// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "Answer.h"
#include "Options.h"

/// Logs what the user does, from construction (start) to destruction (quit), into the action log of this process.
/// Where that fails the user is told, and the program goes on.
class Trail {
public:
    using Complain = void (*)(QString const& message);

    Trail(Options const& options, Complain complain);
    ~Trail();
    Trail(Trail const&) = delete;
    Trail& operator=(Trail const&) = delete;

    static void searched(Search const& search, Answer const& answer);
    /// What the process is going to end with.
    int exitCode() const { return m_exitCode; }
    void setExitCode(int exitCode) { m_exitCode = exitCode; }

private:
    int m_exitCode = 2;
};

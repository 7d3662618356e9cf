// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

/// Thrown where the program can stop because it was interrupted.
class Interruption {
public:
    static constexpr int ExitCode = 130; ///< As shells have it: 128 and the number of SIGINT.
};

/// From now on SIGINT and SIGTERM are noted, so that the log tells of the end; the second one ends the process.
void catchInterruptions();
bool isInterrupted();

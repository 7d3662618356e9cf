// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Interruption.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t interrupted = 0;

void noteInterruption(int)
{
    interrupted = 1;
}

} // namespace

void catchInterruptions()
{
    struct sigaction action = {};
    action.sa_handler = noteInterruption;
    // The C library takes a write that a signal cuts short for a failure.
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool isInterrupted()
{
    return interrupted != 0;
}

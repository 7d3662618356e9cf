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
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool isInterrupted()
{
    return interrupted != 0;
}

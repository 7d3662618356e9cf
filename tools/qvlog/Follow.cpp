// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Commands.h"
#include "Follower.h"
#include "Report.h"
#include "Selection.h"

#include <csignal>
#include <poll.h>

namespace {

constexpr int PauseMilliSeconds = 200;

volatile std::sig_atomic_t isInterrupted = 0;

void noteInterruption(int)
{
    isInterrupted = 1;
}

void catchInterruptions()
{
    struct sigaction action = {};
    action.sa_handler = noteInterruption; // Without SA_RESTART: the pause ends.
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

} // namespace

ExitCode follow(Options const& options, Access& access)
{
    Output output;
    Selection const selection = chosenSelection(options);
    auto const report = makeReport(options.format, output);
    std::optional<Follower> follower;
    workOn(options.sources.constFirst(), [&] {
        follower.emplace(options, access, [&](LoggedEntry const& entry) {
            if (selection.takes(entry))
                report->write(entry);
        });
        if (!options.all)
            follower->skip();
    });
    catchInterruptions();
    report->begin();
    printError(QStringLiteral("following '%1'").arg(options.sources.constFirst()));
    while (!isInterrupted) {
        follower->advance();
        output.flush();
        poll(nullptr, 0, PauseMilliSeconds);
    }
    report->end();
    output.flush();
    return Fine;
}

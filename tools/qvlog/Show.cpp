// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Commands.h"
#include "Report.h"
#include "Trail.h"

ExitCode show(Options const& options, Access& access)
{
    Output output;
    auto const report = makeReport(options.format, output);
    report->begin();
    ExitCode const code = readTrail(options, access, [&](LoggedEntry const& entry) { report->write(entry); });
    report->end();
    output.flush();
    return code;
}

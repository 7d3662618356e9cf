// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/ActionLogTesting_p.h>

#include <utility>

namespace qv {

namespace {

    ActionLogTesting::Clock& clock()
    {
        static ActionLogTesting::Clock clock;
        return clock;
    }

} // namespace

void ActionLogTesting::setClock(Clock replacement)
{
    clock() = std::move(replacement);
}

QDateTime actionLogTime()
{
    return clock() ? clock()() : QDateTime::currentDateTime();
}

} // namespace qv

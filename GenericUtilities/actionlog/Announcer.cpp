// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/Announcer_p.h>

#include <QScopedValueRollback>

#include <utility>

namespace qv {

void Announcer::add(Step step)
{
    m_steps.push_back(std::move(step));
}

void Announcer::addError(Step step)
{
    if (m_isTellingError)
        return;
    add([this, step = std::move(step)] {
        QScopedValueRollback<bool> const telling(m_isTellingError, true);
        step();
    });
}

void Announcer::run()
{
    if (m_isRunning)
        return;
    QScopedValueRollback<bool> const running(m_isRunning, true);
    while (!m_steps.empty()) {
        Step const step = std::move(m_steps.front());
        m_steps.pop_front();
        step();
    }
}

} // namespace qv

// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/SmartHandle.h>

#include <atomic>
#include <utility>

namespace qvm {

struct SmartHandleCore::Group {
    void* handlee;
    void (*deleter)(void*);
    std::atomic<int> count{1};
};

SmartHandleCore::~SmartHandleCore() = default;

SmartHandleCore::SmartHandleCore(SmartHandleCore const& other) noexcept
    : m_group(other.m_group)
{
    if (m_group)
        m_group->count.fetch_add(1, std::memory_order_relaxed);
}

void SmartHandleCore::found(void* handlee, void (*deleter)(void*))
{
    m_group = new Group{handlee, deleter};
}

void SmartHandleCore::swapGroup(SmartHandleCore& other) noexcept
{
    std::swap(m_group, other.m_group);
}

void SmartHandleCore::leave(void* handlee)
{
    Group* const group = std::exchange(m_group, nullptr);
    if (!group || group->count.fetch_sub(1, std::memory_order_acq_rel) > 1)
        return;
    void* const founded = group->handlee;
    auto const deleter = group->deleter;
    delete group;
    deleteHandlee(deleter ? founded : handlee, deleter);
}

} // namespace qvm

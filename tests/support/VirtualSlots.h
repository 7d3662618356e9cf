// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <cstddef>
#include <cstring>

namespace support {

/// The place of a virtual operation in its class's table, from 0; the destructor takes two. Programs that were built
/// earlier call by it. In the C++ ABI of GCC and clang on x86, a pointer to a virtual member function begins with its
/// offset in the table plus 1.
template <class Operation> int slotOf(Operation operation)
{
    std::ptrdiff_t offset = 0;
    static_assert(sizeof(operation) >= sizeof(offset));
    std::memcpy(&offset, &operation, sizeof(offset));
    return offset % 2 == 1 ? int(offset / std::ptrdiff_t(sizeof(void*))) : -1;
}

} // namespace support

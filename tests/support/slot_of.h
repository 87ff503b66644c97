#pragma once

#include <cstddef>
#include <cstring>
#include <vector>

namespace panelry::test
{

/// Where a virtual operation stands in its class's table, from 0. A virtual destructor fills two places.
template <class Operation>
int SlotOf(Operation operation)
{
    std::ptrdiff_t parts[2] = {};
    static_assert(sizeof operation == sizeof parts);
    std::memcpy(parts, &operation, sizeof parts);
    return static_cast<int>((parts[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

template <class... Operation>
std::vector<int> SlotsOf(Operation... operations)
{
    return {SlotOf(operations)...};
}

}  // namespace panelry::test

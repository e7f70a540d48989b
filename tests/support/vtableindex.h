#pragma once

#include <cstddef>
#include <cstring>

/// Position of a virtual operation in its class's table, as the platform's C++ ABI writes it into a
/// pointer to member: a host that was built elsewhere calls by this number.
template <typename Operation>
int vtableIndex(Operation operation)
{
    static_assert(sizeof operation == 2 * sizeof(std::ptrdiff_t), "Itanium C++ ABI");
    std::ptrdiff_t words[2];
    std::memcpy(words, &operation, sizeof words);
#if defined(__aarch64__) || defined(__arm__)
    return static_cast<int>(words[0] / static_cast<std::ptrdiff_t>(sizeof(void*)));
#else
    return static_cast<int>((words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
#endif
}

#include "heapcounter.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <malloc.h>

static std::atomic<long> allocations{0};
static std::atomic<long> liveBytes{0};
static std::atomic<long> peakBytes{0};

HeapCount heapCount()
{
    return {allocations, liveBytes, peakBytes};
}

void resetHeapPeak()
{
    peakBytes = liveBytes.load();
}

HeapCount heapUseOf(const std::function<void()>& work)
{
    work();
    const HeapCount before = heapCount();
    resetHeapPeak();
    work();
    const HeapCount after = heapCount();
    return {after.allocations - before.allocations, after.liveBytes - before.liveBytes,
            after.peakBytes - before.liveBytes};
}

static void* taken(void* memory)
{
    if (memory) {
        ++allocations;
        liveBytes += static_cast<long>(malloc_usable_size(memory));
        peakBytes = std::max(peakBytes.load(), liveBytes.load());
    }
    return memory;
}

static void givenBack(void* memory)
{
    if (memory)
        liveBytes -= static_cast<long>(malloc_usable_size(memory));
}

// The C library's own functions, under the names that it offers to replacements of malloc().
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);

void* malloc(std::size_t size)
{
    return taken(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size)
{
    return taken(__libc_calloc(count, size));
}

void* realloc(void* memory, std::size_t size)
{
    givenBack(memory);
    return taken(__libc_realloc(memory, size));
}

void free(void* memory)
{
    givenBack(memory);
    __libc_free(memory);
}
}

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <new>

// Counts what the calling thread allocates with new. Belongs into one source of a test program,
// whose operators it replaces; other sources do not include it. The sanitizers bring operators of
// their own: under them nothing is counted, and a test that needs the count skips itself.

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ALLOCATIONS_ARE_COUNTED false
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ALLOCATIONS_ARE_COUNTED false
#endif
#endif
#ifndef ALLOCATIONS_ARE_COUNTED
#define ALLOCATIONS_ARE_COUNTED true
#define REPLACE_NEW
#endif

constexpr bool kAllocationsAreCounted = ALLOCATIONS_ARE_COUNTED;
static thread_local long allocationsOfThread = 0;

/// How often operator new was called on this thread so far.
static inline long allocationCount() {
    return allocationsOfThread;
}

#ifdef REPLACE_NEW
// Not inlined, so that no compiler matches a new of its own with the free in here.
#define NOT_INLINED __attribute__((noinline))

NOT_INLINED void* operator new(std::size_t size) {
    ++allocationsOfThread;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}
NOT_INLINED void operator delete(void* memory) noexcept {
    std::free(memory);
}
NOT_INLINED void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
#undef NOT_INLINED
#undef REPLACE_NEW
#endif

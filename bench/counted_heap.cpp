// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Takes the calls that the linker's --wrap diverts, and operator new of the inlined containers.

#include "counted_heap.h"

#include <cstdlib>
#include <new>

int64_t heap_requests = 0;

// The linker asks for these names.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* memory, size_t size);

void* __wrap_malloc(size_t size) {
    ++heap_requests;
    return __real_malloc(size);
}

void* __wrap_calloc(size_t count, size_t size) {
    ++heap_requests;
    return __real_calloc(count, size);
}

void* __wrap_realloc(void* memory, size_t size) {
    ++heap_requests;
    return __real_realloc(memory, size);
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

void* operator new(size_t size) {
    if (void* memory = std::malloc(size)) {  // which counts
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t /*size*/) noexcept { std::free(memory); }

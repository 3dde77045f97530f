#pragma once

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi::detail {

/// Memory for `count` items that are plain data, keeping what `old` holds, as `realloc` does. Raises NSMallocException
/// when no machine has so much, and throws std::bad_alloc when this one has not; `old` is left alone in both cases.
template <class T> T* reallocated(T* old, std::size_t count) {
    if (count > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T)) [[unlikely]]
        NSException::raise(NSMallocException, u"*** a collection cannot have room for %lu objects", count);
    void* const memory = std::realloc(static_cast<void*>(old), count * sizeof(T));
    if (!memory && count) [[unlikely]]
        throw std::bad_alloc();
    return static_cast<T*>(memory);
}

}  // namespace tovi::detail

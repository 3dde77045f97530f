#pragma once

#include <algorithm>
#include <span>
#include <type_traits>
#include <vector>

namespace tovi::detail {

constexpr std::size_t longestInsertion = 8;
constexpr std::ptrdiff_t fetchedAhead = 6;

template <class T, class After> void insertionSort(std::span<T> items, After& after) {
    for (std::size_t i = 1; i < items.size(); ++i) {
        const T moved = items[i];
        std::size_t hole = i;
        for (; hole > 0 && after(items[hole - 1], moved); --hole)
            items[hole] = items[hole - 1];
        items[hole] = moved;
    }
}

// What a merge comes to soon: objects lie anywhere, and comparing must not wait for the memory.
template <class T> void fetchAhead([[maybe_unused]] const T* item, [[maybe_unused]] const T* end) {
    if constexpr (std::is_pointer_v<T>)
        __builtin_prefetch(end - item > fetchedAhead ? item[fetchedAhead] : nullptr);
}

template <class T, class After> void mergeSortWithin(std::span<T> items, T* scratch, After& after) {
    if (items.size() <= longestInsertion)
        return insertionSort(items, after);
    const std::size_t half = items.size() / 2;
    mergeSortWithin(items.first(half), scratch, after);
    mergeSortWithin(items.subspan(half), scratch, after);
    if (!after(items[half - 1], items[half]))
        return;
    T* out = items.data();
    const T* left = scratch;
    const T* const leftEnd = std::copy_n(out, half, scratch);
    const T* right = out + half;
    const T* const rightEnd = out + items.size();
    while (left != leftEnd && right != rightEnd) {
        fetchAhead(left, leftEnd);
        fetchAhead(right, rightEnd);
        const bool takesRight = after(*left, *right);
        *out++ = *(takesRight ? right : left);
        right += takesRight;
        left += !takesRight;
    }
    std::copy(left, leftEnd, out);
}

/// A stable sort of plain data that stays within the items however the comparison behaves. When that throws, the items
/// are left in a state of no use. `after(a, b)` answers whether a belongs behind b.
template <class T, class After> void mergeSort(std::span<T> items, After after) {
    if (items.size() <= longestInsertion)
        return insertionSort(items, after);
    std::vector<T> scratch(items.size() / 2);
    mergeSortWithin(items, scratch.data(), after);
}

}  // namespace tovi::detail

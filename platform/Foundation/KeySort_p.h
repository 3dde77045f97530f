#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include <ToviFoundationKit/Foundation/MergeSort_p.h>

namespace tovi::detail {

/// An item with a number that orders it, so that its object need not be looked at.
template <class Item> struct Keyed {
    std::uint64_t key;
    Item item;
};

constexpr std::size_t fewestForRadix = 256;

/// Sorts by the keys; stable. Byte by byte, the lowest first, without those bytes that are the same in all keys.
template <class Item> void sortByKeys(std::vector<Keyed<Item>>& items) {
    if (items.size() < fewestForRadix)
        return mergeSort(std::span(items), [](const auto& a, const auto& b) { return a.key > b.key; });
    std::array<std::array<std::size_t, 256>, 8> counts{};
    for (const Keyed<Item>& item : items)
        for (std::size_t byte = 0; byte < 8; ++byte)
            ++counts[byte][item.key >> 8 * byte & 0xFF];
    std::vector<Keyed<Item>> sorted(items.size());
    for (std::size_t byte = 0; byte < 8; ++byte) {
        std::array<std::size_t, 256>& starts = counts[byte];
        if (starts[items[0].key >> 8 * byte & 0xFF] == items.size())
            continue;
        for (std::size_t start = 0; std::size_t & count : starts)
            start += std::exchange(count, start);
        for (const Keyed<Item>& item : items)
            sorted[starts[item.key >> 8 * byte & 0xFF]++] = item;
        items.swap(sorted);
    }
}

/// Puts items of one key into the order of a comparison.
template <class Item, class After> void sortWithinKeys(std::vector<Keyed<Item>>& items, After after) {
    for (auto begin = items.begin(); begin != items.end();) {
        const auto end =
            std::find_if(begin, items.end(), [key = begin->key](const auto& each) { return each.key != key; });
        mergeSort(std::span(begin, end), [&](const auto& a, const auto& b) { return after(a.item, b.item); });
        begin = end;
    }
}

}  // namespace tovi::detail

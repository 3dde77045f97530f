#include <ToviFoundationKit/Foundation/DataBuilder_p.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <utility>

namespace tovi::detail {

void DataBuilder::grow(NSUInteger count) {
    if (count > PTRDIFF_MAX / 2)
        throw std::bad_alloc();
    resize(std::max(length_ + count, 2 * capacity_));
}

void DataBuilder::resize(NSUInteger capacity) {
    void* const block = std::realloc(block_, sizeof(NSData) + capacity);
    if (!block)
        throw std::bad_alloc();
    block_ = block;
    capacity_ = capacity;
}

Ref<NSData> DataBuilder::data() {
    if (!block_ || capacity_ - length_ > length_ / 8)
        resize(length_);
    auto* const content = reinterpret_cast<std::byte*>(bytes());
    capacity_ = 0;
    return adopt(*::new (std::exchange(block_, nullptr)) NSData(content, std::exchange(length_, 0)));
}

}  // namespace tovi::detail

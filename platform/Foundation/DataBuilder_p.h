#pragma once

#include <cstdlib>
#include <string_view>

#include <ToviFoundationKit/Foundation/NSData.h>

namespace tovi::detail {

/// Collects bytes piece by piece and ends as one immutable data, without copying them. Grows geometrically.
class DataBuilder {
public:
    DataBuilder() noexcept = default;
    ~DataBuilder() { std::free(block_); }
    DataBuilder(const DataBuilder&) = delete;
    DataBuilder& operator=(const DataBuilder&) = delete;

    /// Appends so many bytes, to be written by the caller at once.
    char* extend(NSUInteger count) {
        if (count > capacity_ - length_)
            grow(count);
        length_ += count;
        return bytes() + length_ - count;
    }
    void append(std::string_view more) { more.copy(extend(more.size()), more.size()); }
    /// Takes bytes away from the end.
    void truncate(NSUInteger length) noexcept { length_ = length; }

    /// Null as long as nothing was appended.
    char* bytes() noexcept { return block_ ? static_cast<char*>(block_) + sizeof(NSData) : nullptr; }
    NSUInteger length() const noexcept { return length_; }

    /// The bytes so far; the builder is empty afterwards.
    Ref<NSData> data();

private:
    void grow(NSUInteger count);
    void resize(NSUInteger capacity);

    void* block_ = nullptr;  ///< with room for the object in front
    NSUInteger length_ = 0, capacity_ = 0;
};

}  // namespace tovi::detail

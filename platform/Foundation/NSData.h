#pragma once

#include <cstddef>
#include <span>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

class NSError;
namespace detail {
class DataBuilder;
}

/// A run of bytes. The immutable form keeps them inside the object. Ranges outside raise NSRangeException.
class TOVI_EXPORT NSData : public NSObject {
    TOVI_DECLARE_CLASS(NSData)

public:
    using Bytes = std::span<const std::byte>;

    static Ref<NSData> data();  ///< none
    static Ref<NSData> dataWithBytes(Bytes bytes);
    static Ref<NSData> dataWithBytes_length(const void* bytes, NSUInteger length);
    static Ref<NSData> dataWithData(const NSData& other);
    /// The content of a file, or nil and an error.
    static RefPtr<NSData> dataWithContentsOfFile(const NSString& path, RefPtr<NSError>* error = nullptr);

    NSUInteger length() const noexcept { return length_; }
    /// The bytes themselves: valid while the object lives and is not changed.
    Bytes bytes() const noexcept { return {bytes_, length_}; }
    Ref<NSData> subdataWithRange(NSRange range) const;
    bool isEqualToData(const NSData& other) const noexcept;

    /// Writes the bytes to a file and answers whether that worked. Atomically, the file has the old content or the new
    /// one at any time, whatever happens: the bytes go to a file beside it, which then takes its place, keeping its
    /// permissions; a symbolic link is followed. Otherwise the file is written over where it is.
    bool writeToFile_atomically(const NSString& path, bool atomically, RefPtr<NSError>* error = nullptr) const;

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    Ref<NSString> description() const override;  ///< "<68656c6c 6f>"
    Ref<NSObject> copy() const override;
    Ref<NSObject> mutableCopy() const override;  ///< an NSMutableData

    static void* operator new(std::size_t size);
    static void operator delete(void* memory);

protected:
    NSData(std::byte* bytes, NSUInteger length) noexcept : bytes_(bytes), length_(length) {}

    std::byte* bytes_;
    NSUInteger length_;

private:
    friend class detail::DataBuilder;
    static Ref<NSData> uninitialized(NSUInteger length);
};

/// Bytes that can be changed. Not for several threads at once.
class TOVI_EXPORT NSMutableData final : public NSData {
    TOVI_DECLARE_CLASS(NSMutableData)

public:
    static Ref<NSMutableData> data();
    static Ref<NSMutableData> dataWithCapacity(NSUInteger capacity);
    static Ref<NSMutableData> dataWithData(const NSData& other);
    ~NSMutableData() override;

    std::span<std::byte> mutableBytes() noexcept { return {bytes_, length_}; }
    void appendData(const NSData& other) { appendBytes(other.bytes()); }
    void appendBytes(Bytes bytes);      ///< may be a part of the receiver
    void setLength(NSUInteger length);  ///< cuts off, or adds zeros
    void setData(const NSData& other);

    Ref<NSObject> copy() const override;

private:
    NSMutableData() noexcept : NSData(nullptr, 0) {}
    void reserve(NSUInteger capacity);

    NSUInteger capacity_ = 0;
};

inline bool operator==(const NSData& a, const NSData& b) noexcept { return a.isEqualToData(b); }

}  // namespace tovi

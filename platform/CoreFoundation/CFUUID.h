#pragma once

#include <array>
#include <cstdint>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// A universally unique identifier (RFC 9562).
class TOVI_EXPORT CFUUID final : public NSObject {
    TOVI_DECLARE_CLASS(CFUUID)

public:
    using Bytes = std::array<std::uint8_t, 16>;

    const Bytes& bytes() const noexcept { return bytes_; }

    bool isEqual(const NSObject* other) const override;
    NSUInteger hash() const override;
    Ref<NSString> description() const override;  ///< as CFUUIDCreateString
    Ref<NSObject> copy() const override;

private:
    friend TOVI_EXPORT Ref<CFUUID> CFUUIDCreate();
    explicit CFUUID(const Bytes& bytes) noexcept : bytes_(bytes) {}

    Bytes bytes_;
};

/// A new one, made of random bits.
TOVI_EXPORT Ref<CFUUID> CFUUIDCreate();

/// 36 characters: five groups of upper-case hexadecimal digits with "-" between,
/// "68753A44-4D6F-1226-9C60-0050E4C00067".
TOVI_EXPORT Ref<NSString> CFUUIDCreateString(const CFUUID& uuid);

}  // namespace tovi

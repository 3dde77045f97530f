#pragma once

#include <ToviFoundationKit/Runtime/Class.h>

namespace tovi {

/// The one object that stands for nothing where an object is needed: in collections, mostly.
class TOVI_EXPORT NSNull final : public NSObject {
    TOVI_DECLARE_CLASS(NSNull)

public:
    static Ref<NSNull> null();

    Ref<NSString> description() const override;  ///< "<null>"
    Ref<NSObject> copy() const override;

private:
    NSNull() noexcept = default;
};

}  // namespace tovi

#pragma once

#include <ToviFoundationKit/Foundation/FastEnumeration.h>
#include <ToviFoundationKit/Runtime/Class.h>

namespace tovi {

class NSArray;

/// Hands out objects one after the other. It keeps its collection alive; changing the collection raises
/// NSGenericException at the next step. Hosts may derive their own.
class TOVI_EXPORT NSEnumerator : public NSObject {
    TOVI_DECLARE_CLASS(NSEnumerator)

public:
    /// The next object; nil when all have been handed out.
    virtual id nextObject() = 0;
    /// What is left, which is thereby handed out.
    Ref<NSArray> allObjects();

protected:
    NSEnumerator() noexcept = default;
};

}  // namespace tovi

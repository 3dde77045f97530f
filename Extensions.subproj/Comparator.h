#pragma once

#include <ToviFoundationKit/Runtime/NSObject.h>

namespace tovi {

/// How the ordered searches compare, always as compare(the object searched for, an element of the list). The answer is
/// an ordering: -1 when the object sorts before the element, 0 when they are the same, and anything else, 2 or -2
/// included, when it sorts after.
///
/// A comparator comes in two forms: a selector, sent to the object searched for with the element as its argument
/// (`usingComparator:`), or a function of the object, the element and a context, which is always null
/// (`usingComparatorFunction:`). Either may be called twice for one element and must be free of side effects.
using ComparatorFunction = NSInteger (*)(NSObject& object, NSObject& element, void* context);

}  // namespace tovi

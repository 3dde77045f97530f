// expect: no matching function
#include <ToviFoundationKit/Runtime/Box.h>

tovi::NSString* text = nullptr;
const auto boxed = tovi::box(*text);
#ifdef MUST_NOT_COMPILE
const auto none = tovi::box(text);
#endif

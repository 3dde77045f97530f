// expect: deleted|no viable|no matching
#include <ToviFoundationKit/Runtime/NSString.h>

tovi::RefPtr<tovi::NSString> nullable = nullptr;
#ifdef MUST_NOT_COMPILE
tovi::Ref<tovi::NSString> never = nullptr;
#endif

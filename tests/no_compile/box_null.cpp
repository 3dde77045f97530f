// expect: use of deleted function|deleted function
#include <ToviFoundationKit/Runtime/Box.h>

const auto one = tovi::box(1);
#ifdef MUST_NOT_COMPILE
const auto none = tovi::box(nullptr);
#endif

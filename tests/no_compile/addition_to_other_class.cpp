// expect: the operation's receiver is another class
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>
#include <ToviFoundationKit/Runtime/NSString.h>

static tovi::NSInteger twice(const tovi::NSNumber& receiver) { return 2 * receiver.integerValue(); }

const tovi::Additions<tovi::NSNumber> fits{tovi::instance<&twice>("twice")};
#ifdef MUST_NOT_COMPILE
const tovi::Additions<tovi::NSString> misfits{tovi::instance<&twice>("twice")};
#endif

#include <ToviFoundationKit/Extensions/NSObject-Singleton.h>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

void detail::raiseWrongSharedInstance(const Class& expected, const NSObject& shared) {
    NSException::raise(NSInvalidArgumentException, u"+[%@ sharedInstance]: answered a %@", expected, shared.isa());
}

inline namespace Singleton {

id sharedInstance(Class& receiver) { return send(receiver, "sharedInstance"_sel); }

namespace {

id noSharedInstance() { return nullptr; }

const Additions<NSObject> additions{
    classLevel<&noSharedInstance>("sharedInstance"),
};

}  // namespace

}  // namespace Singleton
}  // namespace tovi

#include <ToviFoundationKit/Extensions/NSThread-QVLAdditions.h>

#include <ToviFoundationKit/Foundation/NSThread.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {
inline namespace QVLAdditions {

bool inMainThread() { return NSThread::isMainThread(); }

namespace {

const Additions<NSThread> additions{
    classLevel<&inMainThread>("inMainThread"),
};

}  // namespace

}  // namespace QVLAdditions
}  // namespace tovi

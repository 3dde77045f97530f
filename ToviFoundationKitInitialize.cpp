#include <ToviFoundationKit/ToviFoundationKitInitialize.h>

#include <cmath>
#include <cstdint>

#include <ToviFoundationKit/AppKit/NSAppKitVersion.h>
#include <ToviFoundationKit/Foundation/NSBundle.h>
#include <ToviFoundationKit/Runtime/NSLog.h>

using namespace tovi;

namespace {

constinit std::int32_t initialized = 0;

RefPtr<NSString> categoriesBundlePath() {
    const RefPtr<NSBundle> library =
        NSBundle::bundleWithIdentifier(*NSString::stringWithCharacters(NSBundleLibraryIdentifier));
    if (!library)
        return nullptr;
    return NSBundle::pathForResource_ofType_inDirectory(u"ToviFoundationKitCategoriesBundle10_4"_ns, u"bundle"_ns.get(),
                                                        library->resourcePath());
}

void loadCategoriesBundle() {
    const RefPtr<NSString> path = categoriesBundlePath();
    if (!path) {
        NSLog(u"TOVIFOUNDATIONKIT ERROR WHEN LOADING THE 10.4 CATEGORIES BUNDLE!");
        return;
    }
    const RefPtr<NSBundle> bundle = NSBundle::bundleWithPath(*path);
    if (!bundle || !bundle->load())
        NSLog(u"TOVIFOUNDATIONKIT ERROR WHEN LOADING THE 10.4 CATEGORIES BUNDLE AT PATH:%@", bundle);
}

}  // namespace

// As the loader's constructor it comes after those of the registration tables: constructors without a priority run in
// the order in which the linker meets their files, and the top of the house is linked last.
extern "C" __attribute__((constructor)) void ToviFoundationKitInitialize() {
    if (initialized)
        return;
    // A version that is not a number counts as new.
    if (std::floor(NSAppKitVersionNumber) <= NSAppKitVersionNumber10_4)
        loadCategoriesBundle();
    initialized = 1;
}

// The operations that platform releases up to 10.4 lack. Nothing calls this file: it registers them when it is loaded.

#include <ToviFoundationKit/Foundation/NSBundle.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>

namespace tovi {

namespace {

/// Which release of these operations is loaded, as the bundle's Info.strings tells. Hosts ask whether NSObject responds
/// to it to learn whether they have the bundle.
NSInteger toviCategoriesBundleVersion() {
    const RefPtr<NSBundle> bundle = NSBundle::bundleWithIdentifier(u"tovi.FoundationKit.CategoriesBundle10_4"_ns);
    const auto* version = bundle ? as<NSString>(bundle->infoDictionary()->find(u"CFBundleVersion"_ns)) : nullptr;
    return version ? version->integerValue() : 0;
}

const Additions<NSObject> additions{
    classLevel<&toviCategoriesBundleVersion>("toviCategoriesBundleVersion"),
};

}  // namespace

}  // namespace tovi

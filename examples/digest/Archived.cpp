#include <Archived.h>

#include <stdexcept>

using namespace tovi;

namespace digest {

Archived archivedAndReadBack(const NSObject& object, std::string_view what) {
    const auto data = NSKeyedArchiver::archivedDataWithRootObject(object);
    RefPtr<NSError> error;
    const id back = NSKeyedUnarchiver::unarchiveObjectWithData(data, &error);
    if (!back)
        throw std::runtime_error(std::string(what) + ": " + error->localizedDescription()->UTF8String());
    if (!object.isEqual(back.get()))
        throw std::runtime_error(std::string(what) + ": the archive does not give back what was put into it");
    return {back.ref(), data->length()};
}

}  // namespace digest

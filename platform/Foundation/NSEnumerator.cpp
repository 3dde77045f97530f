#include <ToviFoundationKit/Foundation/NSEnumerator.h>

#include <ToviFoundationKit/Foundation/Enumerators_p.h>
#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSEnumerator, NSObject)

Ref<NSArray> NSEnumerator::allObjects() {
    std::vector<Ref<NSObject>> objects;
    while (id each = nextObject())
        objects.push_back(each.ref());
    return NSArray::arrayTakingObjects(objects);
}

namespace detail {
namespace {

class CollectionEnumerator final : public NSEnumerator {
public:
    explicit CollectionEnumerator(const NSObject& collection) : enumeration_(collection) {}
    id nextObject() override { return enumeration_.next(); }

private:
    FastEnumeration enumeration_;
};

}  // namespace

Ref<NSEnumerator> enumeratorOver(const NSObject& collection) { return adopt(*new CollectionEnumerator(collection)); }

}  // namespace detail

namespace {

const Additions<NSEnumerator> additions{
    instance<&NSEnumerator::nextObject>("nextObject"),
    instance<&NSEnumerator::allObjects>("allObjects"),
};

}  // namespace

}  // namespace tovi

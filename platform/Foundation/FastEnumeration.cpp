#include <ToviFoundationKit/Foundation/FastEnumeration.h>

#include <ToviFoundationKit/Foundation/NSDictionary.h>
#include <ToviFoundationKit/Foundation/NSEnumerator.h>
#include <ToviFoundationKit/Foundation/NSSet.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

namespace detail {
void raiseMutatedWhileEnumerated(const NSObject& collection) {
    NSException::raise(NSGenericException, u"*** Collection <%s: %p> was mutated while being enumerated.",
                       collection.isa().name(), static_cast<const void*>(&collection));
}
}  // namespace detail

namespace {

template <class Item> detail::ObjectRun runOver(const Item* begin, const Item* end, const std::uint32_t& mutations) {
    return {reinterpret_cast<const std::byte*>(begin), reinterpret_cast<const std::byte*>(end), sizeof(Item),
            &mutations};
}

}  // namespace

FastEnumeration::FastEnumeration(const NSObject& collection) : collection_(share(collection)) {
    if (const auto* array = as<NSArray>(&collection))
        run_ = runOver<NSObject*>(array->objects_, array->objects_ + array->count_, array->mutations_);
    else if (const auto* set = as<NSSet>(&collection))
        run_ = runOver(set->table_.begin(), set->table_.end(), set->mutations_);
    else if (const auto* dictionary = as<NSDictionary>(&collection))
        run_ = runOver(dictionary->table_.begin(), dictionary->table_.end(), dictionary->mutations_);
    else if (as<NSEnumerator>(&collection))
        enumerator_ = static_cast<NSEnumerator*>(collection_.get());
    else
        detail::raiseUnrecognizedSelector(collection, "countByEnumeratingWithState:objects:count:"_sel);
    if (run_.mutations)
        expected_ = *run_.mutations;
}

NSObject* FastEnumeration::nextOfEnumerator() {
    current_ = enumerator_->nextObject();
    return current_.get();
}

}  // namespace tovi

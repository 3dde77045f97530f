#include <ToviFoundationKit/Foundation/NSMutableArray.h>
#include <ToviFoundationKit/Foundation/NSMutableSet.h>
#include <ToviFoundationKit/Foundation/NSPredicate.h>
#include <ToviFoundationKit/Foundation/PredicateEvaluator_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

using detail::PredicateLease;

namespace {

/// The elements for which the predicate's answer is this one.
template <class Collection>
std::vector<Ref<NSObject>> elements(const Collection& collection, const NSPredicate& predicate, bool answer) {
    const PredicateLease evaluator(predicate);
    std::vector<Ref<NSObject>> found;
    for (NSObject& each : collection) {
        const Ref<NSObject> held(each);  // its own code is asked
        if (evaluator->test(&each, nullptr) == answer)
            found.push_back(held);
    }
    return found;
}

}  // namespace

Ref<NSArray> NSArray::filteredArrayUsingPredicate(const NSPredicate& predicate) const {
    auto found = elements(*this, predicate, true);
    return arrayTakingObjects(found);
}

void NSMutableArray::filterUsingPredicate(const NSPredicate& predicate) {
    const PredicateLease evaluator(predicate);
    removeObjectsPassingTest([&evaluator](NSObject& each) {
        const Ref<NSObject> held(each);
        return !evaluator->test(&each, nullptr);
    });
}

Ref<NSSet> NSSet::filteredSetUsingPredicate(const NSPredicate& predicate) const {
    return from(elements(*this, predicate, true));
}

void NSMutableSet::filterUsingPredicate(const NSPredicate& predicate) {
    for (const Ref<NSObject>& each : elements(*this, predicate, false))
        removeObject(each);
}

namespace {

const Additions<NSArray> arrayAdditions{
    instance<&NSArray::filteredArrayUsingPredicate>("filteredArrayUsingPredicate:"),
};
const Additions<NSMutableArray> mutableArrayAdditions{
    instance<&NSMutableArray::filterUsingPredicate>("filterUsingPredicate:"),
};
const Additions<NSSet> setAdditions{
    instance<&NSSet::filteredSetUsingPredicate>("filteredSetUsingPredicate:"),
};
const Additions<NSMutableSet> mutableSetAdditions{
    instance<&NSMutableSet::filterUsingPredicate>("filterUsingPredicate:"),
};

}  // namespace

}  // namespace tovi

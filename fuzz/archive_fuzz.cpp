// Archives: anything may be thrown at the unarchivers. What they bring back is archived again; that archive must bring
// back the same, so that a third one is equal byte for byte.

#include "../tests/support/Dissolve.h"
#include "Support.h"

using namespace tovi;

namespace {

/// Whether an object is equal to itself by value: it contains neither itself nor a NaN nor a node, which may contain
/// itself or have no data, and is small enough to be compared.
class Comparable {
public:
    bool operator()(const NSObject& root) {
        waiting_.push_back(&root);
        for (int left = 10'000; left && !waiting_.empty() && isComparable_; --left) {
            const NSObject& next = *waiting_.back();
            waiting_.pop_back();
            look(next);
        }
        return isComparable_ && waiting_.empty();
    }

private:
    void look(const NSObject& object) {
        if (const auto* list = as<NSArray>(&object)) {
            for (const NSObject& each : *list)
                waiting_.push_back(&each);
        } else if (const auto* set = as<NSSet>(&object)) {
            for (const NSObject& each : *set)
                waiting_.push_back(&each);
        } else if (const auto* keyed = as<NSDictionary>(&object)) {
            for (const auto [key, value] : *keyed) {
                waiting_.push_back(&key);
                waiting_.push_back(&value);
            }
        } else {
            isComparable_ = !as<QVLNode>(&object) && !as<QVLHashNode>(&object) && object.isEqual(&object);
        }
    }

    std::vector<const NSObject*> waiting_;
    bool isComparable_ = true;
};

void check(const ArchiveForm& form, const NSData& data) {
    RefPtr<NSError> error;
    const id object = form.unarchive(data, &error);
    require(static_cast<bool>(object) != static_cast<bool>(error));
    if (!object)
        return;
    const auto archive = form.archive(*object);
    const id same = form.unarchive(archive, &error);
    // A shorter archive has less time for its keys.
    if (same) {
        require(form.archive(*same) == archive);
        require(!Comparable()(*object) || object->isEqual(same.get()));
    } else {
        require(error->localizedDescription()->hasSuffix(u"too long to hash or to compare"_ns));
    }
    dissolve(object);
    dissolve(same);
}

}  // namespace

// An archive can make nodes that hold each other in a circle to which nothing leads.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto input = NSData::dataWithBytes_length(data, size);
    const auto [keyed, unkeyed] = archiveForms;
    check(size > 9 && data[9] == 'u' ? unkeyed : keyed, input);
    return 0;
}

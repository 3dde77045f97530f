#pragma once

#include <unordered_map>
#include <vector>

#include <ToviFoundationKit/Foundation/ArchiveFormat_p.h>

namespace tovi::detail {

/// The keys and class names of an archive, each once.
class ArchiveNames {
public:
    static constexpr NSUInteger none = ~NSUInteger(0);

    NSUInteger count() const noexcept { return names_.size(); }
    const NSString& operator[](NSUInteger index) const noexcept { return *names_[index]; }

    NSUInteger find(const NSString& name) const {
        const auto found = indexes_.find(&name);
        return found == indexes_.end() ? none : found->second;
    }
    /// Adds a name that is not there yet.
    NSUInteger add(const NSString& name) {
        names_.push_back(NSString::stringWithString(name));
        indexes_.emplace(names_.back().get(), names_.size() - 1);
        return names_.size() - 1;
    }
    NSUInteger indexOf(const NSString& name) {
        const NSUInteger found = find(name);
        return found == none ? add(name) : found;
    }

private:
    struct Hash {
        std::size_t operator()(const NSString* name) const { return name->hash(); }
    };
    struct Equal {
        bool operator()(const NSString* a, const NSString* b) const noexcept { return a->isEqualToString(*b); }
    };

    std::vector<Ref<NSString>> names_;
    std::unordered_map<const NSString*, NSUInteger, Hash, Equal> indexes_;
};

}  // namespace tovi::detail

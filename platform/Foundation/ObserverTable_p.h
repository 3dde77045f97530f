#pragma once

#include <array>
#include <atomic>
#include <mutex>
#include <unordered_map>
#include <unordered_set>

#include <ToviFoundationKit/Foundation/NSNotificationCenter.h>

namespace tovi::detail {

struct ObserverList;

/// The block of an observer without an object of its own.
class ObserverBlock final : public NSObject {
public:
    explicit ObserverBlock(NSNotificationCenter::Block function) : block(std::move(function)) {}
    const NSNotificationCenter::Block block;
};

struct Registration {
    ObserverList* list;
    NSObject* observer;  ///< not held
    Selector selector;   ///< null for a block
    RefPtr<ObserverBlock> block;
    std::uint64_t sequence;
    std::atomic<bool> isRemoved{false};
    Registration* next = nullptr;  ///< in the list
    Registration* previous = nullptr;
    Registration* nextOfObserver = nullptr;  ///< once removed: the next one removed
    Registration* previousOfObserver = nullptr;
};

/// The registrations for one name and one object, oldest first. While somebody goes through it, registrations that are
/// removed stay in their places, so the way from one to the next can be gone without a lock.
struct ObserverList {
    RefPtr<NSString> name;
    const NSObject* object;
    Registration* first = nullptr;
    Registration* last = nullptr;
    Registration* removed = nullptr;
    std::size_t visits = 0;
};

/// Who is to be told of what.
class ObserverTable {
public:
    ObserverTable() = default;
    ~ObserverTable();
    ObserverTable(const ObserverTable&) = delete;
    ObserverTable& operator=(const ObserverTable&) = delete;

    void add(NSObject& observer, Selector selector, RefPtr<ObserverBlock> block, const NSString* name,
             const NSObject* object);
    void remove(const NSObject& observer, const NSString* name, const NSObject* object);

    /// Everybody who is to hear of a notification, as of the moment when it is made.
    class Visit {
    public:
        Visit(ObserverTable& table, const NSString& name, const NSObject* object);
        ~Visit();
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;
        Registration* next() noexcept;  ///< null after the last one

    private:
        struct Part {
            ObserverList* list;
            Registration* next;
            Registration* last;
        };
        void addPart(ObserverList* list);
        Part* earliest() noexcept;

        ObserverTable& table_;
        std::array<Part, 4> parts_;
        std::size_t count_ = 0;
    };

private:
    struct Probe {
        const NSString* name;
        const NSObject* object;
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(const Probe& probe) const {
            return (probe.name ? probe.name->hash() : 0) + reinterpret_cast<std::uintptr_t>(probe.object) / 16 * 31;
        }
        std::size_t operator()(const std::unique_ptr<ObserverList>& list) const {
            return operator()(Probe{list->name.get(), list->object});
        }
    };
    struct Equal {
        using is_transparent = void;
        static Probe probe(const std::unique_ptr<ObserverList>& list) { return {list->name.get(), list->object}; }
        static const Probe& probe(const Probe& probe) { return probe; }
        bool operator()(const auto& left, const auto& right) const {
            const Probe& a = probe(left);
            const Probe& b = probe(right);
            return a.object == b.object && (a.name == b.name || (a.name && b.name && *a.name == *b.name));
        }
    };

    ObserverList* find(const Probe& probe) const;
    ObserverList& findOrMake(const Probe& probe);
    void unlink(Registration& registration);
    void forgetIfEmpty(ObserverList& list);
    /// Adds the registration to those that are let go of once nobody is there to see it.
    void retire(Registration& registration, Registration*& gone);
    Registration* sweep(ObserverList& list, Registration* gone);
    static void destroy(Registration* gone) noexcept;

    std::mutex mutex_;
    std::unordered_set<std::unique_ptr<ObserverList>, Hash, Equal> lists_;
    std::unordered_map<const NSObject*, Registration*> byObserver_;
    std::uint64_t added_ = 0;
    std::size_t withoutName_ = 0;  ///< lists
    std::size_t withObject_ = 0;
};

}  // namespace tovi::detail

#include <ToviFoundationKit/Foundation/ObserverTable_p.h>

#include <utility>

#include <ToviFoundationKit/Runtime/Cast.h>

namespace tovi::detail {

ObserverTable::~ObserverTable() {
    for (const auto& [observer, first] : byObserver_)
        for (Registration* each = first; each;)
            delete std::exchange(each, each->nextOfObserver);
}

ObserverList* ObserverTable::find(const Probe& probe) const {
    const auto found = lists_.find(probe);
    return found == lists_.end() ? nullptr : found->get();
}

ObserverList& ObserverTable::findOrMake(const Probe& probe) {
    if (ObserverList* const found = find(probe))
        return *found;
    RefPtr<NSString> name;
    if (probe.name)
        name = to<NSString>(probe.name->copy());
    withoutName_ += !name;
    withObject_ += probe.object != nullptr;
    return **lists_.insert(std::unique_ptr<ObserverList>(new ObserverList{std::move(name), probe.object})).first;
}

void ObserverTable::forgetIfEmpty(ObserverList& list) {
    if (list.first || list.visits)
        return;
    withoutName_ -= !list.name;
    withObject_ -= list.object != nullptr;
    lists_.erase(lists_.find(Probe{list.name.get(), list.object}));
}

void ObserverTable::add(NSObject& observer, Selector selector, RefPtr<ObserverBlock> block, const NSString* name,
                        const NSObject* object) {
    auto made = std::unique_ptr<Registration>(new Registration{nullptr, &observer, selector, std::move(block), 0});
    const std::lock_guard guard(mutex_);
    Registration*& ofObserver = byObserver_[&observer];
    ObserverList& list = findOrMake({name, object});
    Registration* const added = made.release();
    added->sequence = added_++;
    added->list = &list;
    added->previous = std::exchange(list.last, added);
    (added->previous ? added->previous->next : list.first) = added;
    added->nextOfObserver = std::exchange(ofObserver, added);
    if (added->nextOfObserver)
        added->nextOfObserver->previousOfObserver = added;
}

void ObserverTable::unlink(Registration& registration) {
    ObserverList& list = *registration.list;
    (registration.previous ? registration.previous->next : list.first) = registration.next;
    (registration.next ? registration.next->previous : list.last) = registration.previous;
}

void ObserverTable::retire(Registration& registration, Registration*& gone) {
    ObserverList& list = *registration.list;
    registration.isRemoved.store(true, std::memory_order_release);
    if (list.visits) {
        registration.nextOfObserver = std::exchange(list.removed, &registration);
        return;
    }
    unlink(registration);
    registration.nextOfObserver = std::exchange(gone, &registration);
    forgetIfEmpty(list);
}

void ObserverTable::remove(const NSObject& observer, const NSString* name, const NSObject* object) {
    Registration* gone = nullptr;
    {
        const std::lock_guard guard(mutex_);
        const auto found = byObserver_.find(&observer);
        if (found == byObserver_.end())
            return;
        for (Registration* next = found->second; next;) {
            Registration& each = *std::exchange(next, next->nextOfObserver);
            const ObserverList& list = *each.list;
            if ((name && !(list.name && *list.name == *name)) || (object && list.object != object))
                continue;
            (each.previousOfObserver ? each.previousOfObserver->nextOfObserver : found->second) = next;
            if (next)
                next->previousOfObserver = each.previousOfObserver;
            retire(each, gone);
        }
        if (!found->second)
            byObserver_.erase(found);
    }
    destroy(gone);
}

/// Answers what is gone now, too.
Registration* ObserverTable::sweep(ObserverList& list, Registration* gone) {
    while (list.removed) {
        Registration& each = *std::exchange(list.removed, list.removed->nextOfObserver);
        unlink(each);
        each.nextOfObserver = std::exchange(gone, &each);
    }
    return gone;
}

// Blocks are let go of without the lock, since they may hold anything.
void ObserverTable::destroy(Registration* gone) noexcept {
    while (gone)
        delete std::exchange(gone, gone->nextOfObserver);
}

ObserverTable::Visit::Visit(ObserverTable& table, const NSString& name, const NSObject* object) : table_(table) {
    const std::lock_guard guard(table.mutex_);
    addPart(table.find({&name, nullptr}));
    if (object && table.withObject_)
        addPart(table.find({&name, object}));
    if (table.withoutName_) {
        addPart(table.find({nullptr, nullptr}));
        if (object)
            addPart(table.find({nullptr, object}));
    }
}

void ObserverTable::Visit::addPart(ObserverList* list) {
    if (!list)
        return;
    ++list->visits;
    parts_[count_++] = {list, list->first, list->last};
}

ObserverTable::Visit::~Visit() {
    if (!count_)
        return;
    Registration* gone = nullptr;
    {
        const std::lock_guard guard(table_.mutex_);
        for (std::size_t i = 0; i < count_; ++i) {
            ObserverList& list = *parts_[i].list;
            if (--list.visits)
                continue;
            gone = table_.sweep(list, gone);
            table_.forgetIfEmpty(list);
        }
    }
    destroy(gone);
}

ObserverTable::Visit::Part* ObserverTable::Visit::earliest() noexcept {
    Part* first = nullptr;
    for (std::size_t i = 0; i < count_; ++i)
        if (parts_[i].next && (!first || parts_[i].next->sequence < first->next->sequence))
            first = &parts_[i];
    return first;
}

Registration* ObserverTable::Visit::next() noexcept {
    while (Part* const part = earliest()) {
        Registration* const found = part->next;
        part->next = found == part->last ? nullptr : found->next;
        if (!found->isRemoved.load(std::memory_order_acquire))
            return found;
    }
    return nullptr;
}

}  // namespace tovi::detail

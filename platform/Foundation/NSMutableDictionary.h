#pragma once

#include <ToviFoundationKit/Foundation/NSDictionary.h>

namespace tovi {

/// A dictionary that can be changed. Not for several threads at once.
class TOVI_EXPORT NSMutableDictionary final : public NSDictionary {
    TOVI_DECLARE_CLASS(NSMutableDictionary)

public:
    static Ref<NSMutableDictionary> dictionary();
    static Ref<NSMutableDictionary> dictionaryWithCapacity(NSUInteger capacity);
    static Ref<NSMutableDictionary> dictionaryWithDictionary(const NSDictionary& other);
    static Ref<NSMutableDictionary> dictionaryWithObjects_forKeys(const NSArray& objects, const NSArray& keys);
    static Ref<NSMutableDictionary> of(std::initializer_list<NSKeyValuePair> pairs);

    void setObject_forKey(NSObject& object, NSObject& key);
    void removeObjectForKey(const NSObject& key);  ///< nothing happens when there is none
    void removeObjectsForKeys(const NSArray& keys);
    void removeAllObjects();
    void addEntriesFromDictionary(const NSDictionary& other);
    void setDictionary(const NSDictionary& other);
    /// Stores the value under the key; nil removes the key.
    void setValue_forKey(NSObject* value, const NSString& key);
    /// Room for so many entries in all.
    void reserve(NSUInteger capacity);

    Ref<NSObject> copy() const override;  ///< an NSDictionary

private:
    NSMutableDictionary() noexcept = default;
    explicit NSMutableDictionary(Table table) noexcept : NSDictionary(std::move(table)) {}
};

}  // namespace tovi

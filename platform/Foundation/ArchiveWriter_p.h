#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include <ToviFoundationKit/Foundation/ArchiveNames_p.h>
#include <ToviFoundationKit/Foundation/HashIndex.h>
#include <ToviFoundationKit/Runtime/NSNumber.h>

namespace tovi {
class NSDictionary;
class NSIndexSet;
}  // namespace tovi

namespace tovi::detail {

/// Makes an archive, an object at a time: writing a reference to a new object only puts it at the end of the row, so
/// nothing recurses.
class ArchiveWriter {
public:
    explicit ArchiveWriter(ArchiveForm form) noexcept : form_(form) {}

    /// The coder is what objects get to write their fields with. Once only.
    Ref<NSData> archive(const NSObject& root, NSCoder& coder);

    /// The fields of the object whose turn it is.
    void putObject(const NSObject* object, const NSString& key);
    void putInteger(NSInteger value, const NSString& key);
    void putDouble(double value, const NSString& key);
    void putBool(bool value, const NSString& key);
    void putObject(const NSObject* object);

private:
    /// How the objects of a class are written.
    struct Manner {
        char tag;
        NSUInteger name;
    };

    const Manner& mannerFor(const Class& type);
    Manner newManner(const Class& type);
    NSUInteger referenceTo(const NSObject& object);
    void requireTurn() const;
    void beginField(const NSString& key, FieldKind kind);

    void putRecord(const NSObject& object, char tag);
    void putNumber(const NSNumber& number);
    void putStructure(const NSValue& value);
    void putIndexes(const NSIndexSet& indexes);
    template <class Collection> void putElements(const Collection& collection);
    void putEntries(const NSDictionary& dictionary);
    void putReference(const NSObject& object) { put(referenceTo(object)); }

    void putByte(char byte) { bytes_.push_back(byte); }
    void put(NSUInteger number);
    void putSigned(NSInteger number);
    template <class Bits> void putBits(Bits bits);
    void putText(std::u16string_view text);

    const ArchiveForm form_;
    std::string bytes_;  ///< the records
    std::vector<Ref<NSObject>> objects_;
    HashIndex index_;  ///< of their addresses
    ArchiveNames names_;
    std::vector<NSUInteger> lastUses_;  ///< of each name, the number of the object that used it last as a key
    std::unordered_map<const Class*, Manner> manners_;
    NSUInteger turn_ = 0;  ///< the number of the object that writes its fields; 0 when none does
};

}  // namespace tovi::detail

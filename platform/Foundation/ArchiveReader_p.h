#pragma once

#include <ToviFoundationKit/Foundation/ArchiveContent_p.h>
#include <ToviFoundationKit/Runtime/Message.h>

namespace tovi {
class NSError;
}

namespace tovi::detail {

/// Brings the objects of an archive back, in phases, none of which recurses: everything is checked and made; lists are
/// filled; dictionaries and sets are, unless their keys contain hosts' objects; these are initialized, an object after
/// those that it refers to; the other dictionaries and sets are filled.
class ArchiveReader {
public:
    explicit ArchiveReader(ArchiveForm form) noexcept { content_.form = form; }

    /// The coder is what objects get to read their fields from. Once only. False and an error when the archive is bad.
    bool read(const NSData& data, NSCoder& coder, RefPtr<NSError>* error);

    /// Raises NSInvalidArgumentException when the archive is bad.
    Ref<NSObject> root() const { return (content_.records.empty() ? id() : content_.records[0].object).ref(); }

    /// The fields of the object whose turn it is.
    bool contains(const NSString& key) const { return fieldFor(key); }
    id objectFor(const NSString& key) const;
    NSInteger integerFor(const NSString& key) const;
    double doubleFor(const NSString& key) const;
    bool boolFor(const NSString& key) const;
    id nextObject();

private:
    struct Field {
        NSUInteger name;
        FieldKind kind;
        NSUInteger bits;
    };

    void bringBack(NSCoder& coder);
    void fillLists();
    void initializeAll(NSCoder& coder);
    void initialize(const ArchiveRecord& record, MessageSite& site, NSCoder& coder);
    void readFields(const ArchiveRecord& record);
    static NSUInteger readValue(ArchiveBytes& at, FieldKind kind);
    void abandon() noexcept;

    void requireTurn() const;
    const Field* fieldFor(const NSString& key) const;
    const Field* fieldFor(const NSString& key, FieldKind kind) const;
    id objectAt(NSUInteger reference) const { return reference ? content_.records[reference - 1].object : id(); }

    ArchiveContent content_;
    std::vector<Field> fields_;
    mutable std::size_t nextField_ = 0;  ///< where the next one that is asked for probably stands
    const ArchiveRecord* turn_ = nullptr;
};

}  // namespace tovi::detail

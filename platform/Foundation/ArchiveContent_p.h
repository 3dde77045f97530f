#pragma once

#include <ToviFoundationKit/Foundation/ArchiveNames_p.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi::detail {

struct ArchiveRecord {
    char tag;
    bool isFilled;         ///< a dictionary or set has its entries
    std::size_t position;  ///< of a collection's count, of any other object's fields
    id object;

    bool isList() const noexcept { return tag == 'a' || tag == 'A'; }
    bool isDictionary() const noexcept { return tag == 'h' || tag == 'H'; }
    bool isSet() const noexcept { return tag == 'u' || tag == 'U'; }
    bool isHosts() const noexcept { return tag == 'o'; }
};

/// An archive that has been found sound.
struct ArchiveContent {
    ArchiveForm form;
    NSData::Bytes bytes;
    ArchiveNames names;
    std::vector<ArchiveRecord> records;

    NSObject& objectAt(NSUInteger reference) const { return *records[reference - 1].object; }
    /// "object 3 (Person)"
    Ref<NSString> place(const ArchiveRecord& record) const;
    [[noreturn]] void fail(const ArchiveRecord& record, ArchiveError code, const NSString& reason) const;
    /// Does what may call a host's code; an exception becomes a fault of the record.
    template <class F> void guarded(const ArchiveRecord& record, F action) const;
};

template <class F> void ArchiveContent::guarded(const ArchiveRecord& record, F action) const {
    try {
        action();
    } catch (const NSException& raised) {
        const RefPtr<NSString> reason = raised.reason();
        fail(record, ArchiveErrorRefused, reason ? reason.ref() : raised.name());
    }
}

/// Reads an archive and makes its objects: values are complete, collections are empty but have room, and of other
/// classes there are new instances. These are made when all else is known to be sound.
ArchiveContent parsedArchive(NSData::Bytes bytes, ArchiveForm form);

/// Goes through the references of a record, nil left out.
class ArchiveReferences {
public:
    ArchiveReferences(const ArchiveContent& content, const ArchiveRecord& record)
        : at_(content.bytes, record.position), fields_(record.isHosts()), form_(content.form) {
        if (record.isList() || record.isSet())
            left_ = at_.number();
        else if (record.isDictionary())
            left_ = 2 * at_.number();
    }

    /// 0 at the end.
    NSUInteger next() {
        if (fields_)
            return nextField();
        return left_ ? --left_, at_.number() : 0;
    }
    NSUInteger left() const noexcept { return left_; }

private:
    NSUInteger nextField();

    ArchiveBytes at_;
    bool fields_;
    ArchiveForm form_;
    NSUInteger left_ = 0;
};

}  // namespace tovi::detail

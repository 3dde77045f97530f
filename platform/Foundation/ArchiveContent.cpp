#include <ToviFoundationKit/Foundation/ArchiveContent_p.h>

namespace tovi::detail {

Ref<NSString> ArchiveContent::place(const ArchiveRecord& record) const {
    const auto number = static_cast<NSUInteger>(&record - records.data() + 1);
    return record.object ? NSString::stringWithFormat(u"object %lu (%@)", number, record.object->isa())
                         : NSString::stringWithFormat(u"object %lu", number);
}

void ArchiveContent::fail(const ArchiveRecord& record, ArchiveError code, const NSString& reason) const {
    throw ArchiveFault{code, NSString::stringWithFormat(u"%@: %@", place(record), reason)};
}

NSUInteger ArchiveReferences::nextField() {
    while (const NSUInteger header = at_.number()) {
        NSUInteger reference = 0;
        if (form_ == ArchiveForm::Unkeyed) {
            reference = header - 1;
        } else {
            switch (static_cast<FieldKind>(header & 3)) {
                case FieldKind::Object:
                    reference = at_.number();
                    break;
                case FieldKind::Integer:
                    at_.number();
                    break;
                case FieldKind::Double:
                    at_.real();
                    break;
                case FieldKind::Bool:
                    at_.byte();
            }
        }
        if (reference)
            return reference;
    }
    fields_ = false;  // and none is left
    return 0;
}

}  // namespace tovi::detail

#include <ToviFoundationKit/Foundation/NSKeyedArchiver.h>

#include <ToviFoundationKit/Foundation/ArchiveWriter_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSKeyedArchiver, NSCoder)

NSKeyedArchiver::NSKeyedArchiver(std::unique_ptr<detail::ArchiveWriter> writer) : writer_(std::move(writer)) {}
NSKeyedArchiver::~NSKeyedArchiver() = default;

Ref<NSData> NSKeyedArchiver::archivedDataWithRootObject(const NSObject& root) {
    const Ref<NSKeyedArchiver> archiver =
        adopt(*new NSKeyedArchiver(std::make_unique<detail::ArchiveWriter>(detail::ArchiveForm::Keyed)));
    return archiver->writer_->archive(root, archiver);
}

void NSKeyedArchiver::encodeObject_forKey(const NSObject* object, const NSString& key) {
    writer_->putObject(object, key);
}
void NSKeyedArchiver::encodeInteger_forKey(NSInteger value, const NSString& key) { writer_->putInteger(value, key); }
void NSKeyedArchiver::encodeDouble_forKey(double value, const NSString& key) { writer_->putDouble(value, key); }
void NSKeyedArchiver::encodeBool_forKey(bool value, const NSString& key) { writer_->putBool(value, key); }

namespace {

const Additions<NSKeyedArchiver> additions{
    classLevel<&NSKeyedArchiver::archivedDataWithRootObject>("archivedDataWithRootObject:"),
};

}  // namespace

}  // namespace tovi

#include <ToviFoundationKit/Foundation/NSUnarchiver.h>

#include <ToviFoundationKit/Foundation/ArchiveReader_p.h>
#include <ToviFoundationKit/Foundation/NSError.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSUnarchiver, NSCoder)

NSUnarchiver::NSUnarchiver(std::unique_ptr<detail::ArchiveReader> reader) : reader_(std::move(reader)) {}
NSUnarchiver::~NSUnarchiver() = default;

id NSUnarchiver::unarchiveObjectWithData(const NSData& data, RefPtr<NSError>* error) {
    const auto unarchiver = unarchiverForReadingWithData(data, error);
    return unarchiver ? id(unarchiver->rootObject()) : id();
}

RefPtr<NSUnarchiver> NSUnarchiver::unarchiverForReadingWithData(const NSData& data, RefPtr<NSError>* error) {
    const Ref<NSUnarchiver> unarchiver =
        adopt(*new NSUnarchiver(std::make_unique<detail::ArchiveReader>(detail::ArchiveForm::Unkeyed)));
    return unarchiver->reader_->read(data, unarchiver, error) ? RefPtr<NSUnarchiver>(unarchiver) : nullptr;
}

Ref<NSObject> NSUnarchiver::rootObject() const { return reader_->root(); }

id NSUnarchiver::decodeObject() { return reader_->nextObject(); }

namespace {

id unarchivedObject(const NSData& data) { return NSUnarchiver::unarchiveObjectWithData(data); }
RefPtr<NSUnarchiver> unarchiver(const NSData& data) { return NSUnarchiver::unarchiverForReadingWithData(data); }

const Additions<NSUnarchiver> additions{
    classLevel<&unarchivedObject>("unarchiveObjectWithData:"),
    classLevel<&unarchiver>("unarchiverForReadingWithData:"),
    instance<&NSUnarchiver::rootObject>("rootObject"),
};

}  // namespace

}  // namespace tovi

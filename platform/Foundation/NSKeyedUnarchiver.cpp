#include <ToviFoundationKit/Foundation/NSKeyedUnarchiver.h>

#include <ToviFoundationKit/Foundation/ArchiveReader_p.h>
#include <ToviFoundationKit/Foundation/NSError.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSKeyedUnarchiver, NSCoder)

NSKeyedUnarchiver::NSKeyedUnarchiver(std::unique_ptr<detail::ArchiveReader> reader) : reader_(std::move(reader)) {}
NSKeyedUnarchiver::~NSKeyedUnarchiver() = default;

id NSKeyedUnarchiver::unarchiveObjectWithData(const NSData& data, RefPtr<NSError>* error) {
    const auto unarchiver = unarchiverForReadingWithData(data, error);
    return unarchiver ? id(unarchiver->rootObject()) : id();
}

RefPtr<NSKeyedUnarchiver> NSKeyedUnarchiver::unarchiverForReadingWithData(const NSData& data, RefPtr<NSError>* error) {
    const Ref<NSKeyedUnarchiver> unarchiver =
        adopt(*new NSKeyedUnarchiver(std::make_unique<detail::ArchiveReader>(detail::ArchiveForm::Keyed)));
    return unarchiver->reader_->read(data, unarchiver, error) ? RefPtr<NSKeyedUnarchiver>(unarchiver) : nullptr;
}

Ref<NSObject> NSKeyedUnarchiver::rootObject() const { return reader_->root(); }

bool NSKeyedUnarchiver::containsValueForKey(const NSString& key) const { return reader_->contains(key); }
id NSKeyedUnarchiver::decodeObjectForKey(const NSString& key) { return reader_->objectFor(key); }
NSInteger NSKeyedUnarchiver::decodeIntegerForKey(const NSString& key) { return reader_->integerFor(key); }
double NSKeyedUnarchiver::decodeDoubleForKey(const NSString& key) { return reader_->doubleFor(key); }
bool NSKeyedUnarchiver::decodeBoolForKey(const NSString& key) { return reader_->boolFor(key); }

namespace {

id unarchivedObject(const NSData& data) { return NSKeyedUnarchiver::unarchiveObjectWithData(data); }
RefPtr<NSKeyedUnarchiver> unarchiver(const NSData& data) {
    return NSKeyedUnarchiver::unarchiverForReadingWithData(data);
}

const Additions<NSKeyedUnarchiver> additions{
    classLevel<&unarchivedObject>("unarchiveObjectWithData:"),
    classLevel<&unarchiver>("unarchiverForReadingWithData:"),
    instance<&NSKeyedUnarchiver::rootObject>("rootObject"),
};

}  // namespace

}  // namespace tovi

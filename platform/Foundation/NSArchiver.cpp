#include <ToviFoundationKit/Foundation/NSArchiver.h>

#include <ToviFoundationKit/Foundation/ArchiveWriter_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSArchiver, NSCoder)

NSArchiver::NSArchiver(std::unique_ptr<detail::ArchiveWriter> writer) : writer_(std::move(writer)) {}
NSArchiver::~NSArchiver() = default;

Ref<NSData> NSArchiver::archivedDataWithRootObject(const NSObject& root) {
    const Ref<NSArchiver> archiver =
        adopt(*new NSArchiver(std::make_unique<detail::ArchiveWriter>(detail::ArchiveForm::Unkeyed)));
    return archiver->writer_->archive(root, archiver);
}

void NSArchiver::encodeObject(const NSObject* object) { writer_->putObject(object); }

namespace {

const Additions<NSArchiver> additions{
    classLevel<&NSArchiver::archivedDataWithRootObject>("archivedDataWithRootObject:"),
};

}  // namespace

}  // namespace tovi

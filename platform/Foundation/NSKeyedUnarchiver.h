#pragma once

#include <memory>

#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSData.h>

namespace tovi {

class NSError;

namespace detail {
class ArchiveReader;
}

/// Reads keyed archives. The bytes may come from anybody: a bad archive gives an error (see ArchiveErrorDomain);
/// reading takes memory and time in proportion to their number; and it only makes objects that take part in archives by
/// themselves, and ones whose class answers `initWithCoder:`. A good archive may hold more than the object in it leads
/// to, even objects that hold each other in a circle; nobody frees those.
///
/// Objects come back in the mutable or immutable form in which they were archived. The keys of dictionaries are copied,
/// as always. An archive is bad, too, when a dictionary has two equal keys, when a key, or an element of a set,
/// contains itself, and when keys, because they share parts or hashes, would take out of all proportion long to hash
/// and compare.
class TOVI_EXPORT NSKeyedUnarchiver final : public NSCoder {
    TOVI_DECLARE_CLASS(NSKeyedUnarchiver)

public:
    /// The object that was archived, or nil and an error.
    static id unarchiveObjectWithData(const NSData& data, RefPtr<NSError>* error = nullptr);
    /// An unarchiver that has read the archive, or nil and an error. It holds all objects of the archive for as long as
    /// it lives: for those that nobody else does, such as the parents of nodes that do not retain theirs.
    static RefPtr<NSKeyedUnarchiver> unarchiverForReadingWithData(const NSData& data, RefPtr<NSError>* error = nullptr);

    /// The object that was archived.
    Ref<NSObject> rootObject() const;

    bool allowsKeyedCoding() const noexcept override { return true; }
    bool containsValueForKey(const NSString& key) const override;
    id decodeObjectForKey(const NSString& key) override;
    NSInteger decodeIntegerForKey(const NSString& key) override;
    double decodeDoubleForKey(const NSString& key) override;
    bool decodeBoolForKey(const NSString& key) override;

private:
    explicit NSKeyedUnarchiver(std::unique_ptr<detail::ArchiveReader> reader);
    ~NSKeyedUnarchiver() override;

    const std::unique_ptr<detail::ArchiveReader> reader_;
};

}  // namespace tovi

#pragma once

#include <memory>

#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSData.h>

namespace tovi {

class NSError;

namespace detail {
class ArchiveReader;
}

/// Reads unkeyed archives, as NSKeyedUnarchiver reads keyed ones.
class TOVI_EXPORT NSUnarchiver final : public NSCoder {
    TOVI_DECLARE_CLASS(NSUnarchiver)

public:
    static id unarchiveObjectWithData(const NSData& data, RefPtr<NSError>* error = nullptr);
    static RefPtr<NSUnarchiver> unarchiverForReadingWithData(const NSData& data, RefPtr<NSError>* error = nullptr);

    Ref<NSObject> rootObject() const;

    bool allowsKeyedCoding() const noexcept override { return false; }
    id decodeObject() override;

private:
    explicit NSUnarchiver(std::unique_ptr<detail::ArchiveReader> reader);
    ~NSUnarchiver() override;

    const std::unique_ptr<detail::ArchiveReader> reader_;
};

}  // namespace tovi

#pragma once

#include <memory>

#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSData.h>

namespace tovi {

namespace detail {
class ArchiveWriter;
}

/// Writes an object, and all that it refers to, to an unkeyed archive.
class TOVI_EXPORT NSArchiver final : public NSCoder {
    TOVI_DECLARE_CLASS(NSArchiver)

public:
    /// As NSKeyedArchiver's.
    static Ref<NSData> archivedDataWithRootObject(const NSObject& root);

    bool allowsKeyedCoding() const noexcept override { return false; }
    void encodeObject(const NSObject* object) override;

private:
    explicit NSArchiver(std::unique_ptr<detail::ArchiveWriter> writer);
    ~NSArchiver() override;

    const std::unique_ptr<detail::ArchiveWriter> writer_;
};

}  // namespace tovi

#pragma once

#include <memory>

#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSData.h>

namespace tovi {

namespace detail {
class ArchiveWriter;
}

/// Writes an object, and all that it refers to, to a keyed archive.
class TOVI_EXPORT NSKeyedArchiver final : public NSCoder {
    TOVI_DECLARE_CLASS(NSKeyedArchiver)

public:
    /// Raises NSInvalidArgumentException when one of the objects is of a class that takes no part in archives (see
    /// NSCoder); what `encodeWithCoder:` raises goes through.
    static Ref<NSData> archivedDataWithRootObject(const NSObject& root);

    bool allowsKeyedCoding() const noexcept override { return true; }
    void encodeObject_forKey(const NSObject* object, const NSString& key) override;
    void encodeInteger_forKey(NSInteger value, const NSString& key) override;
    void encodeDouble_forKey(double value, const NSString& key) override;
    void encodeBool_forKey(bool value, const NSString& key) override;

private:
    explicit NSKeyedArchiver(std::unique_ptr<detail::ArchiveWriter> writer);
    ~NSKeyedArchiver() override;

    const std::unique_ptr<detail::ArchiveWriter> writer_;
};

}  // namespace tovi

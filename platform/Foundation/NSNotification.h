#pragma once

#include <ToviFoundationKit/Foundation/NSDictionary.h>

namespace tovi {

/// Something that has happened: what, to which object, and perhaps more. It holds all three. Immutable.
class TOVI_EXPORT NSNotification final : public NSObject {
    TOVI_DECLARE_CLASS(NSNotification)

public:
    static Ref<NSNotification> notificationWithName_object(const NSString& name, NSObject* object);
    static Ref<NSNotification> notificationWithName_object_userInfo(const NSString& name, NSObject* object,
                                                                    const NSDictionary* userInfo);

    Ref<NSString> name() const { return name_; }
    id object() const { return object_; }
    RefPtr<NSDictionary> userInfo() const { return userInfo_; }

    /// "<NSNotification: 0x...>{name = changed; object = <Account: 0x...>}", and "; userInfo = ..." when there is one.
    Ref<NSString> description() const override;
    Ref<NSObject> copy() const override { return share(*this); }

private:
    NSNotification(const NSString& name, NSObject* object, const NSDictionary* userInfo);

    Ref<NSString> name_;
    id object_;
    RefPtr<NSDictionary> userInfo_;
};

}  // namespace tovi

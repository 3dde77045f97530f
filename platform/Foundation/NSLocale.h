#pragma once

#include <string>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

class NSCoder;

/// The habits of a language and a region: how they write dates, when their week begins. Immutable.
class TOVI_EXPORT NSLocale final : public NSObject {
    TOVI_DECLARE_CLASS(NSLocale)

public:
    /// The one that was set, else the user's: the first of LC_ALL, LC_TIME and LANG that is set; where that is C, POSIX
    /// or nothing, the first of the preferred languages (PreferredLanguages.h); without one, "en_US_POSIX". The
    /// environment is asked each time. For any number of threads.
    static Ref<NSLocale> currentLocale();
    static void setCurrentLocale(RefPtr<NSLocale> locale);  ///< nil goes back to the user's
    /// By an identifier as "de_AT", "de-AT", "sr_RS@latin", "th_TH@calendar=gregorian". Any text is accepted: a region
    /// that is not known counts as the language alone, a language that is not known as the root locale, which writes
    /// numbers and little else.
    static Ref<NSLocale> localeWithLocaleIdentifier(const NSString& identifier);

    Ref<NSString> localeIdentifier() const { return *identifier_; }  ///< in its canonical form, "de_AT"
    Ref<NSString> languageCode() const;                              ///< "de"; may be empty
    RefPtr<NSString> scriptCode() const;                             ///< "Latn"; nil when the identifier has none
    RefPtr<NSString> countryCode() const;                            ///< "AT"; nil when the identifier has none

    /// The day with which weeks begin, 1 for Sunday to 7 for Saturday.
    NSUInteger firstWeekday() const;
    /// How many days of a year its first week has at least.
    NSUInteger minimumDaysInFirstWeek() const;

    bool isEqual(const NSObject* other) const override;  ///< of the same identifier
    NSUInteger hash() const override;
    Ref<NSString> description() const override;  ///< the identifier
    Ref<NSObject> copy() const override;
    void encodeWithCoder(NSCoder& coder) const;
    void initWithCoder(NSCoder& coder);

    /// The name under which the platform's data are found; empty for the root locale.
    const std::string& dataName() const noexcept { return dataName_; }

private:
    NSLocale();
    explicit NSLocale(const NSString& identifier);
    ~NSLocale() override = default;
    void set(const NSString& identifier);

    RefPtr<NSString> identifier_;
    std::string dataName_;
};

}  // namespace tovi

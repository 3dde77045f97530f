#pragma once

#include <memory>
#include <string>

#include <ToviFoundationKit/Foundation/NSDictionary.h>

namespace tovi {

class NSError;

/// A directory with resources, and perhaps with code that is loaded when it is asked for:
///
///     Name.bundle/             Info.strings: what the bundle says of itself
///       Name.so                the code
///       Resources/             resources; where there is no such folder, they lie beside Info.strings
///         de.lproj/            resources in one language, among them string tables (Table.strings)
///
/// There is one object for each directory, which lives until the process ends. For any number of threads at once.
class TOVI_EXPORT NSBundle final : public NSObject {
    TOVI_DECLARE_CLASS(NSBundle)

public:
    /// The directory of the program that runs; nil when it is gone.
    static RefPtr<NSBundle> mainBundle();
    /// nil when the path does not lead to a directory.
    static RefPtr<NSBundle> bundleWithPath(const NSString& path);
    /// The bundle of that identifier among the library's own, those in its resources, the main one and those that were
    /// asked for by path before; nil when there is none.
    static RefPtr<NSBundle> bundleWithIdentifier(const NSString& identifier);

    Ref<NSString> bundlePath() const;  ///< absolute, without "." and ".."
    Ref<NSString> resourcePath() const;
    /// The texts of Info.strings; empty where there is none. One that cannot be read is logged.
    Ref<NSDictionary> infoDictionary() const;
    /// What Info.strings has under "CFBundleIdentifier", else nil.
    RefPtr<NSString> bundleIdentifier() const;

    /// The path of the resource "name.type", or of "name" where the type is nil or empty; nil when there is none. One
    /// that lies in no language's folder comes first. Then come those in the user's languages (see
    /// PreferredLanguages.h; for a region or script that is missing, others of the language will do), in English, and
    /// in any language.
    RefPtr<NSString> pathForResource_ofType(const NSString& name, const NSString* type) const;
    /// The same for any directory of resources.
    static RefPtr<NSString> pathForResource_ofType_inDirectory(const NSString& name, const NSString* type,
                                                               const NSString& directory);

    /// The text under the key in the resource "table.strings" ("Localizable" when nil or empty). Where the key is
    /// missing, or the whole table: the value, or the key itself when the value is nil or empty. A table that cannot be
    /// read is logged. Tables are read once for each list of languages.
    Ref<NSString> localizedStringForKey_value_table(const NSString& key, const NSString* value,
                                                    const NSString* table) const;

    /// Loads the bundle's code, once and for good, and answers whether it is loaded. A shared object that is missing,
    /// damaged, cut off or made for another machine is refused, and nothing else happens. The main bundle and the
    /// library's own are always loaded.
    bool load(RefPtr<NSError>* error = nullptr);
    bool isLoaded() const noexcept;

    Ref<NSString> description() const override;  ///< "NSBundle </path> (loaded)", or "(not yet loaded)"

private:
    struct Content;
    friend class BundleTable;
    explicit NSBundle(std::string path);
    ~NSBundle() override;
    Ref<NSDictionary> table(std::u16string_view name) const;

    const std::unique_ptr<Content> content_;
};

/// The library's own bundle.
inline constexpr std::u16string_view NSBundleLibraryIdentifier = u"tovi.FoundationKit";

inline constexpr std::u16string_view NSBundleErrorDomain = u"NSBundleErrorDomain";

}  // namespace tovi

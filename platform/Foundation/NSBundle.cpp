#include <ToviFoundationKit/Foundation/NSBundle.h>

#include <dlfcn.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include <ToviFoundationKit/Foundation/File_p.h>
#include <ToviFoundationKit/Foundation/Localizations_p.h>
#include <ToviFoundationKit/Foundation/NSError.h>
#include <ToviFoundationKit/Foundation/PreferredLanguages.h>
#include <ToviFoundationKit/Foundation/SharedObjectFile_p.h>
#include <ToviFoundationKit/Foundation/StringsFile.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Box.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSLog.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSBundle, NSObject)

namespace {

namespace fs = std::filesystem;

/// What a path leads to; nothing where it has a NUL, at which the system would end it.
fs::file_status statusOf(const fs::path& path) {
    std::error_code ignored;
    const bool isPath = path.native().find('\0') == path.native().npos;
    return isPath ? fs::status(path, ignored) : fs::file_status(fs::file_type::not_found);
}
bool isDirectory(const fs::path& path) { return fs::is_directory(statusOf(path)); }
bool isThere(const fs::path& path) { return fs::exists(statusOf(path)); }

Ref<NSString> text(const fs::path& path) { return NSString::fromUTF8(path.native()); }

/// A .strings file as it was read, or why it could not be. The reason is logged by whoever keeps the texts, without
/// holding a lock: a log sink may ask for bundles.
struct Strings {
    Strings() = default;
    explicit Strings(const NSString& file) {
        if (const RefPtr<NSDictionary> read = stringsFromFile(file, &error))
            texts = *read;
    }
    void logError() const {
        if (error)
            NSLog(u"*** NSBundle: %@", error->localizedDescription());
    }

    RefPtr<NSError> error;
    Ref<NSDictionary> texts = NSDictionary::dictionary();
};

}  // namespace

struct NSBundle::Content {
    fs::path path;
    std::atomic<bool> isLoaded{false};
    std::mutex lock;  ///< for what follows
    RefPtr<NSDictionary> info;
    std::vector<std::string> languages;  ///< those that the tables were looked up for
    std::map<std::u16string, Ref<NSDictionary>, std::less<>> tables;
};

NSBundle::NSBundle(std::string path) : content_(std::make_unique<Content>()) { content_->path = std::move(path); }
NSBundle::~NSBundle() = default;

namespace {

/// Asked for while the library is loaded: the loader may know its file by a path from the directory of that moment.
fs::path fileOfThisLibrary() {
    static const char inThisLibrary = 0;
    Dl_info info{};
    std::error_code failure;
    return dladdr(&inThisLibrary, &info) && info.dli_fname ? fs::canonical(info.dli_fname, failure) : fs::path();
}

const fs::path& libraryFile = *new fs::path(fileOfThisLibrary());

}  // namespace

/// Every bundle that was asked for, by path. Never destroyed.
class BundleTable {
public:
    static BundleTable& shared() {
        static BundleTable& table = *new BundleTable;
        return table;
    }

    NSBundle* bundle(const fs::path& path) {
        std::error_code failure;
        fs::path normal = fs::absolute(path, failure).lexically_normal();
        if (!normal.has_filename())
            normal = normal.parent_path();
        if (failure || !isDirectory(normal))
            return nullptr;
        const std::lock_guard guard(lock_);
        NSBundle*& known = bundles_[normal.string()];
        if (!known)
            known = adopt(*new NSBundle(normal.string())).leak();
        return known;
    }

    /// The directory beside the library's own file.
    NSBundle* own() {
        return libraryFile.empty() ? nullptr : ofRunningCode(libraryFile.parent_path() / "ToviFoundationKit");
    }

    NSBundle* main() {
        std::error_code failure;
        const fs::path program = fs::read_symlink("/proc/self/exe", failure);
        return failure ? nullptr : ofRunningCode(program.parent_path());
    }

    /// The bundles among the library's resources.
    std::vector<NSBundle*> ownResources() {
        std::vector<NSBundle*> result;
        if (libraryFile.empty())
            return result;
        std::error_code failure;
        for (fs::directory_iterator entry(libraryFile.parent_path() / "ToviFoundationKit/Resources", failure), end;
             !failure && entry != end; entry.increment(failure))
            if (entry->path().extension() == ".bundle")
                result.push_back(bundle(entry->path()));
        std::erase(result, nullptr);
        return result;
    }

    std::vector<NSBundle*> all() {
        std::vector<NSBundle*> result{own(), main()};
        std::erase(result, nullptr);
        const std::lock_guard guard(lock_);
        for (const auto& [path, bundle] : bundles_)
            result.push_back(bundle);
        return result;
    }

private:
    NSBundle* ofRunningCode(const fs::path& path) {
        NSBundle* const found = bundle(path);
        if (found)
            found->content_->isLoaded = true;
        return found;
    }

    std::mutex lock_;
    std::map<std::string, NSBundle*> bundles_;
};

RefPtr<NSBundle> NSBundle::mainBundle() { return BundleTable::shared().main(); }

RefPtr<NSBundle> NSBundle::bundleWithPath(const NSString& path) {
    return path.length() ? BundleTable::shared().bundle(path.UTF8String()) : nullptr;
}

namespace {

bool hasIdentifier(const NSBundle& bundle, const NSString& identifier) {
    const RefPtr<NSString> own = bundle.bundleIdentifier();
    return own && *own == identifier;
}

}  // namespace

RefPtr<NSBundle> NSBundle::bundleWithIdentifier(const NSString& identifier) {
    for (NSBundle* bundle : BundleTable::shared().all())
        if (hasIdentifier(*bundle, identifier))
            return bundle;
    for (NSBundle* bundle : BundleTable::shared().ownResources())
        if (hasIdentifier(*bundle, identifier))
            return bundle;
    return nullptr;
}

Ref<NSString> NSBundle::bundlePath() const { return text(content_->path); }

Ref<NSString> NSBundle::resourcePath() const {
    const fs::path resources = content_->path / "Resources";
    return text(isDirectory(resources) ? resources : content_->path);
}

Ref<NSDictionary> NSBundle::infoDictionary() const {
    Content& content = *content_;
    std::unique_lock guard(content.lock);
    if (content.info)
        return content.info.ref();
    guard.unlock();
    const fs::path file = content.path / "Info.strings";
    const Strings strings = isThere(file) ? Strings(text(file)) : Strings();
    guard.lock();
    content.info = strings.texts;
    guard.unlock();
    strings.logError();
    return strings.texts;
}

RefPtr<NSString> NSBundle::bundleIdentifier() const {
    return as<NSString>(infoDictionary()->find(u"CFBundleIdentifier"_ns));
}

RefPtr<NSString> NSBundle::pathForResource_ofType(const NSString& name, const NSString* type) const {
    return pathForResource_ofType_inDirectory(name, type, resourcePath());
}

RefPtr<NSString> NSBundle::pathForResource_ofType_inDirectory(const NSString& name, const NSString* type,
                                                              const NSString& directory) {
    std::string file = name.UTF8String();
    if (type && type->length())
        file.append(".").append(type->UTF8String());
    const fs::path top = directory.UTF8String();
    if (isThere(top / file))
        return text(top / file);
    for (const fs::path& folder : localizationsIn(top))
        if (isThere(folder / file))
            return text(folder / file);
    return nullptr;
}

Ref<NSDictionary> NSBundle::table(std::u16string_view name) const {
    Content& content = *content_;
    const std::vector<std::string> languages = preferredLanguages();
    std::unique_lock guard(content.lock);
    if (languages != content.languages) {
        content.languages = languages;
        content.tables.clear();
    }
    if (const auto found = content.tables.find(name); found != content.tables.end())
        return found->second;
    guard.unlock();
    const RefPtr<NSString> file = pathForResource_ofType(box(name), u"strings"_ns.get());
    const Strings strings = file ? Strings(*file) : Strings();
    guard.lock();
    if (languages == content.languages)
        content.tables.emplace(name, strings.texts);
    guard.unlock();
    strings.logError();
    return strings.texts;
}

Ref<NSString> NSBundle::localizedStringForKey_value_table(const NSString& key, const NSString* value,
                                                          const NSString* name) const {
    const Ref<NSDictionary> texts = table(name && name->length() ? name->view() : u"Localizable");
    if (const auto* found = as<NSString>(texts->find(key)))
        return share(*found);
    return share(value && value->length() ? *value : key);
}

namespace {

bool refuse(RefPtr<NSError>* error, const Ref<NSError>& reason) {
    if (error)
        *error = reason;
    return false;
}

/// The file's name stands before what the loader says of another file.
Ref<NSError> loadError(const fs::path& file, std::string_view reason) {
    std::string text = reason.starts_with(file.native()) ? "" : file.native() + ": ";
    return NSError::errorWithDomain_code_description(box(NSBundleErrorDomain), 1, box(text.append(reason)));
}

/// "Name.so" for "Name.bundle" or "Name".
fs::path executableIn(const fs::path& bundle) {
    fs::path name = bundle.filename();
    if (name.extension() == ".bundle")
        name = name.stem();
    return bundle / name.concat(".so");
}

}  // namespace

// Without a lock: the loader has its own, the code that is loaded may come back here, and loading twice is loading
// once.
bool NSBundle::load(RefPtr<NSError>* error) {
    if (isLoaded())
        return true;
    const fs::path file = executableIn(content_->path);
    std::vector<std::byte> bytes;
    if (const int failure = readFile(file, bytes))
        return refuse(error, NSError::errorWithErrno_subject(failure, text(file)));
    if (const char* fault = faultOfSharedObject(bytes))
        return refuse(error, loadError(file, fault));
    if (!dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL))
        return refuse(error, loadError(file, dlerror()));
    content_->isLoaded = true;
    return true;
}

bool NSBundle::isLoaded() const noexcept { return content_->isLoaded; }

Ref<NSString> NSBundle::description() const {
    return NSString::stringWithFormat(u"NSBundle <%@> (%s)", bundlePath(), isLoaded() ? "loaded" : "not yet loaded");
}

namespace {

bool load(NSBundle& receiver) { return receiver.load(); }

const Additions<NSBundle> additions{
    classLevel<&NSBundle::bundleWithPath>("bundleWithPath:"),
    classLevel<&NSBundle::bundleWithIdentifier>("bundleWithIdentifier:"),
    classLevel<&NSBundle::mainBundle>("mainBundle"),
    classLevel<&NSBundle::pathForResource_ofType_inDirectory>("pathForResource:ofType:inDirectory:"),
    instance<&NSBundle::bundlePath>("bundlePath"),
    instance<&NSBundle::resourcePath>("resourcePath"),
    instance<&NSBundle::infoDictionary>("infoDictionary"),
    instance<&NSBundle::bundleIdentifier>("bundleIdentifier"),
    instance<&NSBundle::pathForResource_ofType>("pathForResource:ofType:"),
    instance<&NSBundle::localizedStringForKey_value_table>("localizedStringForKey:value:table:"),
    instance<&load>("load"),
    instance<&NSBundle::isLoaded>("isLoaded"),
};

}  // namespace

}  // namespace tovi

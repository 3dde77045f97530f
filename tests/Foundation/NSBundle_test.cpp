#include <gtest/gtest.h>

#include <ToviFoundationKit/Foundation/PreferredLanguages.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

#include <sys/stat.h>

#include <cstdlib>

#include <support/Log.h>
#include <support/TemporaryDirectory.h>
#include <support/Threads.h>

using namespace tovi;

namespace {

Ref<NSBundle> bundleIn(const TemporaryDirectory& directory, const char* name = "") {
    return NSBundle::bundleWithPath(directory.text(name)).ref();
}

Ref<NSBundle> categoriesBundle() {
    const auto library = NSBundle::bundleWithIdentifier(box(NSBundleLibraryIdentifier));
    return NSBundle::bundleWithPath(
               *library->pathForResource_ofType(u"ToviFoundationKitCategoriesBundle10_4"_ns, u"bundle"_ns.get()))
        .ref();
}

std::string localized(NSBundle& bundle, const char* key, const char* value = "", const char* table = "T") {
    return bundle.localizedStringForKey_value_table(*box(key), &*box(value), &*box(table))->UTF8String();
}

}  // namespace

TEST(NSBundle, IsOneObjectForOneDirectory) {
    const TemporaryDirectory directory;
    directory.write("file", "");
    EXPECT_FALSE(NSBundle::bundleWithPath(directory.text("file")));
    EXPECT_FALSE(NSBundle::bundleWithPath(u""_ns));
    EXPECT_FALSE(NSBundle::bundleWithPath(*NSString::fromUTF8(directory.path().native() + '\0')));
    const auto bundle = bundleIn(directory);
    EXPECT_EQ(*bundle->bundlePath(), *directory.text());
    EXPECT_TRUE(identical(bundle.get(), NSBundle::bundleWithPath(directory.text("none/.././")).get()));
    EXPECT_EQ(bundle->description()->UTF8String(), "NSBundle <" + directory.path().native() + "> (not yet loaded)");
    EXPECT_EQ(*bundle->resourcePath(), *bundle->bundlePath());
    directory.write("Resources/file", "");
    EXPECT_EQ(*bundle->resourcePath(), *directory.text("Resources"));
}

TEST(NSBundle, IsFoundByTheIdentifierInItsInfo) {
    const TemporaryDirectory directory;
    directory.write("good/Info.strings", "CFBundleIdentifier = test.NSBundle.good; other = 1;");
    directory.write("damaged/Info.strings", "CFBundleIdentifier = ");
    directory.write("none/file", "");
    EXPECT_FALSE(NSBundle::bundleWithIdentifier(u"test.NSBundle.good"_ns));
    const auto good = bundleIn(directory, "good");
    EXPECT_TRUE(identical(NSBundle::bundleWithIdentifier(u"test.NSBundle.good"_ns).get(), good.get()));
    EXPECT_EQ(*good->infoDictionary(),
              *NSDictionary::of({{u"CFBundleIdentifier", u"test.NSBundle.good"}, {u"other", u"1"}}));
    const Log log;
    EXPECT_FALSE(bundleIn(directory, "damaged")->bundleIdentifier());
    EXPECT_FALSE(bundleIn(directory, "damaged")->bundleIdentifier());
    EXPECT_FALSE(bundleIn(directory, "none")->bundleIdentifier());
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_NE(log.lines[0].find("Info.strings: line 1, column 22: a text expected"), std::string::npos);
}

TEST(NSBundle, TheLibraryAndTheProgramHaveOne) {
    const auto library = NSBundle::bundleWithIdentifier(box(NSBundleLibraryIdentifier));
    ASSERT_TRUE(library);
    EXPECT_TRUE(library->isLoaded());
    EXPECT_TRUE(library->bundlePath()->hasSuffix(u"/ToviFoundationKit"_ns));
    EXPECT_EQ(NSBundle::mainBundle()->bundlePath()->UTF8String(),
              std::filesystem::read_symlink("/proc/self/exe").parent_path().native());
    EXPECT_TRUE(NSBundle::mainBundle()->load());
}

TEST(NSBundle, FindsResourcesInTheUsersLanguages) {
    const TemporaryDirectory directory;
    for (const char* file : {"plain.txt", "de.lproj/plain.txt", "de.lproj/a.txt", "pt-BR.lproj/a.txt", "en.lproj/a.txt",
                             "zz.lproj/only.txt", "fr_CA.lproj/a.txt", "yy.lproj/only.txt"})
        directory.write(file, "");
    const struct {
        std::vector<std::string> languages;
        const char *name, *found;
    } rows[] = {
        {{"de"}, "plain", "plain.txt"},
        {{"de"}, "a", "de.lproj/a.txt"},
        {{"de-AT", "de"}, "a", "de.lproj/a.txt"},
        {{"DE-ch"}, "a", "de.lproj/a.txt"},
        {{"pt-BR", "pt"}, "a", "pt-BR.lproj/a.txt"},
        {{"pt"}, "a", "pt-BR.lproj/a.txt"},
        {{"fr-CA"}, "a", "fr_CA.lproj/a.txt"},
        {{"ja", "fr", "de"}, "a", "fr_CA.lproj/a.txt"},
        {{}, "a", "en.lproj/a.txt"},
        {{"de"}, "only", "yy.lproj/only.txt"},
        {{"de"}, "none", nullptr},
    };
    const auto bundle = bundleIn(directory);
    for (const auto& row : rows) {
        const ScopedPreferredLanguages languages(row.languages);
        const auto found = bundle->pathForResource_ofType(*box(row.name), u"txt"_ns.get());
        EXPECT_EQ(found ? found->UTF8String() : "", row.found ? (directory.path() / row.found).native() : "");
    }
    EXPECT_EQ(*bundle->pathForResource_ofType(u"plain.txt"_ns, nullptr), *directory.text("plain.txt"));
    EXPECT_EQ(*bundle->pathForResource_ofType(u"plain.txt"_ns, u""_ns.get()), *directory.text("plain.txt"));
    EXPECT_EQ(*NSBundle::pathForResource_ofType_inDirectory(u"only"_ns, u"txt"_ns.get(), directory.text()),
              *directory.text("yy.lproj/only.txt"));
    EXPECT_FALSE(NSBundle::pathForResource_ofType_inDirectory(u"only"_ns, nullptr, directory.text("none")));
}

TEST(NSBundle, LocalizesWithTheValueOrTheKeyInReserve) {
    const TemporaryDirectory directory;
    directory.write("Resources/de.lproj/T.strings", "today = heute;");
    directory.write("Resources/en.lproj/T.strings", "today = today; empty = \"\";");
    directory.write("Resources/en.lproj/Localizable.strings", "today = main;");
    directory.write("Resources/en.lproj/Bad.strings", "today");
    const auto bundle = bundleIn(directory);
    const ScopedPreferredLanguages german({"de"});
    EXPECT_EQ(localized(bundle, "today", "value"), "heute");
    EXPECT_EQ(localized(bundle, "empty", "value"), "value");
    EXPECT_EQ(localized(bundle, "empty"), "empty");
    EXPECT_EQ(localized(bundle, "today", "", "None"), "today");
    EXPECT_EQ(localized(bundle, "today", "", ""), "main");
    EXPECT_EQ(*bundle->localizedStringForKey_value_table(u"today"_ns, nullptr, nullptr), u"main");
    EXPECT_EQ(*bundle->localizedStringForKey_value_table(u"other"_ns, nullptr, nullptr), u"other");
    {
        const ScopedPreferredLanguages french({"fr"});
        EXPECT_EQ(localized(bundle, "today", "value"), "today");
        EXPECT_EQ(localized(bundle, "empty", "value"), "");
    }
    EXPECT_EQ(localized(bundle, "today"), "heute");
    const Log log;
    EXPECT_EQ(localized(bundle, "today", "value", "Bad"), "value");
    EXPECT_EQ(localized(bundle, "today", "value", "Bad"), "value");
    EXPECT_EQ(log.lines.size(), 1U) << "logged once";
}

TEST(NSBundle, RefusesCodeThatIsMissingOrDamaged) {
    const auto source = categoriesBundle()->bundlePath()->UTF8String() + "/ToviFoundationKitCategoriesBundle10_4.so";
    const auto data = NSData::dataWithContentsOfFile(*box(source));
    const std::string whole(reinterpret_cast<const char*>(data->bytes().data()), data->length());
    const TemporaryDirectory directory;
    std::filesystem::create_directory(directory.path() / "X.bundle");
    const auto bundle = bundleIn(directory, "X.bundle");
    const auto expectRefused = [&](std::string_view reason) {
        RefPtr<NSError> error;
        EXPECT_FALSE(bundle->load(&error));
        ASSERT_TRUE(error);
        const std::string text = error->localizedDescription()->UTF8String();
        EXPECT_EQ(text.find((directory.path() / "X.bundle/X.so").native() + ": "), 0U) << text;
        EXPECT_NE(text.find(reason), std::string::npos) << text;
        EXPECT_FALSE(bundle->load());
        EXPECT_FALSE(bundle->isLoaded());
    };
    expectRefused("No such file or directory");
    const auto expectContentRefused = [&](std::string_view content, std::string_view reason) {
        directory.write("X.bundle/X.so", content);
        expectRefused(reason);
    };
    expectContentRefused("", "it is too short");
    expectContentRefused(std::string(5000, 'x'), "it is no shared object");
    for (std::size_t size = 64; size < whole.size(); size += size < 4096 ? 64 : whole.size() / 100)
        expectContentRefused(std::string_view(whole).substr(0, size), "it is cut off");
    for (std::size_t size = 0; size < 4096; size += 64)
        expectContentRefused(whole.substr(0, size) + std::string(whole.size() - size, '\0'), "it");
    std::string changed = whole;
    changed[4] ^= 3;  // 32 bits for 64
    expectContentRefused(changed, "it is made for another machine");
    changed = whole;
    changed[18] ^= 1;  // another processor, which the loader itself finds out
    expectContentRefused(changed, "");
}

TEST(NSBundle, LoadingBringsTheBundlesOperations) {
    const auto bundle = categoriesBundle();
    Class& everyClass = NSObject::classObject();
    const Selector version = "toviCategoriesBundleVersion"_sel;
    EXPECT_EQ(everyClass.respondsToSelector(version), bundle->isLoaded());
    RefPtr<NSError> error;
    EXPECT_TRUE(bundle->load(&error));
    EXPECT_FALSE(error);
    EXPECT_TRUE(bundle->isLoaded());
    EXPECT_TRUE(bundle->load());
    EXPECT_EQ(send<NSInteger>(everyClass, version), 1);
    EXPECT_EQ(send<NSInteger>(NSArray::classObject(), version), 1);
    EXPECT_TRUE(bundle->description()->hasSuffix(u"> (loaded)"_ns));
}

TEST(NSBundle, ServesManyThreads) {
    const TemporaryDirectory directory;
    directory.write("Info.strings", "CFBundleIdentifier = test.NSBundle.threads;");
    directory.write("en.lproj/T.strings", "key = text;");
    onThreads(4, [&](int) {
        for (int i = 0; i < 50; ++i) {
            const auto bundle = bundleIn(directory);
            EXPECT_EQ(localized(bundle, "key"), "text");
            EXPECT_TRUE(NSBundle::bundleWithIdentifier(u"test.NSBundle.threads"_ns));
            EXPECT_FALSE(bundle->load());
            EXPECT_TRUE(categoriesBundle()->load());
        }
    });
}

TEST(PreferredLanguages, ComeFromTheEnvironment) {
    const struct {
        const char *language, *all, *messages, *lang;
        std::vector<std::string> expected;
    } rows[] = {
        {"", "", "", "", {}},
        {"", "", "", "de_AT.UTF-8", {"de-AT", "de"}},
        {"", "", "fr", "de_AT.UTF-8", {"fr"}},
        {"", "sr_RS@latin", "fr", "de", {"sr-RS", "sr"}},
        {"pt_BR:en:pt", "", "", "de_DE.UTF-8", {"pt-BR", "pt", "en", "de-DE", "de"}},
        {":en::", "", "", "en_US", {"en", "en-US"}},
        {"de", "C.UTF-8", "fr", "fr", {}},
        {"de", "", "", "POSIX", {}},
    };
    std::vector<std::pair<const char*, std::string>> saved;
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
        saved.emplace_back(name, getenv(name) ? getenv(name) : "");
    for (const auto& row : rows) {
        setenv("LANGUAGE", row.language, 1);
        setenv("LC_ALL", row.all, 1);
        setenv("LC_MESSAGES", row.messages, 1);
        setenv("LANG", row.lang, 1);
        EXPECT_EQ(preferredLanguages(), row.expected) << row.language << ' ' << row.lang;
    }
    for (const auto& [name, value] : saved)
        setenv(name, value.c_str(), 1);
}

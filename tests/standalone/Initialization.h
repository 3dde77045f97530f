#pragma once

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

#include <support/TemporaryDirectory.h>

// What the library does when it is loaded into a program that stands for a platform of its own version.

/// Where the library that runs was loaded from.
inline std::filesystem::path libraryFile() {
    Dl_info info{};
    dladdr(dlsym(RTLD_DEFAULT, "ToviFoundationKitInitialize"), &info);
    return info.dli_fname;
}

/// Another installation of the library, without the categories bundle, for a second run of this program.
class Installation {
public:
    Installation() {
        const auto bundle = libraryFile().parent_path() / "ToviFoundationKit";
        std::filesystem::copy_file(libraryFile(), directory_.path() / libraryFile().filename());
        std::filesystem::create_directories(directory_.path() / "ToviFoundationKit");
        std::filesystem::copy_file(bundle / "Info.strings", directory_.path() / "ToviFoundationKit/Info.strings");
    }

    void addDamagedBundle() const { directory_.write(bundlePath() / "ToviFoundationKitCategoriesBundle10_4.so", "?"); }
    std::filesystem::path bundlePath() const {
        return directory_.path() / "ToviFoundationKit/Resources/ToviFoundationKitCategoriesBundle10_4.bundle";
    }

    /// What a run that loads the library and calls the routine again prints.
    std::string run() const {
        const std::string program = std::filesystem::read_symlink("/proc/self/exe");
        const std::string command = "LD_LIBRARY_PATH='" + directory_.path().native() +
                                    "'${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH} '" + program +
                                    "' --gtest_filter='*.AFurtherCallDoesNothing' 2>&1";
        std::string output;
        std::FILE* const pipe = popen(command.c_str(), "r");
        for (int character; (character = std::getc(pipe)) != EOF;)
            output.push_back(static_cast<char>(character));
        EXPECT_EQ(pclose(pipe), 0) << output;
        return output;
    }

private:
    TemporaryDirectory directory_;
};

inline void expectLoaded(bool loads) {
    tovi::Class& everyClass = tovi::NSObject::classObject();
    EXPECT_EQ(everyClass.respondsToSelector(tovi::Selector::named("toviCategoriesBundleVersion")), loads);
    if (loads) {
        EXPECT_EQ(tovi::send<tovi::NSInteger>(everyClass, tovi::Selector::named("toviCategoriesBundleVersion")), 1);
    }
}

inline void expectLoggedOnce(const std::string& output, const std::string& message, bool logs) {
    const auto found = output.find("TOVIFOUNDATIONKIT ERROR");
    EXPECT_EQ(found != output.npos, logs) << output;
    if (logs) {
        EXPECT_EQ(output.substr(found, message.size() + 1), message + "\n");
        EXPECT_EQ(output.find("TOVIFOUNDATIONKIT ERROR", found + 1), output.npos) << output;
    }
}

inline void expectMissingBundleLogged(bool logs) {
    const Installation installation;
    expectLoggedOnce(installation.run(), "TOVIFOUNDATIONKIT ERROR WHEN LOADING THE 10.4 CATEGORIES BUNDLE!", logs);
}

inline void expectDamagedBundleLogged(bool logs) {
    const Installation installation;
    installation.addDamagedBundle();
    expectLoggedOnce(installation.run(),
                     "TOVIFOUNDATIONKIT ERROR WHEN LOADING THE 10.4 CATEGORIES BUNDLE AT PATH:NSBundle <" +
                         installation.bundlePath().native() + "> (not yet loaded)",
                     logs);
}

/// The program's version of the platform, and whether the categories bundle is for such a one.
#define INITIALIZATION_TESTS(suite, version, loads)                                       \
    extern "C" const double NSAppKitVersionNumber = version;                              \
    TEST(suite, TheCategoriesBundleIsForOldPlatforms) { expectLoaded(loads); }            \
    TEST(suite, ABundleThatIsMissingIsLogged) { expectMissingBundleLogged(loads); }       \
    TEST(suite, ABundleThatIsDamagedIsLogged) { expectDamagedBundleLogged(loads); }       \
    TEST(suite, AFurtherCallDoesNothing) {                                                \
        const auto fail = [](const tovi::NSString&) { FAIL() << "it has logged again"; }; \
        const tovi::LogSink previous = tovi::setLogSink(fail);                            \
        ToviFoundationKitInitialize();                                                    \
        tovi::setLogSink(previous);                                                       \
    }

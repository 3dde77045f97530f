#pragma once

#include <atomic>
#include <string>
#include <vector>

#include <Mailbox.h>
#include <Options.h>
#include <terminal/ProgressBar.h>

namespace digest {

/// Reads mailboxes on as many threads as there are processors. Meanwhile the thread that asked runs its run loop, where
/// it hears how far they are; Ctrl-C stops them at the next message. What cannot be read is reported on standard error
/// and left out.
class Loader {
public:
    explicit Loader(const Options& options);

    /// In the order of the options. When the user interrupts it, it ends the process.
    tovi::Ref<tovi::NSArray> load();
    bool hasTrouble() const { return hasTrouble_; }

private:
    struct Job {
        std::string path;
        tovi::Ref<tovi::NSString> name;
        tovi::RefPtr<Mailbox> mailbox = nullptr;
        std::string error = {};
        tovi::NSUInteger position = 0, size = 0;  ///< bytes read, and in all where that is known
    };
    struct Cancelled {};

    // On the threads that read:
    void work(tovi::NSThread& home);
    tovi::Ref<Mailbox> read(std::size_t number, tovi::NSThread& home);
    /// Tells the thread at home something about a job: the notification's object is the job's number.
    static void tell(const tovi::NSString& what, std::size_t number, const tovi::NSDictionary* more,
                     tovi::NSThread& home);

    // At home:
    void waitForWorkers(const std::vector<tovi::Ref<tovi::NSThread>>& workers);
    void showProgress();
    void report(const Job& job);

    const Options& options_;
    std::vector<Job> jobs_;
    ProgressBar bar_;
    std::size_t workersLeft_ = 0;
    bool hasTrouble_ = false;
    std::atomic<std::size_t> next_{0};
    std::atomic<bool> cancelled_{false};
};

}  // namespace digest

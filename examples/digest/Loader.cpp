#include <Loader.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

#include <Interruption.h>
#include <terminal/TextWidth.h>

using namespace tovi;

namespace digest {

namespace {

constexpr auto interval = std::chrono::milliseconds(50);  // between two tellings of a job
constexpr NSTimeInterval patience = 1;                    // seconds for interrupted threads to end

const auto mailboxProgress = u"MailboxProgress"_ns;  // how far a job is: "position", "size"
const auto mailboxEnd = u"MailboxEnd"_ns;            // "mailbox", or the "error"
const auto workerEnd = u"WorkerEnd"_ns;

Ref<NSString> nameOf(const std::string& path) {
    return NSString::fromUTF8(path == "-" ? "standard input" : path.substr(path.find_last_of('/') + 1));
}

std::u16string labelOf(const Options& options) {
    return printable(options.paths.size() == 1 ? *nameOf(options.paths.front())
                                               : *NSString::stringWithFormat(u"%lu mailboxes", options.paths.size()));
}

/// Listens to the default centre as long as it lives.
class Listener {
public:
    Listener(const NSString& name, NSNotificationCenter::Block block)
        : token_(NSNotificationCenter::defaultCenter()->addObserverForName_object_usingBlock(&name, nullptr,
                                                                                             std::move(block))) {}
    ~Listener() { NSNotificationCenter::defaultCenter()->removeObserver(token_); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

private:
    Ref<NSObject> token_;
};

NSUInteger numberIn(const NSNotification& notification, const NSString& key) {
    return to<NSNumber>(notification.userInfo()->objectForKey(key).ref())->unsignedLongValue();
}

}  // namespace

Loader::Loader(const Options& options) : options_(options), bar_(labelOf(options)) {
    for (const std::string& path : options.paths)
        jobs_.push_back({path, nameOf(path)});
}

Ref<NSArray> Loader::load() {
    const auto home = NSThread::currentThread();
    prepareForInterThreadMessages();
    const auto jobOf = [this](const NSNotification& notification) -> Job& {
        return jobs_[to<NSNumber>(notification.object().ref())->unsignedLongValue()];
    };
    const Listener progress(mailboxProgress, [&](const NSNotification& notification) {
        jobOf(notification).position = numberIn(notification, u"position"_ns);
        jobOf(notification).size = numberIn(notification, u"size"_ns);
        showProgress();
    });
    const Listener ends(mailboxEnd, [&](const NSNotification& notification) {
        Job& job = jobOf(notification);
        job.mailbox = as<Mailbox>(notification.userInfo()->find(u"mailbox"_ns));
        if (const auto* const error = as<NSString>(notification.userInfo()->find(u"error"_ns)))
            job.error = error->UTF8String();
    });
    const Listener workerEnds(workerEnd, [this](const NSNotification&) { --workersLeft_; });

    Interruption interruption([&] {
        cancelled_ = true;
        NSRunLoop::mainRunLoop()->stop();
    });
    std::vector<Ref<NSThread>> workers;
    for (workersLeft_ = std::min<std::size_t>(std::max(1u, std::thread::hardware_concurrency()), jobs_.size());
         workers.size() < workersLeft_;)
        workers.push_back(NSThread::initWithBlock([this, home] { work(home); }));
    for (const auto& worker : workers)
        worker->start();
    waitForWorkers(workers);
    bar_.wipe();
    if (const int signal = interruption.signal()) {
        std::cerr << "digest: interrupted\n" << std::flush;
        Interruption::endBy(signal);
    }
    disableInterThreadMessages();

    const auto mailboxes = NSMutableArray::array();
    for (const Job& job : jobs_) {
        report(job);
        if (job.mailbox)
            mailboxes->addObject(*job.mailbox);
    }
    return mailboxes;
}

// A thread that is interrupted while it waits for input stays behind.
void Loader::waitForWorkers(const std::vector<Ref<NSThread>>& workers) {
    const auto loop = NSRunLoop::currentRunLoop();
    while (workersLeft_ > 0 && !cancelled_)
        loop->runMode_beforeDate(*NSDefaultRunLoopMode, NSDate::distantFuture());
    const auto end = NSDate::dateWithTimeIntervalSinceNow(patience);
    while (workersLeft_ > 0 && end->timeIntervalSinceNow() > 0)
        loop->runMode_beforeDate(*NSDefaultRunLoopMode, end);
    if (workersLeft_ == 0)
        for (const auto& worker : workers)
            worker->join();
}

void Loader::showProgress() {
    NSUInteger position = 0, size = 0;
    bool isKnown = true;
    for (const Job& job : jobs_) {
        position += job.position;
        size += job.size;
        isKnown = isKnown && job.size > 0;
    }
    bar_.show(position, isKnown ? size : 0);
}

void Loader::report(const Job& job) {
    const auto complain = [&](const std::string& text) {
        std::cerr << "digest: " << job.path << ": " << text << '\n';
        hasTrouble_ = true;
    };
    if (!job.mailbox)
        return complain(job.error);
    for (const MailNote& problem : job.mailbox->problems())
        complain("line " + std::to_string(problem.line) + ", offset " + std::to_string(problem.offset) + ": " +
                 problem.text);
}

// --- On the threads that read ----------------------------------------------------------------------------------------

void Loader::work(NSThread& home) {
    for (std::size_t number; !cancelled_ && (number = next_++) < jobs_.size();) {
        const auto outcome = NSMutableDictionary::dictionary();
        try {
            outcome->setObject_forKey(read(number, home), u"mailbox"_ns);
        } catch (const Cancelled&) {
            break;
        } catch (const std::exception& error) {
            outcome->setObject_forKey(NSString::fromUTF8(error.what()), u"error"_ns);
        }
        tell(mailboxEnd, number, outcome.get(), home);
    }
    postNotificationName_object_inThread(NSNotificationCenter::defaultCenter(), workerEnd, nullptr, &home);
}

Ref<Mailbox> Loader::read(std::size_t number, NSThread& home) {
    FileSource file(jobs_[number].path);
    auto next = std::chrono::steady_clock::now();
    return Mailbox::read(jobs_[number].name, file, options_.quoting, [&](std::uint64_t position) {
        if (cancelled_)
            throw Cancelled();
        if (const auto now = std::chrono::steady_clock::now(); now >= next) {
            next = now + interval;
            tell(mailboxProgress, number, NSDictionary::of({{u"position", position}, {u"size", file.size()}}).get(),
                 home);
        }
    });
}

void Loader::tell(const NSString& what, std::size_t number, const NSDictionary* more, NSThread& home) {
    postNotificationName_object_userInfo_inThread(NSNotificationCenter::defaultCenter(), what,
                                                  NSNumber::numberWithUnsignedLong(number).get(), more, &home);
}

}  // namespace digest

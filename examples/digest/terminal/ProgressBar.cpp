#include <terminal/ProgressBar.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include <terminal/Terminal.h>
#include <terminal/TextWidth.h>

#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

namespace {

constexpr auto interval = std::chrono::milliseconds(100);

}  // namespace

ProgressBar::ProgressBar(std::u16string label) : label_(std::move(label)), nextTime_(Clock::now() + interval) {
    const Terminal errors = Terminal::of(STDERR_FILENO);
    if (errors.isTerminal && Terminal::of(STDOUT_FILENO).isTerminal)
        columns_ = errors.columns;
}

ProgressBar::~ProgressBar() { wipe(); }

void ProgressBar::wipe() {
    if (std::exchange(isDrawn_, false))
        std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(std::uint64_t done, std::uint64_t total) {
    if (columns_ == 0 || Clock::now() < nextTime_)
        return;
    nextTime_ = Clock::now() + interval;
    isDrawn_ = true;
    draw(done, total);
}

void ProgressBar::draw(std::uint64_t done, std::uint64_t total) const {
    constexpr std::uint64_t megabyte = 1'000'000;
    std::string text = "\r\033[K";
    if (total > 0) {
        const std::uint64_t part = std::min(done, total);
        const auto width = static_cast<std::uint64_t>(std::clamp(columns_ / 3, 10, 30));
        const auto filled = static_cast<std::size_t>(width * part / total);
        text += '[' + std::string(filled, '#') + std::string(width - filled, '-') + "] " +
                std::to_string(100 * part / total) + "%  ";
    } else {
        text += std::to_string(done / megabyte) + " MB  ";
    }
    const auto label = elided(label_, columns_ - static_cast<int>(text.size()));
    text += tovi::NSString::stringWithCharacters(label)->UTF8String();
    std::fputs(text.c_str(), stderr);
}

}  // namespace digest

// Delimiter patterns, tags and blanks in texts of few characters, beside the same told step by step. The input's first
// two bytes say how much of the rest is the pattern and the replacement.

#include <ToviFoundationKit/ToviFoundationKit.h>

#include "../tests/support/PatternSteps.h"
#include "../tests/support/Text.h"
#include "Support.h"

using namespace tovi;

namespace {

void rewrite(const std::u16string& receiver, const std::u16string& pattern, const std::u16string& replacement) {
    const bool isComplete = piecesOf(pattern).size() < 2 || piecesOf(replacement).size() > 1;
    const auto string = NSMutableString::stringWithString(text(receiver));
    bool raised = false, refused = false;
    try {
        replaceRegexString_withRegexString(string, text(pattern), text(replacement));
    } catch (const NSException& exception) {
        raised = exception.name() == NSRangeException;
        refused = !raised;
    }
    if (!isComplete)
        return;
    const auto expected = rewrittenStepByStep(receiver, pattern, replacement);
    if (refused)
        require(!expected || expected->text.size() > 4 * receiver.size(), "refused without need");
    else
        require(expected == Rewritten{std::u16string(string->view()), raised}, "rewritten");
}

void find(const std::u16string& receiver, const std::u16string& pattern) {
    const auto first = findRegexFirstString(text(receiver), text(pattern));
    try {
        const auto all = findRegexString(text(receiver), text(pattern));
        const auto pieces = piecesOf(pattern);
        require(first || !all || !all->count(), "found, but not first");
        require(!first || all->objectAtIndex(0)->isEqual(first.get()), "first found");
        std::size_t at = 0;
        for (NSUInteger i = 0; all && i < all->count(); ++i) {
            const auto whole = pieces[0] + std::u16string(to<NSString>(all->objectAtIndex(i))->view()) + pieces[1];
            at = receiver.find(whole, at);
            require(at != receiver.npos, "what was found stands in the text, in order");
            at += whole.size();
        }
    } catch (const NSException& exception) {
        require(exception.name() == NSRangeException, "range exception");
    }
}

void collapse(const std::u16string& receiver) {
    const auto string = NSMutableString::stringWithString(text(receiver));
    removeMultipleSpaceInString(string);
    std::u16string expected = receiver;
    for (std::u16string before; before != expected;) {
        before = expected;
        replaceEverywhere(expected, u"  ", u" ");
    }
    require(string->view() == expected, "blanks");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::u16string_view alphabet = u"<>[]ab \n*<>[]*\xD83D\u00E9\0";
    if (size < 2 || size > 2'000)
        return 0;
    std::u16string input;
    for (std::size_t i = 2; i < size; ++i)
        input += alphabet[data[i] % 16];
    const std::size_t first = std::min<std::size_t>(data[0] % 12, input.size());
    const std::size_t second = std::min<std::size_t>(data[1] % 12, input.size() - first);
    const std::u16string pattern = input.substr(0, first), replacement = input.substr(first, second);
    const std::u16string receiver = input.substr(first + second);
    rewrite(receiver, pattern, replacement);
    find(receiver, pattern);
    collapse(receiver);
    require(flattenHTML_trimWhiteSpace(text(receiver), false)->view() == flattenedStepByStep(receiver), "flattened");
    flattenHTML_trimWhiteSpace(text(receiver), true);
    stringByDeletingPersonalInEmailAddress(text(receiver));
    return 0;
}

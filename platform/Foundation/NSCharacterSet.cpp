#include <ToviFoundationKit/Foundation/NSCharacterSet.h>

#include <limits>
#include <utility>

#include <unicode/uset.h>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>
#include <ToviFoundationKit/Runtime/Unicode_p.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSCharacterSet, NSObject)

struct NSCharacterSet::Members {
    struct Close {
        void operator()(USet* closed) const noexcept { uset_close(closed); }
    };
    std::unique_ptr<USet, Close> set{uset_openEmpty()};
};

NSCharacterSet::NSCharacterSet(Members&& members) {
    uset_freeze(members.set.get());
    members_ = std::make_unique<const Members>(std::move(members));
}

NSCharacterSet::~NSCharacterSet() = default;

Ref<NSCharacterSet> NSCharacterSet::characterSetWithCharactersInString(const NSString& characters) {
    Members members;
    const std::u16string_view text = characters;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t codePoint = text[i];
        if (detail::isLead(codePoint) && i + 1 < text.size() && detail::isTrail(text[i + 1])) {
            codePoint = detail::combined(text[i], text[i + 1]);
            ++i;
        }
        uset_add(members.set.get(), static_cast<UChar32>(codePoint));
    }
    return adopt(*new NSCharacterSet(std::move(members)));
}

Ref<NSCharacterSet> NSCharacterSet::characterSetWithRange(NSRange range) {
    if (!range.fitsIn(0x110000))
        NSException::raise(NSInvalidArgumentException,
                           u"*** +[NSCharacterSet characterSetWithRange:]: Range {%llu, %llu} reaches beyond U+10FFFF",
                           range.location, range.length);
    Members members;
    if (range.length)
        uset_addRange(members.set.get(), static_cast<UChar32>(range.location), static_cast<UChar32>(range.end() - 1));
    return adopt(*new NSCharacterSet(std::move(members)));
}

Ref<NSCharacterSet> NSCharacterSet::withPattern(std::u16string_view pattern) {
    UErrorCode error = U_ZERO_ERROR;
    Members members;
    members.set.reset(uset_openPattern(pattern.data(), static_cast<int32_t>(pattern.size()), &error));
    if (U_FAILURE(error))
        NSException::raise(NSInternalInconsistencyException, u"*** NSCharacterSet: no data for %@: %s", pattern,
                           u_errorName(error));
    return adopt(*new NSCharacterSet(std::move(members)));
}

// The standard sets live as long as the process.

Ref<NSCharacterSet> NSCharacterSet::whitespaceCharacterSet() {
    static NSCharacterSet& set = *withPattern(u"[[:Zs:]\\u0009]").leak();
    return set;
}

Ref<NSCharacterSet> NSCharacterSet::newlineCharacterSet() {
    static NSCharacterSet& set = *withPattern(u"[\\u000A-\\u000D\\u0085\\u2028\\u2029]").leak();
    return set;
}

Ref<NSCharacterSet> NSCharacterSet::whitespaceAndNewlineCharacterSet() {
    static NSCharacterSet& set = *withPattern(u"[[:Zs:]\\u0009-\\u000D\\u0085\\u2028\\u2029]").leak();
    return set;
}

Ref<NSCharacterSet> NSCharacterSet::decimalDigitCharacterSet() {
    static NSCharacterSet& set = *withPattern(u"[:Nd:]").leak();
    return set;
}

Ref<NSCharacterSet> NSCharacterSet::letterCharacterSet() {
    static NSCharacterSet& set = *withPattern(u"[[:L:][:M:]]").leak();
    return set;
}

Ref<NSCharacterSet> NSCharacterSet::alphanumericCharacterSet() {
    static NSCharacterSet& set = *withPattern(u"[[:L:][:M:][:N:]]").leak();
    return set;
}

Ref<NSCharacterSet> NSCharacterSet::invertedSet() const {
    Members members;
    members.set.reset(uset_cloneAsThawed(members_->set.get()));
    uset_complement(members.set.get());
    return adopt(*new NSCharacterSet(std::move(members)));
}

bool NSCharacterSet::characterIsMember(unichar character) const noexcept { return longCharacterIsMember(character); }

bool NSCharacterSet::longCharacterIsMember(char32_t codePoint) const noexcept {
    return codePoint < 0x110000 && uset_contains(members_->set.get(), static_cast<UChar32>(codePoint));
}

bool NSCharacterSet::isEqual(const NSObject* other) const {
    const auto* const set = as<NSCharacterSet>(other);
    return set && (set == this || uset_equals(members_->set.get(), set->members_->set.get()));
}

NSUInteger NSCharacterSet::hash() const {
    const USet* const set = members_->set.get();
    return static_cast<NSUInteger>(uset_size(set)) * 31 + static_cast<NSUInteger>(uset_charAt(set, 0));
}

Ref<NSString> NSCharacterSet::description() const {
    UErrorCode error = U_ZERO_ERROR;
    const int32_t length = uset_toPattern(members_->set.get(), nullptr, 0, true, &error);
    StringBuilder pattern;
    error = U_ZERO_ERROR;
    uset_toPattern(members_->set.get(), pattern.extend(static_cast<NSUInteger>(length)), length, true, &error);
    return pattern.string();
}

Ref<NSObject> NSCharacterSet::copy() const { return share(*this); }

namespace {

const Additions<NSCharacterSet> additions{
    classLevel<&NSCharacterSet::characterSetWithCharactersInString>("characterSetWithCharactersInString:"),
    classLevel<&NSCharacterSet::characterSetWithRange>("characterSetWithRange:"),
    classLevel<&NSCharacterSet::whitespaceCharacterSet>("whitespaceCharacterSet"),
    classLevel<&NSCharacterSet::newlineCharacterSet>("newlineCharacterSet"),
    classLevel<&NSCharacterSet::whitespaceAndNewlineCharacterSet>("whitespaceAndNewlineCharacterSet"),
    classLevel<&NSCharacterSet::decimalDigitCharacterSet>("decimalDigitCharacterSet"),
    classLevel<&NSCharacterSet::letterCharacterSet>("letterCharacterSet"),
    classLevel<&NSCharacterSet::alphanumericCharacterSet>("alphanumericCharacterSet"),
    instance<&NSCharacterSet::invertedSet>("invertedSet"),
    instance<&NSCharacterSet::characterIsMember>("characterIsMember:"),
    instance<&NSCharacterSet::longCharacterIsMember>("longCharacterIsMember:"),
};

}  // namespace

}  // namespace tovi

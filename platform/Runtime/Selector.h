#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string_view>

#include <ToviFoundationKit/Runtime/Export.h>

namespace tovi {

/// The interned name of an operation ("insertChild:atIndex:"). Two selectors of one name are the same pointer, from
/// any thread and any module; comparing and hashing cost no more than that. Selectors live until the process ends.
class TOVI_EXPORT Selector {
public:
    constexpr Selector() noexcept = default;  ///< the null selector, which nothing responds to

    static Selector named(std::string_view name);
    /// The selector of that name when there is one already, else the null selector. For names from outside, which
    /// would otherwise stay in memory for good.
    static Selector existing(std::string_view name) noexcept;

    std::string_view name() const noexcept { return record_ ? std::string_view(record_->name, record_->length) : ""; }
    /// The number of colons in the name: how many arguments the operation takes.
    unsigned numberOfArguments() const noexcept { return record_ ? record_->argumentCount : 0; }

    explicit operator bool() const noexcept { return record_ != nullptr; }
    friend bool operator==(Selector, Selector) noexcept = default;
    std::size_t hash() const noexcept { return reinterpret_cast<std::uintptr_t>(record_) * 0x9E3779B97F4A7C15U >> 40; }

private:
    struct Record {
        const char* name;
        std::uint32_t length;
        std::uint32_t argumentCount;
    };
    friend struct SelectorTable;
    explicit Selector(const Record* record) noexcept : record_(record) {}

    const Record* record_ = nullptr;
};

TOVI_EXPORT std::ostream& operator<<(std::ostream& out, Selector selector);

namespace detail {
template <class Unit, std::size_t N> struct Literal {
    Unit units[N];
    consteval Literal(const Unit (&text)[N]) { std::copy_n(text, N, units); }
    constexpr std::basic_string_view<Unit> view() const { return {units, N - 1}; }
};
template <std::size_t N> Literal(const char (&)[N]) -> Literal<char, N>;
template <std::size_t N> Literal(const char16_t (&)[N]) -> Literal<char16_t, N>;
}  // namespace detail

inline namespace literals {
/// "compare:"_sel, interned the first time it is reached.
template <detail::Literal text> [[gnu::always_inline]] inline Selector operator""_sel() {
    static const Selector selector = Selector::named(text.view());
    return selector;
}
}  // namespace literals

}  // namespace tovi

template <> struct std::hash<tovi::Selector> {
    std::size_t operator()(tovi::Selector selector) const noexcept { return selector.hash(); }
};

#pragma once

#include <optional>
#include <string>
#include <vector>

// The delimiter operations told step by step, at whatever cost: what the quick ones must give. "raised" stands for the
// range exception, with what was rewritten until then.

struct Rewritten {
    std::u16string text;
    bool raised = false;
    bool operator==(const Rewritten&) const = default;
};

inline std::vector<std::u16string> piecesOf(const std::u16string& pattern) {
    std::vector<std::u16string> pieces(1);
    for (const char16_t unit : pattern) {
        if (unit == u'*')
            pieces.emplace_back();
        else
            pieces.back() += unit;
    }
    return pieces;
}

inline void replaceEverywhere(std::u16string& text, const std::u16string& target, const std::u16string& replacement) {
    for (std::size_t at = 0; !target.empty() && (at = text.find(target, at)) != text.npos; at += replacement.size())
        text.replace(at, target.size(), replacement);
}

/// Nothing when the text grows beyond all bounds.
inline std::optional<Rewritten> rewrittenStepByStep(std::u16string text, const std::u16string& pattern,
                                                    const std::u16string& replacement) {
    const auto from = piecesOf(pattern), to = piecesOf(replacement);
    if (from.size() < 2) {
        replaceEverywhere(text, pattern, replacement);
        return Rewritten{text};
    }
    const std::size_t bound = (text.size() + 1) * (1 + 4 * replacement.size()) + 8192;
    std::size_t opening = from[0].empty() ? text.npos : text.find(from[0]);
    while (opening != text.npos) {
        const std::size_t start = opening + from[0].size();
        const std::size_t end = from[1].empty() ? text.npos : text.find(from[1], start);
        if (end == text.npos)
            return Rewritten{text, true};
        const std::u16string content = text.substr(start, end - start);
        replaceEverywhere(text, from[0] + content + from[1], to[0] + content + to[1]);
        const std::size_t next = opening + to[0].size() + content.size() + to[1].size();
        if (text.size() > bound)
            return std::nullopt;
        if (text.size() < next + 2)
            break;
        opening = text.find(from[0], next);
    }
    return Rewritten{text};
}

inline std::u16string flattenedStepByStep(const std::u16string& html) {
    std::u16string text = html, tag = u"(null)";
    const std::u16string space = u" \t\n\v\f\r\u0085\u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008"
                                 u"\u2009\u200A\u2028\u2029\u202F\u205F\u3000";
    for (std::size_t at = 0; html.find_first_not_of(space, at) != html.npos;) {
        at = std::min(html.find(u'<', at), html.size());
        const std::size_t end = std::min(html.find(u'>', at), html.size());
        if (end > at)
            tag = html.substr(at, end - at);
        at = end;
        replaceEverywhere(text, tag + u">", u" ");
    }
    return text;
}

#include <mail/Flowed.h>

#include <algorithm>

using namespace tovi;

namespace digest {

namespace {

struct FlowedLine {
    std::size_t quotes = 0;
    std::u16string_view text;  // without quote marks and stuffed blank
    bool goesOn = false;       // in the next line, when that is quoted alike
};

FlowedLine takeLine(std::u16string_view& rest) {
    FlowedLine line;
    const std::size_t end = std::min(rest.find(u'\n'), rest.size());
    line.text = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    line.quotes = std::min(line.text.find_first_not_of(u'>'), line.text.size());
    line.text.remove_prefix(line.quotes);
    if (line.text.starts_with(u' '))
        line.text.remove_prefix(1);
    line.goesOn = line.text.ends_with(u' ') && line.text != u"-- ";  // what stands above a signature
    return line;
}

}  // namespace

Ref<NSString> unflowed(const NSString& text, bool deletesSpace) {
    StringBuilder result;
    FlowedLine before;
    for (std::u16string_view rest = text; !rest.empty();) {
        FlowedLine line = takeLine(rest);
        const bool isJoined = before.goesOn && before.quotes == line.quotes && line.text != u"-- ";
        if (!isJoined) {
            if (result.length() > 0)
                result.append(u'\n');
            if (line.quotes > 0)
                result.append(line.quotes, u'>').append(u' ');
        }
        before = line;
        if (line.goesOn && deletesSpace)
            line.text.remove_suffix(1);
        result.append(line.text);
    }
    return result.append(u'\n').string();
}

}  // namespace digest

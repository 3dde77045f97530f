#include <mail/MimeTree.h>

#include <algorithm>
#include <array>

#include <mail/HeaderText.h>
#include <mail/MimeField.h>
#include <mail/TransferEncoding.h>

namespace digest {

namespace {

constexpr unsigned deepest = 32;
constexpr std::size_t mostProblems = 5;

/// What the header of a part says, as far as it matters here.
struct PartHeader {
    std::string contentType, encoding, disposition;
};

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

bool isField(std::string_view line) {
    const std::size_t colon = line.find(':');
    return colon != line.npos && colon > 0 &&
           std::ranges::all_of(line.substr(0, colon), [](char c) { return c > ' ' && c < 127; });
}

// Takes a header off the front of the text, and the empty line behind it. A line that belongs to no field begins the
// content.
PartHeader takeHeader(std::string_view& text) {
    PartHeader header;
    std::string ignored;
    std::string* field = nullptr;
    while (!text.empty()) {
        std::string_view rest = text;
        const std::string_view line = takeLine(rest);
        const bool goesOn = field && !line.empty() && isSpace(line.front());
        if (!line.empty() && !goesOn && !isField(line))
            return header;
        text = rest;
        if (line.empty())
            return header;
        if (goesOn) {
            *field += line;
            continue;
        }
        const std::string_view name = line.substr(0, line.find(':'));
        field = equalIgnoringCase(name, "Content-Type")                ? &header.contentType
                : equalIgnoringCase(name, "Content-Transfer-Encoding") ? &header.encoding
                : equalIgnoringCase(name, "Content-Disposition")       ? &header.disposition
                                                                       : &ignored;
        *field = line.substr(name.size() + 1);
    }
    return header;
}

// A type that is missing or no type means the default.
MimePart partOf(const PartHeader& header, std::string_view defaultType) {
    const MimeField type(header.contentType);
    MimePart part;
    part.type = type.value();
    if (std::ranges::count(part.type, '/') != 1)
        part.type = part.type.empty() ? defaultType : "text/plain";
    part.charset = type.parameter("charset");
    part.boundary = type.parameter("boundary");
    part.boundary.resize(part.boundary.find_last_not_of(" \t") + 1);
    part.isFlowed = equalIgnoringCase(type.parameter("format"), "flowed");
    part.deletesSpace = equalIgnoringCase(type.parameter("delsp"), "yes");
    part.encoding = MimeField(header.encoding).value();
    part.isAttached = MimeField(header.disposition).value() == "attachment";
    return part;
}

bool isMultipart(const MimePart& part) { return part.type.starts_with("multipart/"); }

bool isMessage(const MimePart& part) { return part.type == "message/rfc822" || part.type == "message/global"; }

/// The next line that is the boundary, from a place on.
struct BoundaryLine {
    std::size_t begin = std::string_view::npos;  ///< npos: there is none
    std::size_t end = std::string_view::npos;    ///< behind its line end
    bool isLast = false;
};

BoundaryLine nextBoundary(std::string_view text, std::string_view boundary, std::size_t from) {
    for (std::string_view rest = text.substr(from); !rest.empty();) {
        const std::size_t begin = text.size() - rest.size();
        std::string_view tail = takeLine(rest);
        if (!tail.starts_with(boundary))
            continue;
        tail.remove_prefix(boundary.size());
        const bool isLast = tail.starts_with("--");
        tail.remove_prefix(isLast ? 2 : 0);
        if (tail.find_first_not_of(" \t\r") == tail.npos)
            return {begin, text.size() - rest.size(), isLast};
    }
    return {};
}

std::string_view withoutLastLineEnd(std::string_view text) {
    if (text.ends_with('\n'))
        text.remove_suffix(1);
    return text;
}

// How good a part is as the text of a message; 0 where it is none.
int rankOf(const MimePart& part) {
    static constexpr std::array<std::string_view, 4> rising{"text/html", "text/richtext", "text/enriched",
                                                            "text/plain"};
    if (part.isAttached || !part.type.starts_with("text/"))
        return 0;
    const auto found = std::ranges::find(rising, part.type);
    return found == rising.end() ? 1 : 2 + static_cast<int>(found - rising.begin());
}

}  // namespace

MimeTree::MimeTree(const RawMessage& message) : isCut_(message.bodyIsCut) {
    const auto field = [&](std::string_view name) { return std::string(message.field(name).value_or("")); };
    MimePart root = partOf({field("Content-Type"), field("Content-Transfer-Encoding"), {}}, "text/plain");
    root.content = message.body;
    add(std::move(root));
    while (!found_.empty()) {
        Found next = found_.back();
        found_.pop_back();
        const bool isInDigest = parts_[next.parent].type == "multipart/digest";
        MimePart part = partOf(takeHeader(next.text), isInDigest ? "message/rfc822" : "text/plain");
        part.parent = next.parent;
        part.depth = next.depth;
        part.content = next.text;
        add(std::move(part));
    }
}

void MimeTree::add(MimePart part) {
    parts_.push_back(std::move(part));
    MimePart& added = parts_.back();
    const bool holdsOthers = isMultipart(added) || isMessage(added);
    if (holdsOthers && added.depth == deepest) {
        noteProblem("parts within parts, too deep");
        added.type = "text/plain";
    } else if (isMessage(added)) {
        addMessageIn(parts_.size() - 1);
    } else if (isMultipart(added) && !addPartsOf(parts_.size() - 1)) {
        if (!isCut_)
            noteProblem(added.type + " without a part");
        added.type = "text/plain";
    }
}

// The line end before a boundary belongs to it.
bool MimeTree::addPartsOf(std::size_t multipart) {
    const std::string_view content = parts_[multipart].content;
    const std::string boundary = "--" + parts_[multipart].boundary;
    BoundaryLine line;
    if (boundary.size() > 2)
        line = nextBoundary(content, boundary, 0);
    if (line.begin == content.npos)
        return false;
    const std::size_t before = found_.size();
    while (!line.isLast && line.begin != content.npos) {
        const BoundaryLine next = nextBoundary(content, boundary, line.end);
        const std::string_view text = content.substr(line.end, next.begin - line.end);
        found_.push_back(
            {multipart, parts_[multipart].depth + 1, next.begin == content.npos ? text : withoutLastLineEnd(text)});
        line = next;
    }
    if (!line.isLast && !isCut_)
        noteProblem(parts_[multipart].type + " is not closed");
    std::reverse(found_.begin() + static_cast<std::ptrdiff_t>(before), found_.end());
    return true;
}

void MimeTree::addMessageIn(std::size_t part) {
    const MimePart& outer = parts_[part];
    std::string_view text = outer.content;
    if (outer.encoding == "base64" || outer.encoding == "quoted-printable")
        text = decoded_.emplace_back(transferDecoded(text, outer.encoding).bytes);
    found_.push_back({part, outer.depth + 1, text});
}

void MimeTree::noteProblem(std::string problem) {
    if (problems_.size() < mostProblems && std::ranges::find(problems_, problem) == problems_.end())
        problems_.push_back(std::move(problem));
}

std::vector<std::size_t> MimeTree::shownTexts() const {
    std::vector<int> ranks(parts_.size());  // of a part that holds others: that of the best of them
    std::vector<std::size_t> best(parts_.size(), MimePart::none);
    for (std::size_t i = parts_.size(); i-- > 0;) {
        ranks[i] = parts_[i].isAttached ? 0 : std::max(ranks[i], rankOf(parts_[i]));
        if (const std::size_t parent = parts_[i].parent; parent != MimePart::none && ranks[i] > ranks[parent]) {
            ranks[parent] = ranks[i];
            best[parent] = i;
        }
    }
    std::vector<bool> isShown(parts_.size());
    std::vector<std::size_t> texts;
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        const std::size_t parent = parts_[i].parent;
        const bool isChosen =
            parent == MimePart::none ||
            (isShown[parent] && (parts_[parent].type != "multipart/alternative" || best[parent] == i));
        isShown[i] = isChosen && ranks[i] > 0;
        if (isShown[i] && best[i] == MimePart::none)
            texts.push_back(i);
    }
    return texts;
}

}  // namespace digest

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace digest {

/// The value of a header field of MIME, "text/plain; charset=utf-8".
class MimeField {
public:
    /// Reads the forms of RFC 2045 and RFC 2231, and what mail programs make of them: missing quotes, blanks around
    /// "=", stray ";".
    explicit MimeField(std::string_view field = {});

    /// In small letters, without comments; may be empty.
    const std::string& value() const noexcept { return value_; }

    /// The value of a parameter, named in small letters; empty where it is missing. One that comes in pieces
    /// (name*0, name*1) is put together, and "%E4" becomes a byte.
    std::string parameter(std::string_view name) const;

private:
    struct Piece {
        std::string name;  // in small letters
        unsigned place;    // among the pieces of a value
        bool isEncoded;    // "%E4" is a byte; the first piece begins with "charset'language'"
        std::string value;
    };

    void readParameter(std::string_view& rest);

    std::string value_;
    std::vector<Piece> pieces_;  // in order
};

}  // namespace digest

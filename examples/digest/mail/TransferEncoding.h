#pragma once

#include <string>
#include <string_view>

namespace digest {

/// Bytes as they were before they were encoded for the way.
struct TransferDecoded {
    std::string bytes;
    bool isDamaged = false;  ///< something was not as it should be; as much as could be made of it is there
};

/// Base64. Characters that do not belong there are skipped. What follows the end, as the footer of a mailing list does,
/// comes behind the bytes as it stands, and so does all where most of it is no base64.
TransferDecoded decodedBase64(std::string_view text);

/// Quoted-printable, of a body: "=" at the end of a line joins it to the next one, white space at the end of a line
/// goes away. An "=" without two digits stays.
TransferDecoded decodedQuotedPrintable(std::string_view text);

/// By the name of the encoding, in any case; "7bit", "8bit", "binary" and unknown ones give the text as it stands.
TransferDecoded transferDecoded(std::string_view text, std::string_view encoding);

/// The value of a hexadecimal digit; -1 where it is none.
constexpr int hexDigit(char c) noexcept {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

}  // namespace digest

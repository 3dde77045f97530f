#pragma once

#include <optional>
#include <string_view>

#include <ToviFoundationKit/Foundation/NSStringEncoding.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

struct UConverter;

namespace tovi::detail {

struct EncodingRow;

/// Makes text of bytes that come piece by piece, cut anywhere. (Exported for the library's own tests.)
class TOVI_EXPORT TextDecoder {
public:
    enum class OnInvalid : bool { Fail, Replace };

    /// An encoding that is not known fails at once, or is read as ASCII.
    explicit TextDecoder(NSStringEncoding encoding, OnInvalid onInvalid = OnInvalid::Fail);
    ~TextDecoder();
    TextDecoder(const TextDecoder&) = delete;
    TextDecoder& operator=(const TextDecoder&) = delete;

    /// Appends the text of the bytes so far, always to the same builder; false when one of them is not valid, unless
    /// that is replaced.
    bool append(StringBuilder& to, std::string_view bytes);
    /// Says that there are no more bytes.
    bool finish(StringBuilder& to);

    /// How many sequences were not valid.
    NSUInteger invalidCount() const noexcept { return invalid_; }

private:
    static constexpr std::size_t longestUnfinished = 8;

    bool isValid() const noexcept { return invalid_ == 0 || onInvalid_ == OnInvalid::Replace; }
    void take(StringBuilder& to, std::string_view bytes);
    std::size_t read(StringBuilder& to, std::string_view bytes, bool last);
    void readASCII(StringBuilder& to, std::string_view bytes);
    std::size_t readUTF8(StringBuilder& to, std::string_view bytes, bool last);
    std::size_t readUTF16(StringBuilder& to, std::string_view bytes, bool last);
    std::size_t readUTF32(StringBuilder& to, std::string_view bytes, bool last);
    std::size_t readNonLossyASCII(StringBuilder& to, std::string_view bytes, bool last);
    void readSingleByte(StringBuilder& to, std::string_view bytes);
    void readMultiByte(StringBuilder& to, std::string_view bytes, bool last);
    void replaceLoneSurrogates(StringBuilder& to, NSUInteger start, bool last);
    void appendInvalid(StringBuilder& to);

    const EncodingRow* row_;
    OnInvalid onInvalid_;
    std::optional<bool> isSwapped_;  ///< the order of the bytes, once it is known
    bool endsInLead_ = false;        ///< what was appended, waiting for its partner
    std::size_t unfinishedLength_ = 0;
    char unfinished_[longestUnfinished];
    UConverter* converter_ = nullptr;
    NSUInteger invalid_ = 0;
};

}  // namespace tovi::detail

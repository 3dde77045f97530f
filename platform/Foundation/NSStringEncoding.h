#pragma once

#include <ToviFoundationKit/Runtime/NSTypes.h>

namespace tovi {

/// How bytes stand for text. Of the many encodings that are known (NSString::availableStringEncodings), those in daily
/// use have names here; any other is 0x80000000 | its character set identifier: see CFStringEncoding.h.
///
/// In all encodings but those of ISO 2022, every character of ASCII, NUL and the other control characters included, is
/// kept. Surrogates without partner can be written in NSUnicodeStringEncoding and NSNonLossyASCIIStringEncoding only,
/// and read in no other.
enum NSStringEncoding : NSUInteger {
    NSASCIIStringEncoding = 1,
    NSJapaneseEUCStringEncoding = 3,
    NSUTF8StringEncoding = 4,
    NSISOLatin1StringEncoding = 5,
    /// ASCII in which `\` is doubled and all else escaped: a backslash and three octal digits below U+0100, a
    /// backslash, "u" and four hexadecimal digits for other code units.
    NSNonLossyASCIIStringEncoding = 7,
    NSShiftJISStringEncoding = 8,
    NSISOLatin2StringEncoding = 9,
    /// UTF-16 in the order of the machine, led by a byte-order mark. Read, such a mark decides the order and is
    /// dropped.
    NSUnicodeStringEncoding = 10,
    NSWindowsCP1251StringEncoding = 11,
    NSWindowsCP1252StringEncoding = 12,
    NSWindowsCP1253StringEncoding = 13,
    NSWindowsCP1254StringEncoding = 14,
    NSWindowsCP1250StringEncoding = 15,
    NSISO2022JPStringEncoding = 21,

    NSUTF16StringEncoding = NSUnicodeStringEncoding,
    // In a stated order no mark is written, and none is looked for.
    NSUTF16BigEndianStringEncoding = 0x90000100,
    NSUTF16LittleEndianStringEncoding = 0x94000100,
    NSUTF32StringEncoding = 0x8C000100,  ///< with a byte-order mark, as NSUnicodeStringEncoding
    NSUTF32BigEndianStringEncoding = 0x98000100,
    NSUTF32LittleEndianStringEncoding = 0x9C000100,
};

}  // namespace tovi

#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

namespace digest {

// How the report words things.

/// "1 message", "5 messages"; the plural is the word and an s where none is given.
tovi::Ref<tovi::NSString> counted(tovi::NSUInteger count, std::u16string_view word, std::u16string_view plural = {});

tovi::Ref<tovi::NSString> sizeText(tovi::NSUInteger bytes);  ///< "812 B", "41 kB", "1.2 MB"

/// "2020-03-03" and "2020-03-03 10:00", in the default time zone; "no date" for nil.
tovi::Ref<tovi::NSString> dayText(const tovi::NSDate* date);
tovi::Ref<tovi::NSString> minuteText(const tovi::NSDate* date);

/// The day as people here call it: "Today", "Yesterday", "March 3, 2020"; "no date" for nil.
tovi::Ref<tovi::NSString> relativeDayText(const tovi::NSDate* date);
/// The date of "2020-03-03" or "2020-03-03 10:00", in the default time zone; nil for anything else.
tovi::RefPtr<tovi::NSDate> dateOfText(const tovi::NSString& text);

tovi::Ref<tovi::NSString> subjectText(const tovi::NSString& subject);  ///< "(no subject)" for an empty one

}  // namespace digest

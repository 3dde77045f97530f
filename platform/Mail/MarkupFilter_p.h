#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <gmime/gmime.h>

#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

enum class MailMarkup { enriched, richText };

/// GMime's filter from mail text to HTML, fed piece by piece with commands that it knows.
///
/// The filter is made for well-formed mail. It loses a special character at the end of what it is given and whatever
/// its output has no room for, and hangs at some commands that are not closed. So each piece here ends with a command
/// that stands for nothing, is short, and finds room for the longest HTML that can come of it.
class MarkupFilter {
public:
    explicit MarkupFilter(MailMarkup markup);
    MarkupFilter(const MarkupFilter&) = delete;
    MarkupFilter& operator=(const MarkupFilter&) = delete;

    /// Text without "<", line ends and NUL, none of which the filter would keep.
    void addText(std::u16string_view text);
    /// Commands, "<<" and line ends, as they shall reach the filter. In UTF-8.
    void addMarkup(std::string_view markup);

    Ref<NSString> html();

private:
    void run();

    struct Release {
        void operator()(GMimeFilter* filter) const { g_object_unref(filter); }
    };
    std::unique_ptr<GMimeFilter, Release> filter_;
    std::string waiting_;
    StringBuilder html_;
};

}  // namespace tovi

#include <sections/MessageRow.h>

#include <algorithm>

#include <Wording.h>

using namespace tovi;

namespace digest {

void printMessageRow(Page& page, const Message& message, const NSString& when, std::u16string_view lead) {
    page.row({{when, 16, Align::left, lead},
              {message.notes()->count() > 0 ? u"!" : u"", 1},
              {message.sender()->name()->view(), std::clamp(page.columns() / 4, 10, 24)},
              {subjectText(message.subject())->view()}});
}

}  // namespace digest

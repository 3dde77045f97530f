#include <sections/MessageRow.h>

#include <algorithm>

#include <Wording.h>

using namespace tovi;

namespace digest {

void printMessageRow(Page& page, const Message& message) {
    const auto date =
        NSString::stringWithFormat(u"%-16@%s", minuteText(message.date()), message.notes()->count() > 0 ? " !" : "");
    page.row({{date->view(), 18},
              {message.sender()->name()->view(), std::clamp(page.columns() / 4, 10, 24)},
              {subjectText(message.subject())->view()}});
}

}  // namespace digest

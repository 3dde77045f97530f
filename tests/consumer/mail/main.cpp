#include <iostream>

#include <ToviFoundationKit/Mail/MailText.h>
#include <ToviFoundationKit/ToviFoundationKit.h>

int main() { std::cout << *tovi::qvlHtmlStringFromMimeEnrichedString(*tovi::box(u"<bold>3,\ntwo,\n1")) << '\n'; }

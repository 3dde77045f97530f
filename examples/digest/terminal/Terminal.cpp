#include <terminal/Terminal.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace digest {

namespace {

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

Terminal Terminal::of(int descriptor) {
    Terminal terminal;
    terminal.isTerminal = ::isatty(descriptor) == 1;
    if (!terminal.isTerminal)
        return terminal;
    winsize size{};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        terminal.columns = size.ws_col;
    const std::string_view kind = environment("TERM");
    terminal.hasStyles = !kind.empty() && kind != "dumb" && environment("NO_COLOR").empty();
    return terminal;
}

}  // namespace digest

#include <ToviFoundationKit/Runtime/Assertion.h>

#include <cstdio>
#include <cstdlib>

namespace tovi {

void assertionFailed(const char* function, const char* unit, int line, const char* expression) {
    std::fprintf(stderr, "Assertion failed: (%s), function %s, file %s, line %d.\n", expression, function, unit, line);
    std::abort();
}

}  // namespace tovi

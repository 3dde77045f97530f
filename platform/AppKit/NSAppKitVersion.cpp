#include <ToviFoundationKit/AppKit/NSAppKitVersion.h>

// Weak, so that no compiler takes this value for the only one, however much of the program it sees at once.
extern "C" __attribute__((weak)) const double NSAppKitVersionNumber = 2022.0;

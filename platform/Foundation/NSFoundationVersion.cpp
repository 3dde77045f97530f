#include <ToviFoundationKit/Foundation/NSFoundationVersion.h>

// Weak, so that no compiler takes this value for the only one, however much of the program it sees at once.
extern "C" __attribute__((weak)) const double NSFoundationVersionNumber = 2022.0;

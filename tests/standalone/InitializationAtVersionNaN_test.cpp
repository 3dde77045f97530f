#include <standalone/Initialization.h>

#include <limits>

INITIALIZATION_TESTS(InitializationAtVersionNaN, std::numeric_limits<double>::quiet_NaN(), false)

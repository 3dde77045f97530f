#include <standalone/Initialization.h>

INITIALIZATION_TESTS(InitializationAtVersion825, 825.0, false)

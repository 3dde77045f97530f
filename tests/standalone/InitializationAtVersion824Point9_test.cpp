#include <standalone/Initialization.h>

INITIALIZATION_TESTS(InitializationAtVersion824Point9, 824.9, true)

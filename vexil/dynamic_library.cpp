#include "vexil/dynamic_library.h"

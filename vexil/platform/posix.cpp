#include "vexil/platform/platform.h"

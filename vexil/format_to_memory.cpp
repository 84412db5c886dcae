#include "vexil/format_to_memory.h"

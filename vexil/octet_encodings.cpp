#include "vexil/unicode_strings.h"

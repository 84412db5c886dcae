#include "vexil/json/decimal_conversion.h"

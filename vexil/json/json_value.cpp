#include "vexil/json/json_value.h"

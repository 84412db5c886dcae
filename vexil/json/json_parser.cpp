#include "vexil/json/json_parser.h"

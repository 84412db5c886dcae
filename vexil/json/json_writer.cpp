#include "vexil/json/json_writer.h"

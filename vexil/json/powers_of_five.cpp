#include "vexil/json/powers_of_five.h"

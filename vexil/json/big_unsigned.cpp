#include "vexil/json/big_unsigned.h"

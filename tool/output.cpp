#include "tool/output.h"

#include "tool/name_value_list.h"

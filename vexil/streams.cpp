#include "vexil/streams.h"

#include "vexil/json/json_tokenizer.h"

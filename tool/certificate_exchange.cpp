#include "tool/certificate_exchange.h"

// SPDX-License-Identifier: MIT
#include "plugins/common/library_memory.h"

namespace plugins {

void recordFailedAllocations() {
}

void requireMemory() {
}

} // namespace plugins

// SPDX-License-Identifier: MIT
#pragma once

#include <link.h>

namespace vexil::platform {

/// Returns whether the module itself defines the dynamic symbol, of any kind and binding. The
/// modules that it needs do not count; dlsym() searches them as well.
[[nodiscard]] bool definesSymbol(const link_map& aModule, const char* aName);

} // namespace vexil::platform

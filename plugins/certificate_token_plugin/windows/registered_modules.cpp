// SPDX-License-Identifier: MIT
#include "plugins/certificate_token_plugin/modules.h"
#include "plugins/common/failure.h"

namespace plugins {

Modules Modules::loadRegistered(const std::optional<std::string>&) {
    throw Failure(ErrorCode::InvalidRequest,
                  "member \"module\" is missing: Windows has no registered modules");
}

} // namespace plugins

// SPDX-License-Identifier: MIT
#pragma once

#include "token_request.h"

#include "plugins/common/members.h"

namespace plugins {

/// Returns the answer to the request: searches all tokens that it selects, first without a login.
/// Logs in only if a PIN is given, exactly one token may hide certificates, and no visible
/// certificate matches or all are asked for. Throws Failure.
Members searchTokens(const TokenRequest& aRequest);

} // namespace plugins

// SPDX-License-Identifier: MIT
#pragma once

#include "failure.h"
#include "members.h"
#include "request.h"

#include <certbridge/plugin.h>

#include <cstdint>
#include <string>

namespace plugins {

/// A plugin of type 1 in which only answer() remains to be written.
class ReplyingPlugin : public Plugin {
public:
    std::int32_t getPluginType() final;

    /// Calls answer() and keeps the reply until the next call. No exception leaves it: a Failure
    /// becomes an error list, std::bad_alloc one with InternalError and "out of memory", any other
    /// exception one with InternalError and its message.
    void getCertificate(const char* aRequest, const char** aResponse, const char** aError) final;

protected:
    ReplyingPlugin() = default;
    ~ReplyingPlugin() = default;

    /// Returns the answer to @p aRequest, or throws a Failure.
    virtual Members answer(Request& aRequest) = 0;

private:
    const char* keepError(ErrorCode aCode, const char* aMessage) noexcept;

    std::string mReply;
};

} // namespace plugins

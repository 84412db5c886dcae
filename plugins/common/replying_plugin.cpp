// SPDX-License-Identifier: MIT
#include "replying_plugin.h"

#include "certbridge/name_value_list.h"
#include "vexil/json/json_writer.h"

#include <exception>
#include <new>

namespace plugins {

namespace {

// A literal, so that no memory is needed to report that there is none.
constexpr const char* outOfMemoryReply = R"({"error":[{"name":"errorCode","value":6},)"
                                         R"({"name":"erroMessage","value":"out of memory"}]})";
static_assert(static_cast<std::int32_t>(ErrorCode::InternalError) == 6);

std::string replyText(const char* aListName, Members aMembers) {
    ValueHolder list = aMembers.takeList();
    ValueHolder document(vexil::JsonValue::createObject());
    appendMember(document, aListName, list);
    return vexil::writeJsonText(*document);
}

} // namespace

std::int32_t ReplyingPlugin::getPluginType() {
    return 1;
}

void ReplyingPlugin::getCertificate(const char* aRequest, const char** aResponse,
                                    const char** aError) {
    try {
        Request request(aRequest);
        mReply = replyText("response", answer(request));
        *aResponse = mReply.c_str();
    } catch (const Failure& failure) {
        *aError = keepError(failure.getCode(), failure.what());
    } catch (const std::bad_alloc&) {
        *aError = outOfMemoryReply;
    } catch (const std::exception& exception) {
        *aError = keepError(ErrorCode::InternalError, exception.what());
    }
}

const char* ReplyingPlugin::keepError(ErrorCode aCode, const char* aMessage) noexcept {
    try {
        Members members;
        members.addInteger("errorCode", static_cast<std::int32_t>(aCode));
        members.addText("erroMessage", aMessage); // sic, as the contract spells it
        mReply = replyText("error", std::move(members));
        return mReply.c_str();
    } catch (const std::exception&) {
        return outOfMemoryReply;
    }
}

} // namespace plugins

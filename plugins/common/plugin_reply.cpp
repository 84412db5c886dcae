#include "plugin_reply.h"

#include <new>
#include <utility>

using nlohmann::json;

namespace plugins {

namespace {

// Needs no memory, so that running out of it can be told.
constexpr const char* outOfMemoryReply = R"({"error":[{"name":"errorCode","value":6},)"
                                         R"({"name":"erroMessage","value":"out of memory"}]})";
static_assert(static_cast<std::int32_t>(ErrorCode::InternalError) == 6);

std::string replyText(const char* aListName, const Response& aList) {
    json document;
    document[aListName] = aList.getElements();
    // Certificates hold whatever bytes their issuer put there; a reply must be valid UTF-8.
    return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string errorText(ErrorCode aCode, const char* aMessage) {
    Response list;
    list.add("errorCode", static_cast<std::int32_t>(aCode));
    list.add("erroMessage", aMessage); // the contract spells it so
    return replyText("error", list);
}

} // namespace

Failure::Failure(ErrorCode aCode, const std::string& aMessage)
    : std::runtime_error(aMessage), mCode(aCode) {
}

Request::Request(const char* aRequest) : mDocument(json::parse(aRequest, nullptr, false)) {
    const auto list = mDocument.find("request");
    if (list == mDocument.end() || !list->is_array()) {
        throw Failure(ErrorCode::InvalidRequest, "the request is not a JSON name/value list");
    }
}

std::optional<std::string> Request::findText(std::string_view aName) const {
    for (const auto& element : mDocument.at("request")) {
        if (element.at("name").get_ref<const std::string&>() != aName) continue;
        const auto& value = element.at("value");
        const auto name = '"' + std::string(aName) + '"';
        if (!value.is_string()) {
            throw Failure(ErrorCode::InvalidRequest, "member " + name + " must be a string");
        }
        auto text = value.get<std::string>();
        if (text.find('\0') != std::string::npos) {
            throw Failure(ErrorCode::InvalidRequest,
                          "member " + name + " must not hold a NUL character");
        }
        return text;
    }
    return std::nullopt;
}

std::string Request::getText(std::string_view aName) const {
    auto text = findText(aName);
    if (!text) {
        throw Failure(ErrorCode::InvalidRequest,
                      "member \"" + std::string(aName) + "\" is missing");
    }
    return *std::move(text);
}

void Response::add(std::string_view aName, json aValue) {
    mElements.push_back({{"name", aName}, {"value", std::move(aValue)}});
}

std::int32_t ReplyingPlugin::getPluginType() {
    return 1;
}

void ReplyingPlugin::getCertificate(const char* aRequest, const char** aResponse,
                                    const char** aError) {
    try {
        mReply = replyText("response", answer(Request(aRequest)));
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
        mReply = errorText(aCode, aMessage);
        return mReply.c_str();
    } catch (const std::exception&) {
        return outOfMemoryReply;
    }
}

} // namespace plugins

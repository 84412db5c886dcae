// SPDX-License-Identifier: MIT

// Plugin template in C++: answers with the certificate in the PEM file that the member "file" of
// the request names. Replace answer() and the error codes; the code that follows answer() can stay.
#include "vexil/json/json_parser.h"
#include "vexil/json/json_value.h"
#include "vexil/json/json_writer.h"
#include "vexil/streams.h"
#include <certbridge/plugin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

using vexil::JsonType;
using vexil::JsonValue;

namespace {

// Callers make decisions by these numbers: once published, a number keeps its meaning.
enum class ErrorCode : std::int32_t {
    InvalidRequest = 1, // "file" is missing or not a file name
    NotReadable = 2,    // the file cannot be opened or read, or is too large
    NoCertificate = 3,  // the file contains no certificate in PEM form
    Internal = 4,
};

// Thrown anywhere inside getCertificate(); becomes the plugin's error reply.
class Failure : public std::runtime_error {
public:
    Failure(ErrorCode aCode, const std::string& aMessage)
        : std::runtime_error(aMessage), mCode(aCode) {}
    ErrorCode getCode() const { return mCode; }

private:
    ErrorCode mCode;
};

// ---- Values. A holder owns a value until it is appended; then the container owns it.

using Value = std::unique_ptr<JsonValue>;

Value makeText(const std::string& aText) {
    return Value(JsonValue::createString(aText));
}

void addMember(JsonValue& aObject, const char* aName, Value aValue) {
    Value name = makeText(aName);
    aObject.appendNameAndValue(name.get(), aValue.get());
    (void)name.release();
    (void)aValue.release();
}

void addElement(JsonValue& aList, const char* aName, Value aValue) {
    Value element(JsonValue::createObject());
    addMember(*element, "name", makeText(aName));
    addMember(*element, "value", std::move(aValue));
    aList.appendValue(element.get());
    (void)element.release();
}

// ---- The request: a list of elements with "name" and "value"

// Returns the text of the first element with this name; empty if there is none or its value is not
// a string.
std::string getText(const JsonValue& aRequest, const char* aName) {
    for (std::uint32_t index = 0; index < aRequest.getSize(); ++index) {
        const JsonValue& element = *aRequest.getValueAt(index);
        if (element.findFirst("name")->getString() != aName) continue;
        const JsonValue& value = *element.findFirst("value");
        return value.getType() == JsonType::String ? value.getString() : "";
    }
    return "";
}

// ---- The task of this plugin

constexpr std::int32_t maxFileSize = 32768;

std::string readFile(const std::string& aName) {
    // A NUL would truncate the name, and another file would be opened.
    if (aName.empty() || aName.find('\0') != std::string::npos) {
        throw Failure(ErrorCode::InvalidRequest, "member \"file\" must be a file name");
    }
    // The conversion through u8string makes Windows interpret the name as UTF-8.
    const std::filesystem::path path(std::u8string(aName.begin(), aName.end()));
    std::ifstream file(path, std::ios::binary);
    std::string text(maxFileSize, '\0');
    file.read(text.data(), maxFileSize);
    // Otherwise an error has occurred, or the file is larger than the limit.
    if (!file.eof()) throw Failure(ErrorCode::NotReadable, aName + ": cannot be read");
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

bool isPlainText(const std::string& aText) {
    return std::all_of(aText.begin(), aText.end(), [](char c) { return c >= 0 && c < 0x7F; });
}

std::string readCertificate(const std::string& aFileName) {
    const std::string text = readFile(aFileName);
    const std::string endLine = "-----END CERTIFICATE-----";
    const auto begin = text.find("-----BEGIN CERTIFICATE-----");
    const auto end = text.find(endLine, begin == std::string::npos ? text.size() : begin);
    if (end != std::string::npos) {
        std::string certificate = text.substr(begin, end + endLine.size() - begin);
        // The writer refuses invalid UTF-8: check all external bytes before they reach it.
        if (isPlainText(certificate)) return certificate;
    }
    throw Failure(ErrorCode::NoCertificate, aFileName + ": holds no certificate in PEM form");
}

// Returns the list of the response, or throws a Failure.
Value answer(const JsonValue& aRequest) {
    const std::string fileName = getText(aRequest, "file");
    Value list(JsonValue::createArray());
    addElement(*list, "file", makeText(fileName));
    addElement(*list, "pem", makeText(readCertificate(fileName)));
    return list;
}

// ---- The reply

std::string writeReply(const char* aListName, Value aList) {
    Value reply(JsonValue::createObject());
    addMember(*reply, aListName, std::move(aList));
    std::string text;
    vexil::StringOutputStream stream(&text);
    vexil::JsonWriter(stream, 0).write(*reply);
    return text;
}

std::string writeError(const Failure& aFailure) {
    Value list(JsonValue::createArray());
    const auto code = static_cast<std::int32_t>(aFailure.getCode());
    addElement(*list, "errorCode", Value(JsonValue::createInteger(code)));
    addElement(*list, "erroMessage", makeText(aFailure.what())); // sic
    return writeReply("error", std::move(list));
}

// A constant, since it also reports that memory has run out.
constexpr const char* internalError = R"({"error":[{"name":"errorCode","value":4},)"
                                      R"({"name":"erroMessage","value":"internal failure"}]})";
static_assert(static_cast<std::int32_t>(ErrorCode::Internal) == 4);

// ---- The contract

class MyPlugin final : public Plugin {
public:
    std::int32_t getPluginType() override { return 1; }

    // No exception may escape.
    void getCertificate(const char* aRequest, const char** aResponse,
                        const char** aError) override {
        try {
            const bool isResponse = makeReply(aRequest);
            *(isResponse ? aResponse : aError) = mReply.c_str();
        } catch (...) {
            *aError = internalError;
        }
    }

private:
    // Returns whether the reply is a response.
    bool makeReply(const char* aRequest) {
        try {
            const vexil::ByteRange text(aRequest, std::strlen(aRequest));
            const Value request = vexil::parseJsonText(text);
            mReply = writeReply("response", answer(*request->findFirst("request")));
            return true;
        } catch (const Failure& failure) {
            mReply = writeError(failure);
            return false;
        }
    }

    std::string mReply; // certbridge reads it right after the call
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static MyPlugin plugin;
    return &plugin;
}

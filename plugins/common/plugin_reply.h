#pragma once

#include <certbridge/plugin.h>

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

// What the example plugins share: reading a request, answering it, reporting failures. Nothing
// here knows where certificates come from.
namespace plugins {

/// The values of "errorCode". Message texts may improve; these numbers stay.
enum class ErrorCode : std::int32_t {
    InvalidRequest = 1,     ///< a member is missing, or it is not what it must be
    NotFound = 2,           ///< there is nothing of that name
    NotReadable = 3,        ///< it is there, but cannot be read: no permission, a folder, too large
    InvalidCertificate = 4, ///< it was read, but it holds no certificate or a damaged one
    WrongPassword = 5,      ///< the password does not open it
    InternalError = 6,      ///< memory has run out, or the cryptographic library failed
};

/// A failure for the caller: its number, and as what() the text of "erroMessage", which says what
/// was wrong with which thing.
class Failure : public std::runtime_error {
public:
    Failure(ErrorCode aCode, const std::string& aMessage);
    ErrorCode getCode() const { return mCode; }

private:
    ErrorCode mCode;
};

/// The members of one request.
class Request {
public:
    /// Parses @p aRequest as getCertificate() gets it. Throws Failure (InvalidRequest) if it is not
    /// an object with a "request" list.
    explicit Request(const char* aRequest);

    /// Returns the text of the first member @p aName. Throws Failure (InvalidRequest) if there is
    /// none, or if it is not a string or holds a NUL, which no system call would let through.
    std::string getText(std::string_view aName) const;

    /// The same, but nothing instead of a failure if there is no such member.
    std::optional<std::string> findText(std::string_view aName) const;

private:
    nlohmann::json mDocument;
};

/// The elements of one answer, in the order in which the caller will see them.
class Response {
public:
    void add(std::string_view aName, nlohmann::json aValue);

    /// Returns the list as JSON, an array of name/value elements.
    const nlohmann::json& getElements() const { return mElements; }

private:
    nlohmann::json mElements = nlohmann::json::array();
};

/// A plugin of type 1 that leaves only answer() to be written.
class ReplyingPlugin : public Plugin {
public:
    std::int32_t getPluginType() final;

    /// Calls answer() and keeps the reply until the next call. No exception leaves it: a Failure
    /// becomes an error list, any other exception one with InternalError.
    void getCertificate(const char* aRequest, const char** aResponse, const char** aError) final;

protected:
    ReplyingPlugin() = default;
    ~ReplyingPlugin() = default;

    /// Returns the answer to @p aRequest, or throws a Failure. Strings that are not valid UTF-8 may
    /// be put into the answer: what is wrong in them reaches the caller as U+FFFD.
    virtual Response answer(const Request& aRequest) = 0;

private:
    const char* keepError(ErrorCode aCode, const char* aMessage) noexcept;

    std::string mReply;
};

} // namespace plugins

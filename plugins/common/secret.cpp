// SPDX-License-Identifier: MIT
#include "secret.h"

#include "failure.h"
#include "request.h"
#include "source_file.h"

#include <utility>

namespace plugins {

namespace {

constexpr std::size_t maximumSecretFileSize = 4096;

// Overwrites a string on destruction.
class Wiper {
public:
    explicit Wiper(std::string& aText) : mText(aText) {}
    ~Wiper() { wipe(mText.data(), mText.capacity()); }
    Wiper(const Wiper&) = delete;
    Wiper& operator=(const Wiper&) = delete;

private:
    std::string& mText;
};

std::string_view withoutLineEnd(std::string_view aLine) {
    if (aLine.ends_with('\n')) aLine.remove_suffix(1);
    if (aLine.ends_with('\r')) aLine.remove_suffix(1);
    return aLine;
}

} // namespace

void wipe(char* aData, std::size_t aSize) noexcept {
    volatile char* const data = aData;
    for (std::size_t i = 0; i < aSize; ++i) data[i] = '\0';
}

Secret::Secret(std::string_view aText) {
    mBytes.reserve(aText.size() + 1);
    mBytes.assign(aText.begin(), aText.end());
    mBytes.push_back('\0');
}

Secret::~Secret() {
    wipe(mBytes.data(), mBytes.size());
}

Secret& Secret::operator=(Secret&& aOther) noexcept {
    std::swap(mBytes, aOther.mBytes);
    return *this;
}

Secret readSecretFile(const std::string& aFileName) {
    auto text = readSourceFile(aFileName, maximumSecretFileSize, FileAccess::OwnerOnly);
    const Wiper wiper(text);
    const auto line = withoutLineEnd(text);
    if (line.empty()) throw Failure(ErrorCode::NotReadable, "is empty");
    if (line.find('\n') != line.npos) {
        throw Failure(ErrorCode::NotReadable, "has more than one line");
    }
    if (line.find('\0') != line.npos) throw Failure(ErrorCode::NotReadable, "contains a NUL");
    return Secret(line);
}

std::optional<Secret> findSecret(Request& aRequest, const char* aName, const char* aFileName) {
    auto secret = aRequest.takeSecret(aName);
    const auto fileName = aRequest.findText(aFileName);
    if (!fileName) return secret;
    if (secret) {
        throw Failure(ErrorCode::InvalidRequest, std::string("members \"") + aName + "\" and \"" +
                                                     aFileName + "\" exclude each other");
    }
    try {
        return readSecretFile(*fileName);
    } catch (const Failure& failure) {
        throw Failure(failure.getCode(), *fileName + ": " + failure.what());
    }
}

} // namespace plugins

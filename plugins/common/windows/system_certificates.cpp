#include "system_certificates.h"

#include <array>
#include <cstdio>

namespace plugins {

std::string errorText(DWORD aNumber) {
    wchar_t* text = nullptr;
    constexpr DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const auto length =
        FormatMessageW(flags, nullptr, aNumber, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const LocalHandle<wchar_t> owner(text);
    std::wstring_view words(text ? text : L"", length);
    while (!words.empty() && (words.back() == L'\r' || words.back() == L'\n')) {
        words.remove_suffix(1);
    }
    std::array<char, 32> number;
    std::snprintf(number.data(), number.size(),
                  aNumber < 0x80000000 ? "error %lu" : "error 0x%08lX", aNumber);
    return words.empty() ? number.data() : toUtf8(words) + " (" + number.data() + ')';
}

std::string toUtf8(std::wstring_view aText) {
    const auto units = static_cast<int>(aText.size());
    const auto convert = [&](char* aDest, int aSize) {
        return WideCharToMultiByte(CP_UTF8, 0, aText.data(), units, aDest, aSize, nullptr, nullptr);
    };
    const int size = units == 0 ? 0 : convert(nullptr, 0);
    std::string text(static_cast<std::size_t>(size), '\0');
    if (size > 0) convert(text.data(), size);
    return text;
}

std::wstring toUtf16(std::string_view aText) {
    const auto bytes = static_cast<int>(aText.size());
    const auto convert = [&](wchar_t* aDest, int aSize) {
        return MultiByteToWideChar(CP_UTF8, 0, aText.data(), bytes, aDest, aSize);
    };
    const int size = bytes == 0 ? 0 : convert(nullptr, 0);
    std::wstring text(static_cast<std::size_t>(size), L'\0');
    if (size > 0) convert(text.data(), size);
    return text;
}

std::string textOf(const CERT_RDN_VALUE_BLOB& aString) {
    std::wstring_view text(reinterpret_cast<const wchar_t*>(aString.pbData),
                           aString.cbData / sizeof(wchar_t));
    // Not every version of the system leaves the terminating zero out of the size.
    if (!text.empty() && text.back() == L'\0') text.remove_suffix(1);
    return toUtf8(text);
}

void failPart(const char* aPart) {
    const auto reason = errorText(GetLastError());
    throw Failure(ErrorCode::InvalidCertificate,
                  std::string("the certificate's ") + aPart + " cannot be decoded: " + reason);
}

} // namespace plugins

// SPDX-License-Identifier: MIT
#include "system_text.h"

#include <array>
#include <cstdio>
#include <memory>
#include <new>

namespace plugins {

namespace {

struct LocalCloser {
    void operator()(wchar_t* aText) const { LocalFree(aText); }
};

} // namespace

std::string errorText(DWORD aNumber) {
    if (aNumber == ERROR_NOT_ENOUGH_MEMORY || aNumber == ERROR_OUTOFMEMORY ||
        aNumber == static_cast<DWORD>(E_OUTOFMEMORY)) {
        throw std::bad_alloc();
    }
    wchar_t* text = nullptr;
    constexpr DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    const auto length =
        FormatMessageW(flags, nullptr, aNumber, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalCloser> owner(text);
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

} // namespace plugins

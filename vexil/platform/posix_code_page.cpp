// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#include <array>
#include <bit>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

namespace vexil::platform {
namespace {

enum class Outcome { Complete, Full, Invalid };

/// Converts from one character set to UTF-16 in the machine's byte order, without a byte order
/// mark.
class Utf16Converter {
public:
    explicit Utf16Converter(const char* aCharacterSet)
        : mHandle(iconv_open(std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE",
                             aCharacterSet)) {}
    ~Utf16Converter() {
        if (isOpen()) iconv_close(mHandle);
    }
    Utf16Converter(const Utf16Converter&) = delete;
    Utf16Converter& operator=(const Utf16Converter&) = delete;

    bool isOpen() const { return mHandle != reinterpret_cast<iconv_t>(std::intptr_t{-1}); }

    // Moves aSource past the bytes converted and aDest past the units written. After Invalid,
    // aSource starts with the bytes that are invalid or cut off.
    Outcome convert(std::string_view& aSource, std::span<std::uint16_t>& aDest) {
        auto* in = const_cast<char*>(aSource.data()); // iconv() only reads it
        auto inLeft = aSource.size();
        auto* out = reinterpret_cast<char*>(aDest.data());
        auto outLeft = aDest.size_bytes();
        constexpr auto failed = std::numeric_limits<std::size_t>::max();

        auto result = iconv(mHandle, &in, &inLeft, &out, &outLeft);
        // Writes a character that a stateful character set has held back.
        if (result != failed) result = iconv(mHandle, nullptr, nullptr, &out, &outLeft);
        const bool isFull = errno == E2BIG;

        aSource.remove_prefix(aSource.size() - inLeft);
        aDest = aDest.last(outLeft / sizeof(std::uint16_t));
        if (result != failed) return Outcome::Complete;
        return isFull ? Outcome::Full : Outcome::Invalid;
    }

private:
    iconv_t mHandle;
};

std::size_t countUnits(Utf16Converter& aConverter, std::string_view aBytes) {
    std::array<std::uint16_t, 4096> block;
    std::size_t count = 0;
    for (;;) {
        std::span<std::uint16_t> rest(block);
        const auto outcome = aConverter.convert(aBytes, rest);
        if (outcome == Outcome::Invalid) return 0;
        count += block.size() - rest.size();
        if (outcome == Outcome::Complete) return count;
    }
}

struct LocaleDeleter {
    using pointer = locale_t;
    void operator()(locale_t aLocale) const { freelocale(aLocale); }
};
using LocaleHolder = std::unique_ptr<locale_t, LocaleDeleter>;

LocaleHolder openLocale(const char* aName) {
    LocaleHolder locale(newlocale(LC_CTYPE_MASK, aName, locale_t{}));
    if (!locale && errno == ENOMEM) throw std::bad_alloc();
    return locale;
}

// The name of the environment's LC_CTYPE locale.
const char* environmentLocaleName() {
    for (const char* const variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const name = std::getenv(variable);
        if (name && *name != '\0') return name;
    }
    return "C";
}

// The character set of the locale, or of "C" if it is not installed; empty if that fails as well.
std::string findCharacterSet(const char* aLocaleName) {
    LocaleHolder locale = openLocale(aLocaleName);
    if (!locale) locale = openLocale("C");
    return locale ? nl_langinfo_l(CODESET, locale.get()) : "";
}

// Remembers the last answer: opening a locale takes longer than converting a short text.
std::string environmentCharacterSet() {
    static std::mutex mutex;
    static std::string localeName;
    static std::string characterSet;
    const std::lock_guard lock(mutex);
    if (const char* const name = environmentLocaleName(); localeName != name) {
        std::string newName = name;
        characterSet = findCharacterSet(name);
        localeName = std::move(newName);
    }
    return characterSet;
}

} // namespace

std::int32_t activeCodePageToUtf16(const char* aBytes, std::int32_t aLen, std::uint16_t* aDest,
                                   std::int32_t aUnits) {
    const auto characterSet = environmentCharacterSet();
    if (characterSet.empty()) return 0;
    Utf16Converter converter(characterSet.c_str());
    if (!converter.isOpen() && errno == ENOMEM) throw std::bad_alloc();
    if (!converter.isOpen()) return 0;

    std::string_view bytes(aBytes, static_cast<std::size_t>(aLen));
    if (!aDest) {
        const auto count = countUnits(converter, bytes);
        const bool fits = count <= std::size_t{std::numeric_limits<std::int32_t>::max()};
        return fits ? static_cast<std::int32_t>(count) : 0;
    }
    std::span<std::uint16_t> rest(aDest, static_cast<std::size_t>(aUnits));
    if (converter.convert(bytes, rest) != Outcome::Complete) return 0;
    return aUnits - static_cast<std::int32_t>(rest.size());
}

} // namespace vexil::platform

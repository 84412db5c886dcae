// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/json_tokenizer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// Lexical rules of JSON text as tables indexed by byte. Private to the JSON library.

namespace vexil {

/// Bits of an entry of characterClasses.
enum CharacterClass : std::uint8_t {
    ClassSpace = 1,      ///< whitespace between tokens
    ClassLetter = 2,     ///< letter of a keyword
    ClassDigit = 4,      ///< decimal digit
    ClassStringStop = 8, ///< must not appear unescaped inside a string
};

constexpr std::array<std::uint8_t, 256> makeCharacterClasses() {
    std::array<std::uint8_t, 256> classes{};
    for (std::size_t c = 0; c < 0x20; ++c) classes[c] = ClassStringStop;
    for (const char c : {'\t', '\n', '\r', ' '}) classes[static_cast<std::size_t>(c)] |= ClassSpace;
    for (std::size_t c = '0'; c <= '9'; ++c) classes[c] = ClassDigit;
    for (std::size_t c = 'a'; c <= 'z'; ++c) classes[c] = ClassLetter;
    classes['"'] = ClassStringStop;
    classes['\\'] = ClassStringStop;
    return classes;
}

constexpr auto characterClasses = makeCharacterClasses();
static_assert(characterClasses['\n'] == (ClassSpace | ClassStringStop));
static_assert(characterClasses['\v'] == ClassStringStop); // not JSON whitespace
static_assert(characterClasses[' '] == ClassSpace);
static_assert(characterClasses['E'] == 0 && characterClasses[0x80] == 0);

/// @p aCharacter is a byte, 0 to 255, or negative at the end of the input, which has no class.
inline bool hasClass(int aCharacter, CharacterClass aClass) {
    return aCharacter >= 0 &&
           (characterClasses[static_cast<std::size_t>(aCharacter)] & aClass) != 0;
}

struct Keyword {
    std::string_view text;
    JsonToken token;
};

constexpr Keyword keywords[] = {
    {"false", JsonToken::False}, {"null", JsonToken::Null}, {"true", JsonToken::True}};

constexpr std::array<std::int8_t, 256> makeHexDigitValues() {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (std::int8_t digit = 0; digit < 16; ++digit) {
        const auto index = static_cast<std::size_t>(digit);
        values[static_cast<std::size_t>("0123456789abcdef"[index])] = digit;
        values[static_cast<std::size_t>("0123456789ABCDEF"[index])] = digit;
    }
    return values;
}

constexpr auto hexDigitValues = makeHexDigitValues();

/// Value of a hexadecimal digit of either case, or -1. @p aCharacter as for hasClass().
inline int hexDigitValue(int aCharacter) {
    return aCharacter < 0 ? -1 : hexDigitValues[static_cast<std::size_t>(aCharacter)];
}

/// An escape of a backslash and one letter, and the byte that it represents.
struct LetterEscape {
    char letter;
    char byte;
};

/// The escapes that are both read and written.
constexpr LetterEscape letterEscapes[] = {{'"', '"'},  {'\\', '\\'}, {'b', '\b'}, {'f', '\f'},
                                          {'n', '\n'}, {'r', '\r'},  {'t', '\t'}};

constexpr std::array<char, 256> makeEscapedBytes() {
    std::array<char, 256> bytes{};
    for (const auto& [letter, byte] : letterEscapes) bytes[static_cast<std::size_t>(letter)] = byte;
    bytes['/'] = '/'; // read, but never written
    return bytes;
}

/// The byte represented by a backslash and the letter at its index; 0 for an unknown escape.
constexpr auto escapedBytes = makeEscapedBytes();

} // namespace vexil

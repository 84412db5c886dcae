// SPDX-License-Identifier: MIT
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

// Bytes examined several at a time. The only code that uses an instruction set: SSE2 where it is
// the baseline, NEON on AArch64, machine words elsewhere. Private to the library.

namespace vexil {

// All variants of ByteBlock have the same operations. A comparison marks the bytes for which it
// holds: a mark is the high bit of a byte, the other bits are unspecified. Hence a block of text
// marks the bytes that are not ASCII. Marks are combined with the bitwise operators.

#if defined(__SSE2__) || defined(_M_X64)

class ByteBlock {
public:
    static constexpr std::size_t size = 16; ///< in bytes
    static constexpr bool isVector = true;  ///< whether the block is more than a machine word

    /// Copies `size` bytes from @p aBytes.
    static ByteBlock load(const void* aBytes) {
        return ByteBlock(_mm_loadu_si128(static_cast<const __m128i*>(aBytes)));
    }
    /// Copies `size` bytes to @p aDest.
    void store(void* aDest) const { _mm_storeu_si128(static_cast<__m128i*>(aDest), mBytes); }

    template <unsigned char byte>
    ByteBlock equals() const {
        return ByteBlock(_mm_cmpeq_epi8(mBytes, all(byte)));
    }
    template <unsigned char byte>
    ByteBlock isAtLeast() const {
        // Saturating arithmetic moves the limit to the high bit.
        if constexpr (byte >= 0x80) {
            return ByteBlock(_mm_subs_epu8(mBytes, all(byte - 0x80)));
        } else {
            return ByteBlock(_mm_adds_epu8(mBytes, all(0x80 - byte)));
        }
    }

    ByteBlock operator|(ByteBlock aB) const { return ByteBlock(_mm_or_si128(mBytes, aB.mBytes)); }
    ByteBlock operator&(ByteBlock aB) const { return ByteBlock(_mm_and_si128(mBytes, aB.mBytes)); }
    ByteBlock operator^(ByteBlock aB) const { return ByteBlock(_mm_xor_si128(mBytes, aB.mBytes)); }
    /// The marks of this block that @p aB does not have.
    ByteBlock without(ByteBlock aB) const { return ByteBlock(_mm_andnot_si128(aB.mBytes, mBytes)); }

    bool hasMark() const { return marks() != 0; }
    /// The number of bytes before the first marked one; `size` if there is none.
    std::size_t countUnmarked() const {
        return static_cast<std::size_t>(std::countr_zero(marks() | 1U << size));
    }

private:
    explicit ByteBlock(__m128i aBytes) : mBytes(aBytes) {}

    static __m128i all(int aByte) { return _mm_set1_epi8(static_cast<char>(aByte)); }
    unsigned marks() const { return static_cast<unsigned>(_mm_movemask_epi8(mBytes)); }

    __m128i mBytes;
};

#elif defined(__aarch64__)

class ByteBlock {
public:
    static constexpr std::size_t size = 16;
    static constexpr bool isVector = true;

    static ByteBlock load(const void* aBytes) {
        return ByteBlock(vld1q_u8(static_cast<const std::uint8_t*>(aBytes)));
    }
    void store(void* aDest) const { vst1q_u8(static_cast<std::uint8_t*>(aDest), mBytes); }

    template <unsigned char byte>
    ByteBlock equals() const {
        return ByteBlock(vceqq_u8(mBytes, vdupq_n_u8(byte)));
    }
    template <unsigned char byte>
    ByteBlock isAtLeast() const {
        return ByteBlock(vcgeq_u8(mBytes, vdupq_n_u8(byte)));
    }

    ByteBlock operator|(ByteBlock aB) const { return ByteBlock(vorrq_u8(mBytes, aB.mBytes)); }
    ByteBlock operator&(ByteBlock aB) const { return ByteBlock(vandq_u8(mBytes, aB.mBytes)); }
    ByteBlock operator^(ByteBlock aB) const { return ByteBlock(veorq_u8(mBytes, aB.mBytes)); }
    ByteBlock without(ByteBlock aB) const { return ByteBlock(vbicq_u8(mBytes, aB.mBytes)); }

    bool hasMark() const { return vmaxvq_u8(mBytes) >= 0x80; }
    std::size_t countUnmarked() const {
        // Marked bytes become all ones; narrowing then keeps four bits of each byte.
        const uint8x16_t marked = vcltzq_s8(vreinterpretq_s8_u8(mBytes));
        const uint8x8_t narrow = vshrn_n_u16(vreinterpretq_u16_u8(marked), 4);
        const std::uint64_t bits = vget_lane_u64(vreinterpret_u64_u8(narrow), 0);
        return static_cast<std::size_t>(std::countr_zero(bits)) / 4;
    }

private:
    explicit ByteBlock(uint8x16_t aBytes) : mBytes(aBytes) {}

    uint8x16_t mBytes;
};

#else

class ByteBlock {
public:
    static constexpr std::size_t size = 8;
    static constexpr bool isVector = false;

    static ByteBlock load(const void* aBytes) {
        std::uint64_t word = 0;
        std::memcpy(&word, aBytes, size);
        return ByteBlock(word);
    }
    void store(void* aDest) const { std::memcpy(aDest, &mBytes, size); }

    template <unsigned char byte>
    ByteBlock equals() const {
        const std::uint64_t difference = mBytes ^ all(byte);
        return ByteBlock(~(((difference & all(0x7F)) + all(0x7F)) | difference));
    }
    template <unsigned char byte>
    ByteBlock isAtLeast() const {
        // The sums stay within their bytes, since the high bits are left out of them.
        const std::uint64_t low = mBytes & all(0x7F);
        if constexpr (byte >= 0x80) {
            return ByteBlock((low + all(0x100 - byte)) & mBytes);
        } else {
            return ByteBlock((low + all(0x80 - byte)) | mBytes);
        }
    }

    ByteBlock operator|(ByteBlock aB) const { return ByteBlock(mBytes | aB.mBytes); }
    ByteBlock operator&(ByteBlock aB) const { return ByteBlock(mBytes & aB.mBytes); }
    ByteBlock operator^(ByteBlock aB) const { return ByteBlock(mBytes ^ aB.mBytes); }
    ByteBlock without(ByteBlock aB) const { return ByteBlock(mBytes & ~aB.mBytes); }

    bool hasMark() const { return marks() != 0; }
    std::size_t countUnmarked() const {
        const int bits = std::endian::native == std::endian::little ? std::countr_zero(marks())
                                                                    : std::countl_zero(marks());
        return static_cast<std::size_t>(bits) / 8;
    }

private:
    explicit ByteBlock(std::uint64_t aBytes) : mBytes(aBytes) {}

    static constexpr std::uint64_t all(std::uint64_t aByte) { return aByte * 0x0101010101010101; }
    std::uint64_t marks() const { return mBytes & all(0x80); }

    std::uint64_t mBytes;
};

#endif

} // namespace vexil

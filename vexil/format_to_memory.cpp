// SPDX-License-Identifier: MIT
#include "vexil/format_to_memory.h"

#include "vexil/exceptions.h"
#include "vexil/platform/platform.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <new>
#include <string_view>

namespace vexil {
namespace {

using namespace std::string_view_literals;

constexpr std::int32_t largestCapacity = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t firstCapacity = 128; // short messages fit at once

/// Truncation by the runtime's formatting functions.
enum class Runtime {
    Standard, ///< the required length is returned, the text is terminated
    Legacy,   ///< -1 is returned, the text fills the whole buffer
};

Runtime classifyRuntime() {
    std::array<char, 8> block;
    block.fill('x');
    const int result = platform::formatBounded(block.data(), 4, "123456");
    const std::string_view written(block.data(), block.size());
    if (result == 6 && written == "123\0xxxx"sv) return Runtime::Standard;
    if (result < 0 && written == "1234xxxx"sv) return Runtime::Legacy;
    throw Exception("FormatToMemory: snprintf() broken");
}

/// The class of the runtime, determined by the first call that succeeds.
Runtime getRuntime() {
    static const Runtime runtime = classifyRuntime();
    return runtime;
}

// Formats a copy of the arguments, which the next attempt needs again.
int formatAttempt(char* aDest, std::int32_t aSize, const char* aFormat, std::va_list aArguments) {
    std::va_list arguments;
    va_copy(arguments, aArguments);
    const int result = platform::formatBoundedArguments(aDest, static_cast<std::size_t>(aSize),
                                                        aFormat, arguments);
    va_end(arguments);
    return result;
}

} // namespace

FormatToMemory::FormatToMemory(std::int32_t aLimit) : mLimit(aLimit) {
    if (aLimit < 0) throw InvalidArgument("FormatToMemory: invalid argument aLimit");
    getRuntime();
}

FormatToMemory::~FormatToMemory() {
    std::free(mBuffer);
}

void FormatToMemory::vformat(const char* aFormat, std::va_list aArguments) {
    mLength = 0;
    if (!mBuffer) resize(mLimit == 0 ? firstCapacity : std::min(mLimit, firstCapacity));
    switch (getRuntime()) {
    case Runtime::Standard:
        formatStandard(aFormat, aArguments);
        break;
    case Runtime::Legacy:
        formatLegacy(aFormat, aArguments);
        break;
    default:
        throw Exception("FormatToMemory::vformat(): unknown implemetation");
    }
}

void FormatToMemory::formatStandard(const char* aFormat, std::va_list aArguments) {
    const auto attempt = [&] {
        const int result = formatAttempt(mBuffer, mCapacity, aFormat, aArguments);
        if (result < 0) throw EncodingError("FormatToMemory::vformat(): vsnprintf() failed");
        return result;
    };
    int result = attempt();
    if (result >= mCapacity) {
        // The terminating null needs a byte as well.
        if (result == largestCapacity) throw Exception("FormatToMemory::vformat(): overflow");
        if (mLimit != 0 && result >= mLimit) {
            throw FormatLimitExceeded("FormatToMemory::vformat(): maximum buffer size exceeded");
        }
        resize(result + 1);
        result = attempt();
        if (result >= mCapacity) {
            throw Exception("FormatToMemory::vformat(): vsnprintf() is inconsistent");
        }
    }
    mLength = result;
}

void FormatToMemory::formatLegacy(const char* aFormat, std::va_list aArguments) {
    const auto attempt = [&] {
        // The runtime does not terminate a text that fills the whole size passed to it.
        mBuffer[mCapacity - 1] = 0;
        const int result = formatAttempt(mBuffer, mCapacity - 1, aFormat, aArguments);
        if (result >= mCapacity) throw Exception("FormatToMemory::vformat(): vsnprintf is broken");
        return result;
    };
    int result = attempt();
    while (result < 0) {
        resize(nextLegacyCapacity());
        result = attempt();
    }
    mLength = result;
}

void FormatToMemory::resize(std::int32_t aCapacity) {
    const auto size = static_cast<std::size_t>(aCapacity);
    void* const block = mBuffer ? std::realloc(mBuffer, size) : std::malloc(size);
    if (!block) throw std::bad_alloc();
    mBuffer = static_cast<char*>(block);
    mCapacity = aCapacity;
}

std::int32_t FormatToMemory::nextLegacyCapacity() const {
    if (mLimit != 0) {
        if (mCapacity >= mLimit) {
            throw FormatLimitExceeded("FormatToMemory::vformat(): maximum buffer size exceeded");
        }
        return mCapacity < mLimit / 2 ? mCapacity * 2 : mLimit;
    }
    // Such a runtime returns -1 for every failure, so the text may never fit.
    if (mCapacity == largestCapacity) throw Exception("FormatToMemory::vformat(): overflow");
    return mCapacity < largestCapacity / 2 ? mCapacity * 2 : largestCapacity;
}

std::string FormatToMemory::format(const char* aFormat, ...) {
    FormatToMemory formatter(0);
    std::va_list arguments;
    va_start(arguments, aFormat);
    try {
        formatter.vformat(aFormat, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    return std::string(formatter.getBuffer(), static_cast<std::size_t>(formatter.getLength()));
}

} // namespace vexil

// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"
#include "vexil/non_copyable.h"

#include <cstdarg>
#include <cstdint>
#include <string>

namespace vexil {

/// Formats printf-style text into a heap buffer that grows until the text fits.
///
/// Supports runtimes whose bounded formatting returns the required length (standard) and those that
/// return a negative number and leave the text unterminated (legacy). The constructor and format()
/// classify the runtime, once per process; all operations may be called from any thread, each
/// object from one at a time.
class VEXIL_API FormatToMemory : private NonCopyable {
public:
    /// @p aLimit is the largest buffer in bytes, the terminating null included; 0 means no limit.
    /// Throws InvalidArgument "FormatToMemory: invalid argument aLimit" if it is negative,
    /// Exception "FormatToMemory: snprintf() broken" on a runtime that is neither standard nor
    /// legacy; such a runtime is classified anew by the next object.
    explicit FormatToMemory(std::int32_t aLimit);
    ~FormatToMemory();

    /// Replaces the text. Formats a copy of @p aArguments, which remain unread. After a failure the
    /// length is 0. Throws
    /// - FormatLimitExceeded "FormatToMemory::vformat(): maximum buffer size exceeded",
    /// - EncodingError "FormatToMemory::vformat(): vsnprintf() failed",
    /// - Exception "FormatToMemory::vformat(): overflow" for a text of 2147483647 bytes or more,
    /// - Exception "FormatToMemory::vformat(): vsnprintf() is inconsistent",
    ///   "FormatToMemory::vformat(): vsnprintf is broken" or
    ///   "FormatToMemory::vformat(): unknown implemetation" if the runtime contradicts its class,
    /// - std::bad_alloc.
    void vformat(const char* aFormat, std::va_list aArguments);

    /// The null-terminated text, valid until the next vformat(); null before the first one.
    const char* getBuffer() const { return mBuffer; }
    /// The length of the text in bytes, without the terminating null.
    std::int32_t getLength() const { return mLength; }

    /// Formats without a limit. Throws the exceptions of the constructor and of vformat().
    [[nodiscard]] static std::string format(const char* aFormat, ...);

private:
    void formatStandard(const char* aFormat, std::va_list aArguments);
    void formatLegacy(const char* aFormat, std::va_list aArguments);
    void resize(std::int32_t aCapacity);
    std::int32_t nextLegacyCapacity() const;

    char* mBuffer = nullptr; ///< from realloc, owned
    std::int32_t mLimit;
    std::int32_t mCapacity = 0;
    std::int32_t mLength = 0;
};

} // namespace vexil

#pragma once

#include "vexil/exceptions.h"
#include "vexil/format_to_memory.h"

#include <gmock/gmock.h>

inline void formatInto(vexil::FormatToMemory& aFormatter, const char* aFormat, ...) {
    std::va_list arguments;
    va_start(arguments, aFormat);
    try {
        aFormatter.vformat(aFormat, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
}

/// Texts on both sides of each limit, which are the same for both kinds of runtime.
inline void expectLimitsKept() {
    const std::tuple<int, std::size_t, bool> rows[] = {
        {0, 127, true},   {0, 128, true},   {0, 1000, true},   {1, 0, true},      {1, 1, false},
        {200, 150, true}, {200, 199, true}, {200, 200, false}, {300, 300, false}, {301, 300, true}};
    for (const auto& [limit, length, fits] : rows) {
        vexil::FormatToMemory formatter(limit);
        const std::string text(length, 'x');
        const auto format = [&, text = text] { formatInto(formatter, "%.1s%s", "", text.c_str()); };
        if (fits) {
            format();
            EXPECT_EQ(formatter.getBuffer(), text) << "limit " << limit;
        } else {
            EXPECT_THAT(format, testing::ThrowsMessage<vexil::FormatLimitExceeded>(
                                    "FormatToMemory::vformat(): maximum buffer size exceeded"));
        }
        EXPECT_EQ(formatter.getLength(), fits ? int(length) : 0) << "limit " << limit;
    }
}

// SPDX-License-Identifier: MIT
#include "certbridge/request.h"
#include "check/check_operations.h"
#include "check/readable_text.h"
#include "check/reply_check.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

namespace {

ThrowingPort port;

constexpr std::size_t largestBlock = 262144;

// Allocates blocks of all sizes that the reply may have had, overwrites and frees them.
void overwriteFreeMemory(std::size_t aReplySize) {
    constexpr std::size_t step = 16; // granularity of allocators
    const auto largest = std::min(4 * (aReplySize + step), largestBlock);
    std::vector<std::string> blocks;
    for (std::size_t size = step; size <= largest; size += std::max(size / 8, step)) {
        blocks.insert(blocks.end(), 8, std::string(size, '#'));
    }
}

bool isUnchanged(const char* aText, const std::string& aBefore) {
    return std::strncmp(aText, aBefore.c_str(), aBefore.size() + 1) == 0;
}

void requireUnchanged(const char* aText, const std::string& aBefore, const char* aMoment) {
    if (isUnchanged(aText, aBefore)) return;
    throw CheckFailure(std::string("the reply has changed ") + aMoment + "; it was " +
                       quotedExcerpt(aBefore));
}

} // namespace

// Reading a reply allocates memory, so a reply in memory that is free is overwritten before or
// while it is read.
std::string checkReplyLifetime(Subject& aSubject) {
    Plugin& plugin = openPlugin(aSubject);
    PluginRequest request(aSubject.typicalRequest);
    const PluginTexts texts = callPlugin(plugin, request.text);
    const char* const text = selectReply(port, texts).text;
    const std::string before = text;

    std::fill(request.text.begin(), request.text.end(), '#');
    requireUnchanged(text, before, "with the text of the request, which is gone after the call");
    overwriteFreeMemory(before.size());
    requireUnchanged(text, before,
                     "while other memory was used; it must be in memory of the plugin");
    return checkReply(texts);
}

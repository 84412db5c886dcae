// SPDX-License-Identifier: MIT
#include "check/channel.h"

#include "vexil/assert.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

// The memory begins with one entry for each text.
struct Channel::Entry {
    std::uint32_t offset, capacity, size; // in bytes; the offset is that of the text
};

namespace {

constexpr std::size_t textCount = 4;
constexpr std::uint32_t childCapacity = 65536;

} // namespace

Channel::Channel(std::string_view aLibraryName, std::string_view aRequest)
    : mMemory(textCount * sizeof(Entry) + aLibraryName.size() + aRequest.size() +
              2 * std::size_t{childCapacity}) {
    const std::uint32_t capacities[textCount] = {static_cast<std::uint32_t>(aLibraryName.size()),
                                                 static_cast<std::uint32_t>(aRequest.size()),
                                                 childCapacity, childCapacity};
    std::uint32_t offset = textCount * sizeof(Entry);
    for (const Text text : {LibraryName, Request, Progress, Result}) {
        getEntry(text) = {offset, capacities[text], 0};
        offset += capacities[text];
    }
    VEXIL_ASSERT(offset <= mMemory.getBytes().size());
    write(LibraryName, aLibraryName);
    write(Request, aRequest);
}

Channel::Channel(const std::string& aName) : mMemory(aName) {
}

Channel::Entry& Channel::getEntry(Text aText) const {
    return reinterpret_cast<Entry*>(mMemory.getBytes().data())[aText];
}

std::string Channel::read(Text aText) const {
    Entry& entry = getEntry(aText);
    const std::uint32_t size = std::atomic_ref(entry.size).load();
    return {mMemory.getBytes().data() + entry.offset, std::min(size, entry.capacity)};
}

void Channel::write(Text aText, std::string_view aContent) {
    Entry& entry = getEntry(aText);
    const auto content = aContent.substr(0, entry.capacity);
    std::memcpy(mMemory.getBytes().data() + entry.offset, content.data(), content.size());
    // Last, so that a child that crashes meanwhile has not written a text.
    std::atomic_ref(entry.size).store(static_cast<std::uint32_t>(content.size()));
}

// SPDX-License-Identifier: MIT
#pragma once

#include "check/platform/shared_memory.h"

#include <string>
#include <string_view>

/// The texts that the checker and the child process of one check exchange through shared memory.
class Channel {
public:
    /// Written by the parent before the child starts, and by the child, respectively.
    enum Text { LibraryName, Request, Progress, Result };

    /// Creates a channel with the parent's texts. Throws std::runtime_error.
    Channel(std::string_view aLibraryName, std::string_view aRequest);
    /// In a child: opens the parent's channel by its name. Throws std::runtime_error.
    explicit Channel(const std::string& aName);

    /// Empty until the text has been written.
    [[nodiscard]] std::string read(Text aText) const;

    /// Replaces the text, cut at a capacity of 64 KiB for the child's texts.
    void write(Text aText, std::string_view aContent);

    [[nodiscard]] const SharedMemory& getMemory() const { return mMemory; }

private:
    struct Entry;
    [[nodiscard]] Entry& getEntry(Text aText) const;

    SharedMemory mMemory;
};

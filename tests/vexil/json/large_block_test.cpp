// SPDX-License-Identifier: MIT

// Tokens of more than 2 GiB in a 32-bit process, in which ptrdiff_t cannot hold their length.
#include "tests/table.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_tokenizer.h"
#include "vexil/streams.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

using namespace vexil;

namespace {

constexpr std::uint32_t chunkSize = 0x1000000;
constexpr std::uint32_t blockSize = 134 * chunkSize; // 2.2 GB

/// A block of one repeated character. The pages of a single chunk are mapped again and again, so
/// that it needs little memory.
class LargeBlock {
public:
    explicit LargeBlock(char aFiller) {
        const int file = memfd_create("chunk", MFD_CLOEXEC);
        const std::string chunk(chunkSize, aFiller);
        if (write(file, chunk.data(), chunk.size()) != ssize_t{chunkSize}) return;
        void* const begin =
            mmap(nullptr, blockSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (begin == MAP_FAILED) return;
        mBegin = static_cast<char*>(begin);
        for (std::uint32_t offset = 0; offset < blockSize; offset += chunkSize) {
            mmap(mBegin + offset, chunkSize, PROT_READ | PROT_WRITE,
                 MAP_PRIVATE | MAP_FIXED | MAP_NORESERVE, file, 0);
        }
        close(file);
    }
    ~LargeBlock() {
        if (mBegin != nullptr) munmap(mBegin, blockSize);
    }

    /// Null if the address space has no gap that is large enough.
    char* getBegin() const { return mBegin; }

private:
    char* mBegin = nullptr;
};

class LargeTokens : public TableTest {};

std::string scanToken(MemoryInputStream& aStream) {
    JsonTokenizer tokenizer(aStream, 0);
    try {
        const JsonToken token = tokenizer.nextToken();
        const char* const name = token == JsonToken::String ? "String" : "Invalid";
        return aStream.tell64() == blockSize ? std::string(name) + " at end" : name;
    } catch (const Overflow& e) {
        return e.what();
    } catch (const std::length_error&) {
        return "length_error";
    }
}

TEST_P(LargeTokens, AreScannedOrRefused) {
    const Columns& row = GetParam().columns;
    const LargeBlock block(row[1][0]);
    if (!block.getBegin()) GTEST_SKIP() << "not enough address space";
    row[0].copy(block.getBegin(), row[0].size());
    row[2].copy(block.getBegin() + blockSize - row[2].size(), row[2].size());
    MemoryInputStream stream(block.getBegin(), blockSize);
    EXPECT_EQ(scanToken(stream), row[3]);
}

INSTANTIATE_TABLE(LargeTokens, "large_tokens.txt", 4);

} // namespace

// SPDX-License-Identifier: MIT
#include "vexil/platform/posix_symbols.h"

#include <cstdint>
#include <cstring>

#include <elf.h>

namespace vexil::platform {
namespace {

// The entries of a System V hash table have the size of an address on two processors.
#if defined(__alpha__) || defined(__s390x__)
using HashWord = std::uint64_t;
#else
using HashWord = std::uint32_t;
#endif

/// The tables of a loaded module that describe its dynamic symbols; null if it has none.
struct SymbolTables {
    const ElfW(Sym) * symbols = nullptr;
    const char* names = nullptr;
    const std::uint32_t* gnuHash = nullptr;
    const HashWord* hash = nullptr;
};

template <class Table>
void assignTable(const Table*& aTable, const link_map& aModule, ElfW(Addr) aAddress) {
    // Most loaders relocate the addresses of the dynamic section in place; some leave offsets.
    if (aAddress < aModule.l_addr) aAddress += aModule.l_addr;
    aTable = reinterpret_cast<const Table*>(aAddress);
}

SymbolTables findTables(const link_map& aModule) {
    SymbolTables tables;
    for (const auto* entry = aModule.l_ld; entry->d_tag != DT_NULL; ++entry) {
        const auto address = entry->d_un.d_ptr;
        if (entry->d_tag == DT_SYMTAB) assignTable(tables.symbols, aModule, address);
        if (entry->d_tag == DT_STRTAB) assignTable(tables.names, aModule, address);
        if (entry->d_tag == DT_GNU_HASH) assignTable(tables.gnuHash, aModule, address);
        if (entry->d_tag == DT_HASH) assignTable(tables.hash, aModule, address);
    }
    return tables;
}

bool isDefinition(const SymbolTables& aTables, std::size_t aIndex, const char* aName) {
    const auto& symbol = aTables.symbols[aIndex];
    return symbol.st_shndx != SHN_UNDEF && std::strcmp(aTables.names + symbol.st_name, aName) == 0;
}

std::uint32_t gnuHashOf(const char* aName) {
    std::uint32_t hash = 5381;
    for (; *aName != '\0'; ++aName) hash = hash * 33 + static_cast<unsigned char>(*aName);
    return hash;
}

// The layout of the table: counts of buckets, first symbol, count and shift of the Bloom filter,
// the filter in words of the size of an address, the buckets, and one hash for each symbol, whose
// lowest bit marks the end of a bucket.
bool isInGnuTable(const SymbolTables& aTables, const char* aName) {
    const auto* const header = aTables.gnuHash;
    const auto bucketCount = header[0];
    const auto firstSymbol = header[1];
    const auto filterWords = header[2] * (sizeof(ElfW(Addr)) / sizeof(std::uint32_t));
    const auto* const buckets = header + 4 + filterWords;
    const auto* const hashes = buckets + bucketCount;
    if (bucketCount == 0) return false;

    const auto hash = gnuHashOf(aName);
    auto index = buckets[hash % bucketCount];
    if (index < firstSymbol) return false; // an empty bucket
    for (;; ++index) {
        const auto entry = hashes[index - firstSymbol];
        if ((entry | 1) == (hash | 1) && isDefinition(aTables, index, aName)) return true;
        if ((entry & 1) != 0) return false;
    }
}

std::uint32_t systemVHashOf(const char* aName) {
    std::uint32_t hash = 0;
    for (; *aName != '\0'; ++aName) {
        hash = (hash << 4) + static_cast<unsigned char>(*aName);
        const auto high = hash & 0xF0000000;
        hash ^= high >> 24;
        hash &= ~high;
    }
    return hash;
}

// The layout of the table: counts of buckets and symbols, the buckets, and the next symbol of each
// symbol's chain.
bool isInSystemVTable(const SymbolTables& aTables, const char* aName) {
    const auto bucketCount = aTables.hash[0];
    if (bucketCount == 0) return false;
    const auto* const buckets = aTables.hash + 2;
    const auto* const chains = buckets + bucketCount;
    auto index = buckets[systemVHashOf(aName) % bucketCount];
    while (index != STN_UNDEF && !isDefinition(aTables, index, aName)) index = chains[index];
    return index != STN_UNDEF;
}

} // namespace

bool definesSymbol(const link_map& aModule, const char* aName) {
    const auto tables = findTables(aModule);
    if (!tables.symbols || !tables.names) return false;
    if (tables.gnuHash) return isInGnuTable(tables, aName);
    return tables.hash && isInSystemVTable(tables, aName);
}

} // namespace vexil::platform

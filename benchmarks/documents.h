// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace benchmarks {

struct Document {
    std::string name;
    std::string text;
};

/// The documents to parse and write, the same on every run and machine. No number has more than 17
/// significant digits, and no object has two members of the same name.
std::vector<Document> makeDocuments();

/// A request for the program, of about @p aSize bytes: one flat object whose values every program
/// writes in the same form (floats have at most six digits), with a list in its first member after
/// "action".
std::string makeRequest(std::size_t aSize);

struct NumberSet {
    std::string name;
    std::vector<std::string> texts;
};

/// The number texts to convert, of at most 17 significant digits each.
std::vector<NumberSet> makeNumberSets();

} // namespace benchmarks

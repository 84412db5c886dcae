#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace benchmarks {

struct Document {
    std::string name;
    std::string text;
};

/// The documents that are parsed and written, the same on every run and machine. None has a number
/// of more than 17 significant digits or an object with the same name twice.
std::vector<Document> makeDocuments();

/// A request for the program, of about @p aSize bytes: one flat object whose values every program
/// writes alike (floats have at most six digits), with a list in its first member after "action".
std::string makeRequest(std::size_t aSize);

struct NumberSet {
    std::string name;
    std::vector<std::string> texts;
};

/// The number texts that are converted, of at most 17 significant digits each.
std::vector<NumberSet> makeNumberSets();

} // namespace benchmarks

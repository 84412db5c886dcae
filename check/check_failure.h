#pragma once

#include <stdexcept>

/// Why a check failed, in words for the plugin's author. fatalError() of tool/output.h, which the
/// steps of the exchange call, throws it here with what certbridge would have said.
class CheckFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

#include "check/check_failure.h"

#include "tool/output.h"

#include <string>

void fatalError(std::int32_t aCode, const char* aMessage) {
    throw CheckFailure("certbridge ends with error " + std::to_string(aCode) + ", \"" + aMessage +
                       '"');
}

#pragma once

#include <cstdarg>
#include <cstddef>

/// Formats as runtimes did before there was a standard: -1 for a text that does not fit, which then
/// fills all of the room, and no terminator where there is no room for it. Where the system still
/// has such a runtime, this is it.
int formatLegacy(char* aDest, std::size_t aSize, const char* aFormat, std::va_list aArguments);

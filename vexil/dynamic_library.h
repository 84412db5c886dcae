// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"
#include "vexil/non_copyable.h"
#include "vexil/unicode_strings.h"

#include <memory>

namespace vexil {

/// Owns one dynamically loaded library and unloads it on destruction, before the error text and the
/// path are released. Failures are results with a text; the only exception is std::bad_alloc. Not
/// thread-safe.
class VEXIL_API DynamicLibrary : private NonCopyable {
public:
    DynamicLibrary();
    ~DynamicLibrary();

    /// Loads the library named @p aFileName, in the system's ANSI code page, with the loader's own
    /// search rules for a bare name. An empty name is refused like a missing file. Returns false
    /// and sets the error text to "already loaded", "LoadLibrary failed, error %ld" or
    /// "GetModuleFileName failed, error %ld". Error numbers are the same on every platform: 4 too
    /// many open files, 5 access denied, 8 out of memory, 126 the library or one that it needs not
    /// found, 127 a symbol that it needs missing, 193 not a loadable library.
    [[nodiscard]] bool load(const char* aFileName);

    /// Returns the address of the symbol @p aName that the library itself exports, valid while the
    /// library is loaded; null with the text "not loaded" or "GetProcAddress failed, error %ld".
    [[nodiscard]] void* getSymbol(const char* aName);

    /// Returns the reason why the last operation failed; empty after a success. Valid until the
    /// next operation.
    [[nodiscard]] const char* getErrorText() const;

    /// Full path of the loaded file, at most 260 units; empty until a load succeeds. Borrowed.
    [[nodiscard]] const UnicodeString16& getPath() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace vexil

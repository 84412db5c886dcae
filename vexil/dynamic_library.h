#pragma once

#include "vexil/export.h"
#include "vexil/non_copyable.h"
#include "vexil/unicode_strings.h"

#include <memory>

namespace vexil {

/// Owner of one dynamically loaded library; unloads it when it ends. Failures are results with a
/// text, not exceptions; only running out of memory is thrown. One thread at a time.
class VEXIL_API DynamicLibrary : private NonCopyable {
public:
    DynamicLibrary();
    ~DynamicLibrary();

    /// Loads the library named @p aFileName, in the system's ANSI code page, with the loader's own
    /// search rules for a bare name. An empty name is refused like a missing file. Returns false
    /// and sets the error text to "already loaded", "LoadLibrary failed, error %ld" or
    /// "GetModuleFileName failed, error %ld". Error numbers are the same on every platform: 126 not
    /// found, 193 not a loadable library, 127 a symbol it needs is missing, 8 out of memory.
    bool load(const char* aFileName);

    /// The address of the exported symbol @p aName, valid while the library is loaded; null with
    /// the text "not loaded" or "GetProcAddress failed, error %ld".
    void* getSymbol(const char* aName);

    /// Why the last operation failed; empty after a success. Valid until the next operation.
    const char* getErrorText() const;

    /// Full path of the loaded file, at most 260 units; empty until a load succeeds. Borrowed.
    const UnicodeString16& getPath() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace vexil

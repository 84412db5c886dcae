// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"
#include "vexil/platform/posix_file_name.h"
#include "vexil/platform/posix_load_error.h"
#include "vexil/platform/posix_symbols.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <link.h>
#include <locale.h>
#include <unistd.h>

namespace vexil::platform {
namespace {

struct LibraryCloser {
    void operator()(void* aLibrary) const { dlclose(aLibrary); }
};

/// A ModuleHandle points to one.
struct Module {
    std::unique_ptr<void, LibraryCloser> library;
    std::string path; ///< absolute; empty if it is not known
};

Module& asModule(ModuleHandle aModule) {
    return *static_cast<Module*>(aModule);
}

link_map* linkMapOf(void* aLibrary) {
    link_map* module = nullptr;
    return dlinfo(aLibrary, RTLD_DI_LINKMAP, &module) == 0 ? module : nullptr;
}

// Empty if the working directory has no name.
std::string workingDirectory() {
    std::string path(256, '\0');
    while (!getcwd(path.data(), path.size())) {
        if (errno != ERANGE) return {};
        path.resize(path.size() * 2);
    }
    path.resize(std::strlen(path.c_str()));
    if (path.back() != '/') path += '/';
    return path;
}

std::string makeAbsolute(const char* aPath, const std::string& aDirectory) {
    if (*aPath == '/') return aPath;
    return *aPath == '\0' || aDirectory.empty() ? std::string() : aDirectory + aPath;
}

/// During its lifetime, this thread has the "C" locale. The constructor throws std::bad_alloc.
class UntranslatedMessages {
public:
    UntranslatedMessages() : mLocale(newlocale(LC_ALL_MASK, "C", locale_t{})) {
        if (!mLocale) throw std::bad_alloc();
        mBefore = uselocale(mLocale);
    }
    ~UntranslatedMessages() {
        uselocale(mBefore);
        freelocale(mLocale);
    }
    UntranslatedMessages(const UntranslatedMessages&) = delete;
    UntranslatedMessages& operator=(const UntranslatedMessages&) = delete;

private:
    locale_t mLocale;
    locale_t mBefore{};
};

// Returns the text of the last failure in English; dlerror() translates it when it is called.
std::string describeLoadError() {
    const UntranslatedMessages messages;
    const char* const text = dlerror();
    return text ? text : "";
}

// Sets aError for a name that the loader must not be given.
bool isRefused(const char* aFileName, long& aError) {
    const std::string_view name(aFileName);
    if (name.empty()) { // the program itself to dlopen()
        aError = errorModuleNotFound;
        return true;
    }
    const bool isPath = name.find('/') != std::string_view::npos;
    if (isPath ? isUnsafeToLoad(aFileName) : isUnsafeToSearch(name)) {
        aError = errorNotALibrary;
        return true;
    }
    return false;
}

} // namespace

ModuleHandle openModule(const char* aFileName, long& aError) {
    if (isRefused(aFileName, aError)) return nullptr;
    auto module = std::make_unique<Module>();
    // Before the constructors of the library, which may change it.
    const auto directory = *aFileName == '/' ? std::string() : workingDirectory();
    errno = 0;
    module->library.reset(dlopen(aFileName, RTLD_NOW | RTLD_LOCAL));
    if (!module->library) {
        const int error = errno;
        aError = classifyLoadError(aFileName, describeLoadError(), error);
        return nullptr;
    }
    if (const auto* const map = linkMapOf(module->library.get())) {
        module->path = makeAbsolute(map->l_name, directory);
    }
    return module.release();
}

std::uint32_t getModuleFileName(ModuleHandle aModule, std::uint16_t* aDest, std::uint32_t aSize,
                                long& aError) {
    const auto& path = asModule(aModule).path;
    if (path.empty()) {
        aError = errorModuleNotFound;
        return 0;
    }
    std::span<std::uint16_t> rest(aDest, aSize);
    fileNameToUtf16(path, rest);
    if (!rest.empty()) rest.front() = 0;
    return aSize - static_cast<std::uint32_t>(rest.size());
}

void* findSymbol(ModuleHandle aModule, const char* aName, long& aError) {
    void* const library = asModule(aModule).library.get();
    const auto* const map = linkMapOf(library);
    void* const address = map && definesSymbol(*map, aName) ? dlsym(library, aName) : nullptr;
    if (!address) {
        dlerror(); // frees the text
        aError = errorSymbolNotFound;
    }
    return address;
}

void closeModule(ModuleHandle aModule) {
    delete static_cast<Module*>(aModule);
}

} // namespace vexil::platform

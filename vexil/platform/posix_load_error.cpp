// SPDX-License-Identifier: MIT
#include "vexil/platform/posix_load_error.h"

#include "vexil/platform/platform.h"

#include <cerrno>
#include <memory>
#include <new>
#include <string>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace vexil::platform {
namespace {

bool contains(std::string_view aText, std::string_view aPart) {
    return aText.find(aPart) != std::string_view::npos;
}

bool permitsPrograms(const std::string& aPath) {
    struct statvfs status;
    return statvfs(aPath.c_str(), &status) == 0 && (status.f_flag & ST_NOEXEC) == 0;
}

// dlerror() returns "FILE: PROBLEM", where FILE is the library or one that it needs. A file name
// may contain a colon.
std::size_t lengthOfFile(std::string_view aFileName, std::string_view aText) {
    const auto size = aFileName.size();
    const bool isLibrary = aText.substr(0, size) == aFileName && aText.substr(size, 2) == ": ";
    return isLibrary ? size : aText.find(": ");
}

// Opens the file as the loader does. The loader has searched for a name without a slash and found
// nothing, unless no file can be opened at all.
long classifyFile(const std::string& aPath) {
    const bool isPath = contains(aPath, "/");
    const int file = open(isPath ? aPath.c_str() : "/", O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file == -1 && (errno == EMFILE || errno == ENFILE)) return errorTooManyOpenFiles;
    if (file == -1) return errno == EACCES ? errorAccessDenied : errorModuleNotFound;
    close(file);
    return isPath ? errorNotALibrary : errorModuleNotFound;
}

} // namespace

// The GNU loader has no error numbers. Missing symbols, thread-local storage and a failed mapping
// are recognised by the text, because the file does not show them.
long classifyLoadError(std::string_view aFileName, std::string_view aText, int aErrno) {
    const auto file = aText.substr(0, lengthOfFile(aFileName, aText));
    const auto problem = aText.substr(file.size());
    const std::string path(file);

    if (contains(problem, "undefined symbol") || contains(problem, "version `")) {
        return errorSymbolNotFound;
    }
    if (aErrno == ENOMEM || contains(problem, "static TLS")) return errorOutOfMemory;
    // A file system mounted without execute permission fails with the same text.
    if (contains(problem, "failed to map segment") && permitsPrograms(path)) {
        return errorOutOfMemory;
    }
    return classifyFile(path);
}

// By stat() rather than std::filesystem, which would pull all locales of the C++ runtime into a
// program that contains the runtime, and slow down its start.
bool isUnsafeToLoad(const char* aPath) {
    struct stat status;
    if (stat(aPath, &status) == -1) return false;
    return !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

bool isUnsafeToSearch(std::string_view aFileName) {
    const std::unique_ptr<void, int (*)(void*)> program(dlopen(nullptr, RTLD_LAZY), dlclose);
    Dl_serinfo size;
    if (!program || dlinfo(program.get(), RTLD_DI_SERINFOSIZE, &size) == -1) return false;
    const std::unique_ptr<void, void (*)(void*)> block(
        ::operator new(size.dls_size), [](void* aBlock) { ::operator delete(aBlock); });
    auto* const directories = static_cast<Dl_serinfo*>(block.get());
    if (dlinfo(program.get(), RTLD_DI_SERINFOSIZE, directories) == -1 ||
        dlinfo(program.get(), RTLD_DI_SERINFO, directories) == -1) {
        return false;
    }
    for (unsigned i = 0; i < directories->dls_cnt; ++i) {
        const auto path =
            std::string(directories->dls_serpath[i].dls_name).append("/").append(aFileName);
        if (access(path.c_str(), F_OK) == 0) return isUnsafeToLoad(path.c_str());
    }
    return false;
}

} // namespace vexil::platform

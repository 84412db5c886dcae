#include "vexil/platform/platform.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cfenv>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include <dlfcn.h>
#include <fcntl.h>
#include <iconv.h>
#include <langinfo.h>
#include <link.h>
#include <locale.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#if defined(__SSE__)
#include <xmmintrin.h>
#endif

namespace vexil::platform {
namespace {

// ---- Libraries

// Not by std::filesystem: with it a program that has the C++ runtime linked into it would get all
// of the locales too, and start later.
mode_t typeOfFile(const char* aFileName) {
    struct stat status;
    return stat(aFileName, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

bool exists(const std::string& aFileName) {
    return typeOfFile(aFileName.c_str()) != 0;
}

bool contains(std::string_view aText, std::string_view aPart) {
    return aText.find(aPart) != std::string_view::npos;
}

bool mayHoldPrograms(const std::string& aFileName) {
    struct statvfs status;
    return statvfs(aFileName.c_str(), &status) == 0 && (status.f_flag & ST_NOEXEC) == 0;
}

// The GNU loader has no error numbers, only a text "FILE: PROBLEM", where FILE is what it could not
// load: the library, or one that the library needs. So the number comes from what FILE is:
//   - a name without a slash: it was searched for and not found           -> not found
//   - a path where no file is                                             -> not found
//   - a file, whatever is wrong with it (no ELF, another processor, ...)  -> not a loadable library
// Two cases have nothing to do with the file itself. A missing symbol (or version of it) only the
// text tells. Memory that ran out is in errno, zero before the call, but for the last step, mapping
// the file: then again there is only the text, the same as for a file system without programs.
long loadErrorNumber(std::string_view aFileName, std::string_view aText, int aErrno) {
    // The name may hold a colon itself.
    const auto nameEnd =
        aText.substr(0, aFileName.size()) == aFileName ? aFileName.size() : aText.find(": ");
    const auto file = aText.substr(0, nameEnd);
    const auto problem = aText.substr(file.size());

    if (contains(problem, "undefined symbol") || contains(problem, "version `")) {
        return errorSymbolNotFound;
    }
    if (aErrno == ENOMEM) return errorOutOfMemory;
    const std::string path(file);
    if (contains(problem, "failed to map segment") && mayHoldPrograms(path)) {
        return errorOutOfMemory;
    }
    return contains(path, "/") && exists(path) ? errorNotALibrary : errorModuleNotFound;
}

// Empty if the working directory has no name.
std::string makeAbsolute(const std::string& aPath) {
    if (aPath.empty() || aPath.front() == '/') return aPath;
    const std::unique_ptr<char, decltype(&std::free)> folder(getcwd(nullptr, 0), std::free);
    if (!folder) return {};
    std::string path(folder.get());
    if (path.back() != '/') path += '/';
    return path + aPath;
}

// ---- Conversion to UTF-16

enum class Outcome { Complete, Full, Invalid };

// A conversion from one character set to UTF-16 in this machine's byte order, without a byte order
// mark.
class Utf16Converter {
public:
    explicit Utf16Converter(const char* aCharacterSet)
        : mHandle(iconv_open(std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE",
                             aCharacterSet)) {}
    ~Utf16Converter() {
        if (isOpen()) iconv_close(mHandle);
    }
    Utf16Converter(const Utf16Converter&) = delete;
    Utf16Converter& operator=(const Utf16Converter&) = delete;

    bool isOpen() const { return mHandle != reinterpret_cast<iconv_t>(std::intptr_t{-1}); }

    // Moves aSource past the bytes converted and aDest past the units written. After Invalid,
    // aSource starts with the bytes that are invalid or cut off.
    Outcome convert(std::string_view& aSource, std::span<std::uint16_t>& aDest) {
        auto* in = const_cast<char*>(aSource.data()); // iconv() only reads it
        auto inLeft = aSource.size();
        auto* out = reinterpret_cast<char*>(aDest.data());
        auto outLeft = aDest.size_bytes();
        constexpr auto failed = std::numeric_limits<std::size_t>::max();

        auto result = iconv(mHandle, &in, &inLeft, &out, &outLeft);
        // Some character sets hold a character back until they know what follows.
        if (result != failed) result = iconv(mHandle, nullptr, nullptr, &out, &outLeft);
        const bool isFull = errno == E2BIG;

        aSource.remove_prefix(aSource.size() - inLeft);
        aDest = aDest.last(outLeft / sizeof(std::uint16_t));
        if (result != failed) return Outcome::Complete;
        return isFull ? Outcome::Full : Outcome::Invalid;
    }

private:
    iconv_t mHandle;
};

std::size_t countUnits(Utf16Converter& aConverter, std::string_view aBytes) {
    std::array<std::uint16_t, 512> block;
    std::size_t count = 0;
    for (;;) {
        std::span<std::uint16_t> rest(block);
        const auto outcome = aConverter.convert(aBytes, rest);
        if (outcome == Outcome::Invalid) return 0;
        count += block.size() - rest.size();
        if (outcome == Outcome::Complete) return count;
    }
}

bool isAscii(std::string_view aBytes) {
    return std::ranges::none_of(aBytes, [](char aByte) { return (aByte & 0x80) != 0; });
}

// File names are bytes, whatever they mean; what is not UTF-8 becomes replacement characters. False
// without memory.
bool fileNameToUtf16(std::string_view aBytes, std::span<std::uint16_t>& aDest) {
    // Most names need no converter, for which every start of the program would load a module.
    if (isAscii(aBytes)) {
        const auto part = aBytes.substr(0, aDest.size());
        std::ranges::copy(part, aDest.begin());
        aDest = aDest.subspan(part.size());
        return true;
    }
    Utf16Converter converter("UTF-8");
    if (!converter.isOpen()) return false;
    while (converter.convert(aBytes, aDest) == Outcome::Invalid && !aDest.empty()) {
        aBytes.remove_prefix(1);
        aDest.front() = 0xFFFD;
        aDest = aDest.subspan(1);
    }
    return true;
}

struct LocaleDeleter {
    using pointer = locale_t;
    void operator()(locale_t aLocale) const { freelocale(aLocale); }
};
using LocaleHolder = std::unique_ptr<locale_t, LocaleDeleter>;

LocaleHolder openLocale(const char* aName) {
    LocaleHolder locale(newlocale(LC_CTYPE_MASK, aName, locale_t{}));
    if (!locale && errno == ENOMEM) throw std::bad_alloc();
    return locale;
}

// The environment's character classification; that of "C" where the system does not have the
// locale, as in a program whose setlocale() failed.
LocaleHolder openEnvironmentLocale() {
    LocaleHolder locale = openLocale("");
    return locale ? std::move(locale) : openLocale("C");
}

// ---- Signals

// What a write may raise in its own thread.
constexpr std::array writeSignals{SIGPIPE, SIGXFSZ};

sigset_t setOf(int aSignal) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, aSignal);
    return signals;
}

bool isPending(int aSignal) {
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    return sigismember(&pending, aSignal) == 1;
}

// ---- Standard output

void discardStandardOutput() {
    const int nowhere = open("/dev/null", O_WRONLY);
    if (nowhere == -1) {
        close(STDOUT_FILENO);
        return;
    }
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

bool waitUntilWritable(int aDescriptor) {
    pollfd writable{aDescriptor, POLLOUT, 0};
    return poll(&writable, 1, -1) != -1 || errno == EINTR;
}

bool writeAll(int aDescriptor, std::string_view aText) {
    while (!aText.empty()) {
        const auto count = write(aDescriptor, aText.data(), aText.size());
        if (count > 0) {
            aText.remove_prefix(static_cast<std::size_t>(count));
        } else if (count == 0) {
            return false;
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (!waitUntilWritable(aDescriptor)) return false;
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace

ModuleHandle openModule(const char* aFileName, long& aError) {
    const std::string_view name(aFileName);
    if (name.empty()) { // to dlopen() the program itself
        aError = errorModuleNotFound;
        return nullptr;
    }
    // The loader would wait for somebody to write into a named pipe.
    if (contains(name, "/") && typeOfFile(aFileName) == S_IFIFO) {
        aError = errorNotALibrary;
        return nullptr;
    }
    errno = 0;
    auto* const module = dlopen(aFileName, RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        const int error = errno;
        const char* const text = dlerror();
        aError = loadErrorNumber(name, text ? text : "", error);
    }
    return module;
}

std::uint32_t getModuleFileName(ModuleHandle aModule, std::uint16_t* aDest, std::uint32_t aSize,
                                long& aError) {
    struct link_map* module = nullptr;
    std::string path;
    if (dlinfo(aModule, RTLD_DI_LINKMAP, &module) == 0) path = makeAbsolute(module->l_name);
    if (path.empty()) {
        aError = errorModuleNotFound;
        return 0;
    }
    std::span<std::uint16_t> rest(aDest, aSize);
    if (!fileNameToUtf16(path, rest)) {
        aError = errorOutOfMemory;
        return 0;
    }
    if (!rest.empty()) rest.front() = 0;
    return aSize - static_cast<std::uint32_t>(rest.size());
}

void* findSymbol(ModuleHandle aModule, const char* aName, long& aError) {
    void* const address = dlsym(aModule, aName);
    if (!address) {
        dlerror(); // lets go of the text, which says nothing more
        aError = errorSymbolNotFound;
    }
    return address;
}

void closeModule(ModuleHandle aModule) {
    dlclose(aModule);
}

std::int32_t activeCodePageToUtf16(const char* aBytes, std::int32_t aLen, std::uint16_t* aDest,
                                   std::int32_t aUnits) {
    const auto locale = openEnvironmentLocale();
    if (!locale) return 0;
    Utf16Converter converter(nl_langinfo_l(CODESET, locale.get()));
    if (!converter.isOpen() && errno == ENOMEM) throw std::bad_alloc();
    if (!converter.isOpen()) return 0;

    std::string_view bytes(aBytes, static_cast<std::size_t>(aLen));
    if (!aDest) {
        const auto count = countUnits(converter, bytes);
        const bool fits = count <= std::size_t{std::numeric_limits<std::int32_t>::max()};
        return fits ? static_cast<std::int32_t>(count) : 0;
    }
    std::span<std::uint16_t> rest(aDest, static_cast<std::size_t>(aUnits));
    if (converter.convert(bytes, rest) != Outcome::Complete) return 0;
    return aUnits - static_cast<std::int32_t>(rest.size());
}

int formatBoundedArguments(char* aDest, std::size_t aSize, const char* aFormat,
                           std::va_list aArguments) {
    return std::vsnprintf(aDest, aSize, aFormat, aArguments);
}

void reserveStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
        // Takes the lowest free number, which is this one. Open the wrong way round, so that the
        // use it was meant for still fails.
        open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

bool writeStandardOutput(std::string_view aText) {
    const WriteSignalBlocker blocker;
    // By the descriptor: the stream writes nothing, and reports no error, if it is wide-oriented.
    const bool isWritten =
        std::ferror(stdout) == 0 && std::fflush(stdout) == 0 && writeAll(STDOUT_FILENO, aText);
    // Neither the runtime on exit nor a destructor of the plugin's must write the rest, or raise
    // the signal after all.
    if (!isWritten) discardStandardOutput();
    return isWritten;
}

void resetFloatingPoint() {
#if defined(__x86_64__) || defined(__i386__)
    __asm__ volatile("fninit");
#if defined(__SSE__)
    _mm_setcsr(0x1F80);
#endif
#else
    std::fesetenv(FE_DFL_ENV);
#endif
}

WriteSignalBlocker::WriteSignalBlocker() {
    for (std::size_t i = 0; i < writeSignals.size(); ++i) {
        mSignals[i].discard = !isPending(writeSignals[i]);
        const auto signal = setOf(writeSignals[i]);
        sigset_t before;
        if (pthread_sigmask(SIG_BLOCK, &signal, &before) == 0) {
            mSignals[i].unblock = sigismember(&before, writeSignals[i]) == 0;
        }
    }
}

WriteSignalBlocker::~WriteSignalBlocker() {
    for (std::size_t i = 0; i < writeSignals.size(); ++i) {
        const auto signal = setOf(writeSignals[i]);
        const timespec now{};
        while (mSignals[i].discard && sigtimedwait(&signal, nullptr, &now) == -1 &&
               errno == EINTR) {
        }
        if (mSignals[i].unblock) pthread_sigmask(SIG_UNBLOCK, &signal, nullptr);
    }
}

} // namespace vexil::platform

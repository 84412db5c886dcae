// SPDX-License-Identifier: MIT
#include "check/check_list.h"

#include "check/check_operations.h"

#include <algorithm>
#include <array>
#include <exception>
#include <new>

namespace {

constexpr std::array checks{
    Check{
        "load", "the library loads",
        [](Subject& aSubject) {
            loadLibrary(aSubject);
            return std::string();
        },
        nullptr,
        "126: the library or one that it needs is not found; 127: a symbol is missing; 193: not a "
        "library for the processor and word size of this program"},
    Check{"export", "it exports GetPlugin",
          [](Subject& aSubject) {
              static_cast<void>(loadExport(aSubject));
              return std::string();
          },
          "load", "the name must be exported without C++ or other decoration"},
    Check{"object", "GetPlugin returns an object",
          [](Subject& aSubject) {
              loadPlugin(aSubject);
              return std::string();
          },
          "export", "return the address of an object that exists while the library is loaded"},
    Check{"type", "getPluginType returns 1",
          [](Subject& aSubject) {
              openPlugin(aSubject);
              return std::string();
          },
          "object", "it must be the ninth entry of the object's table of operations"},
    Check{"typical-request", "a typical request gets a valid reply", checkTypicalRequest, "type"},
    Check{"empty-request", "a request without members gets a valid reply", checkEmptyRequest,
          "type"},
    Check{"hostile-request", "names and values of every kind get a valid reply",
          checkHostileRequest, "type"},
    Check{"deep-request", "a value of 100000 nested arrays gets a valid reply", checkDeepRequest,
          "type"},
    Check{"large-request", "10000 members and a text of 1 MiB get a valid reply", checkLargeRequest,
          "type"},
    Check{"second-call", "a second call gets a valid reply", checkSecondCall, "typical-request"},
    Check{"reply-lifetime", "the reply stays readable until it has been read", checkReplyLifetime,
          "typical-request"},
    Check{"after-effects", "a call leaves no thread, process, timer or floating-point setting",
          checkAfterEffects, "typical-request",
          "unloading takes away the code of threads and timers; the floating-point environment "
          "belongs to the caller"},
    Check{"unload", "the process ends well after the library was unloaded", checkUnloading,
          "typical-request", nullptr, Check::ExaminesEnd},
    Check{"exit", "the process ends well while the library is loaded", checkTypicalRequest,
          "typical-request", nullptr, Check::ExaminesEnd},
    Check{"low-memory", "a request gets a valid reply while memory runs out", checkLowMemory,
          "typical-request", "keep a constant text for this error", Check::LowMemory},
    Check{"random-requests", "random requests get valid replies", checkTypicalRequest, "type",
          nullptr, Check::RandomRequests},
    Check{"standard-output", "standard output is left alone in all of this", nullptr, "load",
          nullptr, Check::WatchesOutput},
};

} // namespace

std::span<const Check> getChecks() {
    return checks;
}

const Check* findCheck(std::string_view aId) {
    const auto* const found = std::find_if(checks.begin(), checks.end(),
                                           [=](const Check& aCheck) { return aCheck.id == aId; });
    return found == checks.end() ? nullptr : &*found;
}

Outcome performCheck(const Check& aCheck, Subject& aSubject) {
    try {
        return {Outcome::Passed, aCheck.run(aSubject)};
    } catch (const CheckFailure& failure) {
        const std::string text = failure.what();
        return {Outcome::Failed, aCheck.advice ? text + "; " + aCheck.advice : text};
    } catch (const std::bad_alloc&) {
        return {Outcome::Inconclusive, "certbridge-check ran out of memory"};
    } catch (const std::exception& exception) {
        return {Outcome::Inconclusive, exception.what()};
    }
}

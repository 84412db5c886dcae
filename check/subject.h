// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/exchange.h"
#include "check/guarded_plugin.h"
#include "vexil/dynamic_library.h"
#include "vexil/json/json_value.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

/// The plugin under test. Its library is not loaded yet; the destructor unloads it.
struct Subject {
    /// Borrows its arguments. @p aSetProgress records the present step for the report of a crash.
    Subject(const char* aLibraryName, const vexil::JsonValue& aTypicalRequest,
            std::function<void(const std::string&)> aSetProgress)
        : libraryName(aLibraryName), typicalRequest(aTypicalRequest),
          setProgress(std::move(aSetProgress)) {}

    const char* libraryName; ///< in the active code page
    const vexil::JsonValue& typicalRequest;
    std::function<void(const std::string&)> setProgress;
    std::unique_ptr<vexil::DynamicLibrary> library = std::make_unique<vexil::DynamicLibrary>();
    std::optional<GuardedPlugin> plugin; ///< once it has been obtained
};

// The steps of an exchange, as certbridge takes them. Each throws CheckFailure if it fails, and
// std::bad_alloc if memory runs out outside the plugin.

/// Loads the library. The failure names the missing library or symbol, if there is one.
void loadLibrary(Subject& aSubject);

/// Loads the library and finds its export.
[[nodiscard]] GetPluginFunction loadExport(Subject& aSubject);

/// Loads the library and obtains the plugin object.
GuardedPlugin& loadPlugin(Subject& aSubject);

/// The same, and verifies the plugin's type.
GuardedPlugin& openPlugin(Subject& aSubject);

/// Sends a request and verifies the reply; returns a note for the report, usually empty.
std::string sendRequest(Plugin& aPlugin, const vexil::JsonValue& aRequest);

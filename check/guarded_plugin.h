// SPDX-License-Identifier: MIT
#pragma once

#include "check/throwing_port.h"
#include <certbridge/plugin.h>

#include <cstddef>
#include <exception>
#include <optional>
#include <string>

/// Returns the failure for an exception that has left the plugin; @p aException may be null.
[[nodiscard]] CheckFailure makeEscapeFailure(const std::exception* aException);

/// Calls the plugin through @p aCall. An exception that leaves it becomes a CheckFailure, so that
/// it is never mistaken for one of the checker.
template <class Call>
decltype(auto) callGuarded(const Call& aCall) {
    try {
        return aCall();
    } catch (const CheckFailure&) {
        throw;
    } catch (const std::exception& exception) {
        throw makeEscapeFailure(&exception);
    } catch (...) {
        throw makeEscapeFailure(nullptr);
    }
}

/// Passes each call on to another plugin, guarded, and examines the floating-point environment that
/// the call leaves.
class GuardedPlugin final : public Plugin {
public:
    /// Borrows @p aPlugin.
    explicit GuardedPlugin(Plugin& aPlugin) : mPlugin(aPlugin) {}

    std::int32_t getPluginType() override;
    void getCertificate(const char* aRequest, const char** aResponse, const char** aError) override;

    /// Limits the memory that later calls of getCertificate() can allocate, in bytes.
    void limitMemory(std::size_t aBytes) { mMemoryLimit = aBytes; }

    /// Describes how the last getCertificate() changed the environment; empty if it did not.
    [[nodiscard]] const std::string& getFloatingPointChange() const { return mChange; }

private:
    Plugin& mPlugin;
    std::optional<std::size_t> mMemoryLimit;
    std::string mChange;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <certbridge/plugin.h>

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

// Shared by the programs that certbridge is compared with: input and plugin call in their simplest
// form.

[[noreturn]] inline void fail(const char* aWhat) {
    std::fprintf(stderr, "%s\n", aWhat);
    std::exit(2);
}

inline std::string readInput() {
    std::string text;
    std::size_t size = 0;
    do {
        constexpr std::size_t step = 65536;
        text.resize(size + step);
        size += std::fread(text.data() + size, 1, step, stdin);
    } while (size == text.size());
    text.resize(size);
    return text;
}

/// Returns the plugin's reply to @p aRequest; the plugin stays loaded.
inline const char* askPlugin(const char* aLibrary, const std::string& aRequest) {
    void* const library = dlopen(aLibrary, RTLD_NOW);
    if (library == nullptr) fail(dlerror());
    using GetPlugin = Plugin* (*)();
    const auto getPlugin = reinterpret_cast<GetPlugin>(dlsym(library, "GetPlugin"));
    if (getPlugin == nullptr) fail(dlerror());
    auto* const plugin = getPlugin();
    if (plugin->getPluginType() != 1) fail("wrong plugin type");
    const char* response = nullptr;
    const char* error = nullptr;
    plugin->getCertificate(aRequest.c_str(), &response, &error);
    if (error != nullptr || response == nullptr) fail("no response");
    return response;
}

// SPDX-License-Identifier: MIT

// The contract of certbridge, as calls of the exported functions of Go. A Go library cannot be
// unloaded, since its runtime keeps threads: Go links it with -z nodelete.
#include "_cgo_export.h"
#include <certbridge/plugin.h>

static int32_t CERTBRIDGE_CALL getPluginType(Plugin* aThis) {
    (void)aThis;
    return 1;
}

static void CERTBRIDGE_CALL getCertificate(Plugin* aThis, const char* aRequest,
                                           const char** aResponse, const char** aError) {
    (void)aThis;
    answerRequest((char*)aRequest, (char**)aResponse, (char**)aError);
}

static const PluginOperations operations = {.getPluginType = getPluginType,
                                            .getCertificate = getCertificate};

Plugin* GetPlugin(void) {
    static Plugin plugin = {&operations};
    return &plugin;
}

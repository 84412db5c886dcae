// A plugin without a C++ compiler: an object whose first word points to a table of ten addresses,
// null where the program must never call.
#include <stddef.h>
#include <stdint.h>

typedef void (*Operation)(void);

static int32_t MEMBER_CALL getPluginType(void* aThis) {
    return aThis ? 1 : 0;
}

// Its result means nothing to the program.
static int32_t MEMBER_CALL getCertificate(void* aThis, const char* aRequest, const char** aResponse,
                                          const char** aError) {
    *(aThis && aRequest[0] == '{' ? aResponse : aError) = "{\"response\":[]}";
    return -1;
}

static const Operation operations[10] = {
    [8] = (Operation)getPluginType, [9] = (Operation)getCertificate};
static const Operation* const plugin = operations;

const void* GetPlugin(void) {
    return &plugin;
}

// Answers every request with the request's own members, without a C++ runtime behind it.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

typedef void (*Operation)(void);

// A class with virtual operations as C sees it: the object starts with the address of their table.
typedef struct {
    const Operation* operations;
} Object;

static int32_t getPluginType(Object* aThis) {
    (void)aThis;
    return 1;
}

// The reply lives as long as the process, which asks once.
static void getCertificate(Object* aThis, const char* aRequest, const char** aResponse,
                           const char** aError) {
    (void)aThis;
    const char* const list = strchr(aRequest, '[');
    char* const reply = malloc(strlen(list) + sizeof "{\"response\":");
    if (reply == NULL) {
        *aError = "{\"error\":[{\"name\":\"erroMessage\",\"value\":\"out of memory\"}]}";
        return;
    }
    strcpy(reply, "{\"response\":");
    strcat(reply, list);
    *aResponse = reply;
}

Object* GetPlugin(void);

Object* GetPlugin(void) {
    static const Operation operations[10] = {
        [8] = (Operation)getPluginType,
        [9] = (Operation)getCertificate,
    };
    static Object plugin = {operations};
    return &plugin;
}

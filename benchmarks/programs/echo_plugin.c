// SPDX-License-Identifier: MIT

// Answers every request with the members of the request. Does not need the C++ runtime.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

typedef void (*Operation)(void);

// Layout of an object with virtual operations: its first word is the address of their table.
typedef struct {
    const Operation* operations;
} Object;

static int32_t getPluginType(Object* aThis) {
    (void)aThis;
    return 1;
}

// The reply is never freed: the process makes one request.
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

// SPDX-License-Identifier: MIT

// Preloaded into a program, it replaces the lookup of the host names in the domain "test". All are
// 127.0.0.1 except those in getaddrinfo().
#define _GNU_SOURCE
#include <dlfcn.h>
#include <netdb.h>
#include <stddef.h>
#include <string.h>
#include <unistd.h>

typedef int Lookup(const char*, const char*, const struct addrinfo*, struct addrinfo**);

static Lookup* systemLookup(void) {
    Lookup* lookup;
    *(void**)&lookup = dlsym(RTLD_NEXT, "getaddrinfo");
    return lookup;
}

static int isInTestDomain(const char* aName) {
    const char* const dot = strchr(aName, '.');
    return dot != NULL && (strcmp(dot, ".test") == 0 || strcmp(dot, ".test.") == 0);
}

int getaddrinfo(const char* aName, const char* aPort, const struct addrinfo* aHints,
                struct addrinfo** aResult) {
    if (aName == NULL || !isInTestDomain(aName) || (aHints->ai_flags & AI_NUMERICHOST) != 0) {
        return systemLookup()(aName, aPort, aHints, aResult);
    }
    if (strcmp(aName, "missing.test") == 0) return EAI_NONAME;
    if (strcmp(aName, "broken.test") == 0) return EAI_AGAIN;
    while (strcmp(aName, "slow.test") == 0) pause();
    static int failures = 1; // only the first lookup in a process
    if (strcmp(aName, "repeated.test") == 0 && failures-- > 0) return EAI_AGAIN;
    const char* const first = strcmp(aName, "second.test") == 0 ? "127.0.0.2" : "127.0.0.1";
    const int error = systemLookup()(first, aPort, aHints, aResult);
    if (error != 0 || strcmp(aName, "second.test") != 0) return error;
    return systemLookup()("127.0.0.1", aPort, aHints, &(*aResult)->ai_next);
}

// SPDX-License-Identifier: MIT

// Plugin template in C, without a JSON library: answers with the certificate in the PEM file that
// the member "file" of the request names. Replace answer() and the error codes. A plugin that reads
// more than one or two texts from its request should use a JSON library.
//
//     gcc -shared -fPIC -o my_plugin.so my_plugin.c
#include <certbridge/plugin.h>

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// Callers make decisions by these numbers: once published, a number keeps its meaning.
enum ErrorCode {
    InvalidRequest = 1, // "file" is missing or not a file name
    NotReadable = 2,    // the file cannot be opened or read, or is too large
    NoCertificate = 3   // the file contains no certificate in PEM form
};

// ---- The reply. certbridge reads it after the call, so it must not be on the stack. A static
// array never has to be allocated or freed.

static char reply[65536];
static size_t replyLength;

// Drops the character if the array is full. A full array is an error, since the terminating NUL
// does not fit; see getCertificate().
static void put(char aCharacter) {
    if (replyLength < sizeof(reply)) reply[replyLength++] = aCharacter;
}

static void putJson(const char* aJson) {
    while (*aJson != '\0') put(*aJson++);
}

// Appends the contents of a JSON string. aText must be valid UTF-8.
static void putEscaped(const char* aText) {
    static const char digits[] = "0123456789abcdef";
    for (; *aText != '\0'; ++aText) {
        const unsigned char byte = (unsigned char)*aText;
        if (byte < 0x20) {
            putJson("\\u00");
            put(digits[byte >> 4]);
            put(digits[byte & 15]);
        } else {
            if (byte == '"' || byte == '\\') put('\\');
            put(*aText);
        }
    }
}

// Appends an element of the list. aName must not need escapes.
static void putElement(const char* aName, const char* aText) {
    putJson("{\"name\":\"");
    putJson(aName);
    putJson("\",\"value\":\"");
    putEscaped(aText);
    putJson("\"}");
}

// Makes the reply an error about aSubject, which is at most a file name. Returns false, since the
// reply is not a response.
static bool fail(enum ErrorCode aCode, const char* aSubject, const char* aProblem) {
    char code[16];
    snprintf(code, sizeof(code), "%d", (int)aCode);
    replyLength = 0;
    putJson("{\"error\":[{\"name\":\"errorCode\",\"value\":");
    putJson(code);
    putJson("},{\"name\":\"erroMessage\",\"value\":\""); // sic
    putEscaped(aSubject);
    putEscaped(aProblem);
    putJson("\"}]}");
    return false;
}

// ---- The request: {"request":[{"name":"file","value":"a.pem"}, ...]}. certbridge writes it
// without white space and escapes only control characters, quotation marks and backslashes.

// Skips aText if the input continues with it.
static bool accept(const char** aAt, const char* aText) {
    const size_t length = strlen(aText);
    if (strncmp(*aAt, aText, length) != 0) return false;
    *aAt += length;
    return true;
}

// Returns the position after the element that begins at aAt, whatever its values contain.
static const char* skipElement(const char* aAt) {
    size_t depth = 0;
    bool inString = false;
    do {
        if (*aAt == '\\')
            ++aAt; // an escaped quotation mark does not end the string
        else if (*aAt == '"')
            inString = !inString;
        else if (!inString && (*aAt == '{' || *aAt == '['))
            ++depth;
        else if (!inString && (*aAt == '}' || *aAt == ']'))
            --depth;
        ++aAt;
    } while (depth > 0);
    return aAt;
}

// Decodes the escape sequence at *aAt and moves *aAt to its last character.
static char readEscape(const char** aAt) {
    static const char letters[] = "btnfr";
    static const char controls[] = "\b\t\n\f\r";
    const char letter = *++*aAt;
    if (letter == 'u') {
        const char digits[] = {(*aAt)[3], (*aAt)[4], '\0'};
        *aAt += 4;
        return (char)strtol(digits, NULL, 16);
    }
    const char* const found = strchr(letters, letter);
    if (!found) return letter;
    return controls[found - letters];
}

// Copies the JSON string at aAt. Returns false if there is no string, if it does not fit, or if it
// contains a NUL, at which system calls would truncate it.
static bool readText(const char* aAt, char* aDest, size_t aSize) {
    size_t length = 0;
    if (*aAt++ != '"') return false;
    for (; *aAt != '"'; ++aAt) {
        char character = *aAt;
        if (character == '\\') character = readEscape(&aAt);
        if (character == '\0' || length + 1 == aSize) return false;
        aDest[length++] = character;
    }
    aDest[length] = '\0';
    return true;
}

// Copies the value of the first member "file".
static bool readFileName(const char* aRequest, char* aDest, size_t aSize) {
    if (!accept(&aRequest, "{\"request\":[")) return false;
    while (*aRequest == '{') {
        const char* value = aRequest;
        if (accept(&value, "{\"name\":\"file\",\"value\":")) return readText(value, aDest, aSize);
        aRequest = skipElement(aRequest);
        accept(&aRequest, ",");
    }
    return false;
}

// ---- The task of this plugin

// Reads the file as a string. On Windows fopen() expects the name in the active code page instead
// of UTF-8, so only ASCII names work there.
static bool readFile(const char* aName, char* aDest, size_t aSize) {
    FILE* const file = fopen(aName, "rb");
    if (!file) return false;
    const size_t length = fread(aDest, 1, aSize, file);
    const bool isRead = !ferror(file) && length < aSize;
    fclose(file);
    aDest[isRead ? length : 0] = '\0';
    return isRead;
}

// Returns the certificate in aText, terminated by a NUL written to aText; null if there is none.
static const char* findCertificate(char* aText) {
    static const char endLine[] = "-----END CERTIFICATE-----";
    char* const begin = strstr(aText, "-----BEGIN CERTIFICATE-----");
    char* const end = begin ? strstr(begin, endLine) : NULL;
    if (!end) return NULL;
    end[sizeof(endLine) - 1] = '\0';
    // A reply must be valid UTF-8: check all external bytes before they are copied to it.
    for (const char* at = begin; *at != '\0'; ++at) {
        if ((unsigned char)*at >= 0x7F) return NULL;
    }
    return begin;
}

// Makes the reply a response or an error; returns whether it is a response.
static bool answer(const char* aRequest) {
    static char fileName[4096];
    static char text[32768];
    if (!readFileName(aRequest, fileName, sizeof(fileName)) || fileName[0] == '\0') {
        return fail(InvalidRequest, "", "member \"file\" must be a file name");
    }
    if (!readFile(fileName, text, sizeof(text))) {
        return fail(NotReadable, fileName, ": cannot be read");
    }
    const char* const certificate = findCertificate(text);
    if (!certificate) return fail(NoCertificate, fileName, ": holds no certificate in PEM form");
    replyLength = 0;
    putJson("{\"response\":[");
    putElement("file", fileName);
    putJson(",");
    putElement("pem", certificate);
    putJson("]}");
    return true;
}

// ---- The contract

static int32_t CERTBRIDGE_CALL getPluginType(Plugin* aThis) {
    (void)aThis;
    return 1;
}

static void CERTBRIDGE_CALL getCertificate(Plugin* aThis, const char* aRequest,
                                           const char** aResponse, const char** aError) {
    (void)aThis;
    bool isResponse = answer(aRequest);
    if (replyLength >= sizeof(reply)) {
        isResponse = fail(NotReadable, "", "the answer is too long");
    }
    reply[replyLength < sizeof(reply) ? replyLength : sizeof(reply) - 1] = '\0';
    *(isResponse ? aResponse : aError) = reply;
}

static const PluginOperations operations = {.getPluginType = getPluginType,
                                            .getCertificate = getCertificate};

Plugin* GetPlugin(void) {
    static Plugin plugin = {&operations};
    return &plugin;
}

// A plugin to start from, in C and without any library: answers with the certificate in the PEM
// file that the request's member "file" names. Replace answer() and the codes. A plugin that reads
// more than a text or two from its request is better off with a JSON library.
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// Callers decide by these numbers: once published, a number keeps its meaning.
enum ErrorCode {
    InvalidRequest = 1, // "file" is missing or no file name
    NotReadable = 2,    // the file cannot be opened or read, or is too large
    NoCertificate = 3   // the file holds no certificate in PEM form
};

// ---- The reply. Certbridge reads it after the call, so it must not lie on the stack. A static
// array needs no memory that could run out and nobody to free it.

static char reply[65536];
static size_t replyLength;

// What does not fit is left out; a reply that fills the array has no room for its end.
static void put(char aCharacter) {
    if (replyLength < sizeof(reply)) reply[replyLength++] = aCharacter;
}

static void putJson(const char* aJson) {
    while (*aJson != '\0') put(*aJson++);
}

// The inside of a JSON string. aText must be valid UTF-8.
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

// For names that need no escapes.
static void putElement(const char* aName, const char* aText) {
    putJson("{\"name\":\"");
    putJson(aName);
    putJson("\",\"value\":\"");
    putEscaped(aText);
    putJson("\"}");
}

// Leaves an error in the reply, which has room for the longest file name. Returns false: it is no
// response.
static bool fail(enum ErrorCode aCode, const char* aSubject, const char* aProblem) {
    char code[16];
    snprintf(code, sizeof(code), "%d", (int)aCode);
    replyLength = 0;
    putJson("{\"error\":[{\"name\":\"errorCode\",\"value\":");
    putJson(code);
    putJson("},{\"name\":\"erroMessage\",\"value\":\""); // the contract spells it so
    putEscaped(aSubject);
    putEscaped(aProblem);
    putJson("\"}]}");
    return false;
}

// ---- The request: {"request":[{"name":"file","value":"a.pem"}, ...]}, as certbridge writes it:
// without white space, and with no characters escaped but controls, quotation marks and
// backslashes.

// Moves past aText if it comes next.
static bool accept(const char** aAt, const char* aText) {
    const size_t length = strlen(aText);
    if (strncmp(*aAt, aText, length) != 0) return false;
    *aAt += length;
    return true;
}

// Returns the place behind the element that begins at aAt, however deep the values in it are.
static const char* skipElement(const char* aAt) {
    size_t depth = 0;
    bool inString = false;
    do {
        if (*aAt == '\\')
            ++aAt; // whatever it escapes is not the end of the string
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

// The character that the escape at *aAt means; leaves *aAt on the last one that belongs to it.
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

// Copies the JSON string at aAt. Returns false if there is none, if it does not fit, or if it holds
// a NUL, which would cut it.
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

// Copies the text of the first member "file".
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

// ---- What this plugin does

// Fills aDest with the text of the file. Windows takes the name in the active code page, not in
// UTF-8: there this serves for plain ASCII.
static bool readFile(const char* aName, char* aDest, size_t aSize) {
    FILE* const file = fopen(aName, "rb");
    if (!file) return false;
    const size_t length = fread(aDest, 1, aSize, file);
    const bool isRead = !ferror(file) && length < aSize;
    fclose(file);
    aDest[isRead ? length : 0] = '\0';
    return isRead;
}

// Returns the certificate in aText, which is cut behind it; null if there is none.
static const char* findCertificate(char* aText) {
    static const char endLine[] = "-----END CERTIFICATE-----";
    char* const begin = strstr(aText, "-----BEGIN CERTIFICATE-----");
    char* const end = begin ? strstr(begin, endLine) : NULL;
    if (!end) return NULL;
    end[sizeof(endLine) - 1] = '\0';
    // A reply must be valid UTF-8: look at bytes from outside before they go there.
    for (const char* at = begin; *at != '\0'; ++at) {
        if ((unsigned char)*at >= 0x7F) return NULL;
    }
    return begin;
}

// Leaves a response in the reply, or an error; returns whether it is a response.
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

// ---- The contract: an object whose first word points to a table of ten addresses

typedef void (*Operation)(void);

// MEMBER_CALL is how an operation gets its object; see CMakeLists.txt.
static int32_t MEMBER_CALL getPluginType(void* aThis) {
    (void)aThis;
    return 1;
}

static void MEMBER_CALL getCertificate(void* aThis, const char* aRequest, const char** aResponse,
                                       const char** aError) {
    (void)aThis;
    bool isResponse = answer(aRequest);
    if (replyLength == sizeof(reply)) {
        isResponse = fail(NotReadable, "", "the answer is too long");
    }
    reply[replyLength] = '\0';
    *(isResponse ? aResponse : aError) = reply;
}

// The first eight are never called.
static const Operation operations[10] = {
    [8] = (Operation)getPluginType, [9] = (Operation)getCertificate};
static const Operation* const plugin = operations;

const void* GetPlugin(void) {
    return &plugin;
}

// SPDX-License-Identifier: MIT

// A PKCS#11 module with a token "fake" that holds the certificate in the file FAKE_CERTIFICATE. The
// words in FAKE make it misbehave or change the token; the PIN is 1234.
#include <p11-kit/pkcs11.h>

#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static unsigned char certificate[4096];
static CK_ULONG certificateSize;
static CK_ULONG remaining;
static bool isLoggedIn;
static int logins;

static bool fake(const char* aWord) {
    const char* const words = getenv("FAKE");
    return words != NULL && strstr(words, aWord) != NULL;
}

static CK_RV initialize(void* aArguments) {
    (void)aArguments;
    if (fake("prints")) printf("from the module");
    while (fake("hangs")) sleep(1);
    if (fake("broken")) return CKR_DEVICE_ERROR;
    if (fake("unknown-error")) return CKR_VENDOR_DEFINED | 1;
    FILE* const file = fopen(getenv("FAKE_CERTIFICATE"), "rb");
    if (file == NULL) return CKR_HOST_MEMORY;
    certificateSize = fread(certificate, 1, sizeof certificate, file);
    fclose(file);
    return CKR_OK;
}

static CK_RV finalize(void* aReserved) {
    (void)aReserved;
    return CKR_OK;
}

static CK_RV getSlotList(CK_BBOOL aPresent, CK_SLOT_ID* aSlots, CK_ULONG* aCount) {
    (void)aPresent;
    const CK_ULONG count = fake("twins") ? 2 : 1;
    if (aSlots == NULL) {
        *aCount = fake("many-slots") ? (CK_ULONG)1 << 30 : count;
        return CKR_OK;
    }
    if (fake("growing-slots")) return CKR_BUFFER_TOO_SMALL;
    *aCount = fake("more-slots") ? 2 : count;
    for (CK_ULONG i = 0; i < count; ++i) aSlots[i] = i;
    return CKR_OK;
}

static CK_RV getTokenInfo(CK_SLOT_ID aSlot, CK_TOKEN_INFO* aInfo) {
    (void)aSlot;
    if (fake("removed")) return CKR_TOKEN_NOT_PRESENT;
    memset(aInfo, ' ', sizeof *aInfo);
    memcpy(aInfo->label, "fake", 4);
    aInfo->flags = fake("blank") ? 0 : CKF_TOKEN_INITIALIZED;
    if (fake("hides")) aInfo->flags |= CKF_LOGIN_REQUIRED | CKF_USER_PIN_INITIALIZED;
    if (fake("locked")) aInfo->flags |= CKF_USER_PIN_LOCKED;
    if (fake("final")) aInfo->flags |= CKF_USER_PIN_FINAL_TRY;
    if (logins > 0 && fake("then-few")) aInfo->flags |= CKF_USER_PIN_COUNT_LOW;
    if (logins > 0 && fake("then-last")) aInfo->flags |= CKF_USER_PIN_FINAL_TRY;
    if (logins > 0 && fake("then-none")) aInfo->flags |= CKF_USER_PIN_LOCKED;
    return CKR_OK;
}

static CK_RV openSession(CK_SLOT_ID aSlot, CK_FLAGS aFlags, void* aApplication, CK_NOTIFY aNotify,
                         CK_SESSION_HANDLE* aSession) {
    (void)aFlags, (void)aApplication, (void)aNotify;
    *aSession = aSlot + 1;
    return fake("no-memory") ? CKR_HOST_MEMORY : CKR_OK;
}

static CK_RV closeSession(CK_SESSION_HANDLE aSession) {
    (void)aSession;
    return CKR_OK;
}

static CK_RV login(CK_SESSION_HANDLE aSession, CK_USER_TYPE aUser, unsigned char* aPin,
                   CK_ULONG aSize) {
    (void)aSession, (void)aUser;
    // A second try may lock a real token.
    if (logins++ > 0 || fake("forbids-login")) abort();
    if (fake("refuses")) return CKR_PIN_LOCKED;
    if (fake("expired")) return CKR_PIN_EXPIRED;
    isLoggedIn = aSize == 4 && memcmp(aPin, "1234", 4) == 0;
    return isLoggedIn ? CKR_OK : CKR_PIN_INCORRECT;
}

static CK_RV logout(CK_SESSION_HANDLE aSession) {
    (void)aSession;
    isLoggedIn = false;
    return CKR_OK;
}

static CK_RV findObjectsInit(CK_SESSION_HANDLE aSession, CK_ATTRIBUTE* aCriteria, CK_ULONG aCount) {
    (void)aSession, (void)aCriteria, (void)aCount;
    remaining = fake("hides") && !isLoggedIn ? 0 : 1;
    return CKR_OK;
}

static CK_RV findObjects(CK_SESSION_HANDLE aSession, CK_OBJECT_HANDLE* aObjects, CK_ULONG aMaximum,
                         CK_ULONG* aCount) {
    (void)aSession;
    if (fake("endless")) remaining = aMaximum;
    *aCount = remaining;
    for (CK_ULONG i = 0; i < remaining; ++i) aObjects[i] = 1;
    remaining = 0;
    if (fake("many-objects")) *aCount = aMaximum + 1;
    return CKR_OK;
}

static CK_RV findObjectsFinal(CK_SESSION_HANDLE aSession) {
    (void)aSession;
    return CKR_OK;
}

static CK_RV copyAttribute(CK_ATTRIBUTE* aAttribute, const void* aValue, CK_ULONG aSize) {
    if (aAttribute->pValue == NULL) {
        aAttribute->ulValueLen = fake("huge") ? (CK_ULONG)-2 : aSize - (fake("growing") ? 1 : 0);
        return CKR_OK;
    }
    const CK_ULONG size = aAttribute->ulValueLen < aSize ? aAttribute->ulValueLen : aSize;
    memcpy(aAttribute->pValue, aValue, size);
    aAttribute->ulValueLen = aSize;
    return CKR_OK;
}

static CK_RV getAttributeValue(CK_SESSION_HANDLE aSession, CK_OBJECT_HANDLE aObject,
                               CK_ATTRIBUTE* aAttribute, CK_ULONG aCount) {
    (void)aSession, (void)aObject, (void)aCount;
    if (fake("prints")) printf("from the module");
    if (aAttribute->type == CKA_VALUE && !fake("no-value")) {
        return copyAttribute(aAttribute, certificate, fake("cut") ? 99 : certificateSize);
    }
    if (aAttribute->type == CKA_LABEL && !fake("bare")) return copyAttribute(aAttribute, "mine", 4);
    if (aAttribute->type == CKA_ID && fake("empty-id")) return copyAttribute(aAttribute, "", 0);
    if (aAttribute->type == CKA_ID && !fake("bare"))
        return copyAttribute(aAttribute, "\x0A\xBC", 2);
    aAttribute->ulValueLen = CK_UNAVAILABLE_INFORMATION;
    return CKR_ATTRIBUTE_TYPE_INVALID;
}

CK_RV C_GetFunctionList(CK_FUNCTION_LIST** aList) {
    static CK_FUNCTION_LIST functions = {
        .version = {2, 20},
        .C_Initialize = initialize,
        .C_Finalize = finalize,
        .C_GetFunctionList = C_GetFunctionList,
        .C_GetSlotList = getSlotList,
        .C_GetTokenInfo = getTokenInfo,
        .C_OpenSession = openSession,
        .C_CloseSession = closeSession,
        .C_Login = login,
        .C_Logout = logout,
        .C_FindObjectsInit = findObjectsInit,
        .C_FindObjects = findObjects,
        .C_FindObjectsFinal = findObjectsFinal,
        .C_GetAttributeValue = getAttributeValue,
    };
    if (fake("incomplete")) functions.C_FindObjectsFinal = NULL;
    *aList = fake("no-functions") ? NULL : &functions;
    return fake("mute") ? CKR_GENERAL_ERROR : CKR_OK;
}

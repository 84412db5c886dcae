// SPDX-License-Identifier: MIT
#include "start_tls.h"

#include "plugins/common/failure.h"

#include <openssl/asn1.h>
#include <openssl/err.h>

#include <array>

namespace plugins {

namespace {

[[noreturn]] void refuse(const std::string& aReason) {
    throw Failure(ErrorCode::StartTlsRefused, aReason);
}

// Refuses a reply that does not begin with aStart.
void expect(const std::string& aReply, std::string_view aStart) {
    constexpr std::size_t maximumShown = 200;
    if (aReply.starts_with(aStart)) return;
    refuse("the server answered \"" + aReply.substr(0, maximumShown) + "\"");
}

bool contains(std::string_view aText, std::string_view aPart) {
    return aText.find(aPart) != aText.npos;
}

// ---- SMTP (RFC 3207)

// All lines of a reply; the last has no hyphen after the code.
std::string receiveSmtpReply(PlainDialogue& aDialogue) {
    std::string reply;
    std::string line;
    do {
        line = aDialogue.receiveLine();
        if (!reply.empty()) reply += '\n';
        reply += line;
    } while (line.size() > 3 && line[3] == '-');
    return reply;
}

void startSmtp(PlainDialogue& aDialogue, const std::string&) {
    expect(receiveSmtpReply(aDialogue), "220");
    aDialogue.send("EHLO localhost\r\n");
    expect(receiveSmtpReply(aDialogue), "250");
    aDialogue.send("STARTTLS\r\n");
    expect(receiveSmtpReply(aDialogue), "220");
}

// ---- IMAP (RFC 3501)

void startImap(PlainDialogue& aDialogue, const std::string&) {
    expect(aDialogue.receiveLine(), "* OK");
    aDialogue.send("a STARTTLS\r\n");
    std::string reply;
    while (!reply.starts_with("a ")) reply = aDialogue.receiveLine(); // skips untagged lines
    expect(reply, "a OK");
}

// ---- POP3 (RFC 2595)

void startPop3(PlainDialogue& aDialogue, const std::string&) {
    expect(aDialogue.receiveLine(), "+OK");
    aDialogue.send("STLS\r\n");
    expect(aDialogue.receiveLine(), "+OK");
}

// ---- LDAP (RFC 4511)

// The rest of a BER element after its tag and its first length byte.
std::string receiveBerContent(PlainDialogue& aDialogue, unsigned char aLength) {
    constexpr unsigned char longForm = 0x80;
    constexpr std::size_t maximumLengthBytes = 3; // more than a dialogue can be long
    if (aLength < longForm) return aDialogue.receiveBytes(aLength);
    const std::size_t count = aLength - longForm;
    if (count == 0 || count > maximumLengthBytes) refuse("the server sent no LDAP message");
    std::size_t length = 0;
    for (const char byte : aDialogue.receiveBytes(count)) {
        length = length << 8 | static_cast<unsigned char>(byte);
    }
    return aDialogue.receiveBytes(length);
}

// Moves past the header of the element, which must have the tag and the class; returns whether it
// has. The content lies within the text.
bool enter(const unsigned char*& aPosition, const unsigned char* aEnd, int aTag, int aClass) {
    long length = 0;
    int tag = 0;
    int tagClass = 0;
    const int flags = ASN1_get_object(&aPosition, &length, &tag, &tagClass, aEnd - aPosition);
    constexpr int invalid = 0x80;
    ERR_clear_error();
    return (flags & invalid) == 0 && tag == aTag && tagClass == aClass && length > 0;
}

// The result code in the content of an LDAPMessage with the response to request 1; negative if it
// is none.
int ldapResult(const std::string& aContent) {
    constexpr int extendedResponse = 24;
    const auto* position = reinterpret_cast<const unsigned char*>(aContent.data());
    const auto* const end = position + aContent.size();
    if (!enter(position, end, V_ASN1_INTEGER, V_ASN1_UNIVERSAL) || *position++ != 1) return -1;
    if (!enter(position, end, extendedResponse, V_ASN1_APPLICATION)) return -1;
    if (!enter(position, end, V_ASN1_ENUMERATED, V_ASN1_UNIVERSAL)) return -1;
    return *position;
}

void startLdap(PlainDialogue& aDialogue, const std::string&) {
    using namespace std::string_view_literals;
    // LDAPMessage { 1, ExtendedRequest { requestName } }
    aDialogue.send("\x30\x1D\x02\x01\x01\x77\x18\x80\x16"
                   "1.3.6.1.4.1.1466.20037"sv);
    const auto header = aDialogue.receiveBytes(2);
    if (header[0] != '\x30') refuse("the server sent no LDAP message");
    const int result =
        ldapResult(receiveBerContent(aDialogue, static_cast<unsigned char>(header[1])));
    if (result < 0) refuse("the server sent no answer to the LDAP request");
    if (result > 0) refuse("the server answered with LDAP result " + std::to_string(result));
}

// ---- PostgreSQL (frontend/backend protocol 3.0, SSLRequest)

void startPostgres(PlainDialogue& aDialogue, const std::string&) {
    using namespace std::string_view_literals;
    aDialogue.send("\0\0\0\x08\x04\xD2\x16\x2F"sv); // length, then 1234 and 5679
    expect(aDialogue.receiveBytes(1), "S");
}

// ---- XMPP (RFC 6120)

bool endsFeatures(std::string_view aTag) {
    return contains(aTag, "features") && (contains(aTag, "</") || aTag.ends_with("/>"));
}

void startXmpp(PlainDialogue& aDialogue, const std::string& aServerName) {
    aDialogue.send("<?xml version='1.0'?><stream:stream to='" + aServerName +
                   "' xmlns='jabber:client' xmlns:stream='http://etherx.jabber.org/streams' "
                   "version='1.0'>");
    bool isOffered = false;
    std::string tag;
    while (!endsFeatures(tag)) {
        tag = aDialogue.receiveThrough(">");
        if (contains(tag, "<stream:error")) refuse("the server answered with a stream error");
        isOffered = isOffered || contains(tag, "urn:ietf:params:xml:ns:xmpp-tls");
    }
    if (!isOffered) refuse("the server does not offer TLS");
    aDialogue.send("<starttls xmlns='urn:ietf:params:xml:ns:xmpp-tls'/>");
    tag = aDialogue.receiveThrough(">");
    expect(tag, "<proceed");
    if (!tag.ends_with("/>")) aDialogue.receiveThrough(">"); // the end tag
}

// ---- The protocols

struct Protocol {
    std::string_view name;
    StartTls start;
};

constexpr std::array protocols = {Protocol{"smtp", startSmtp},         Protocol{"imap", startImap},
                                  Protocol{"pop3", startPop3},         Protocol{"ldap", startLdap},
                                  Protocol{"postgres", startPostgres}, Protocol{"xmpp", startXmpp}};

} // namespace

StartTls findStartTls(std::string_view aProtocol) {
    std::string known;
    for (const auto& protocol : protocols) {
        if (protocol.name == aProtocol) return protocol.start;
        known += known.empty() ? "\"" : ", \"";
        known += std::string(protocol.name) + '"';
    }
    throw Failure(ErrorCode::InvalidRequest, "member \"startTls\" must be one of " + known);
}

} // namespace plugins

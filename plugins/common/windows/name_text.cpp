// SPDX-License-Identifier: MIT
#include "name_text.h"

#include <algorithm>
#include <array>

namespace plugins {

namespace {

struct Attribute {
    std::string_view identifier;
    std::string_view name;
};
// The names of RFC 2253 or, if it defines none, of OpenSSL. Those of the system differ.
constexpr std::array attributes = {
    Attribute{szOID_COMMON_NAME, "CN"},
    Attribute{szOID_SUR_NAME, "SN"},
    Attribute{szOID_DEVICE_SERIAL_NUMBER, "serialNumber"},
    Attribute{szOID_COUNTRY_NAME, "C"},
    Attribute{szOID_LOCALITY_NAME, "L"},
    Attribute{szOID_STATE_OR_PROVINCE_NAME, "ST"},
    Attribute{szOID_STREET_ADDRESS, "street"},
    Attribute{szOID_ORGANIZATION_NAME, "O"},
    Attribute{szOID_ORGANIZATIONAL_UNIT_NAME, "OU"},
    Attribute{szOID_TITLE, "title"},
    Attribute{szOID_GIVEN_NAME, "GN"},
    Attribute{szOID_INITIALS, "initials"},
    Attribute{szOID_RSA_emailAddr, "emailAddress"},
    Attribute{"0.9.2342.19200300.100.1.1", "UID"},
    Attribute{szOID_DOMAIN_COMPONENT, "DC"},
};

std::string escaped(std::string_view aText) {
    constexpr std::string_view special = ",+\"\\<>;";
    std::string text;
    for (std::size_t i = 0; i < aText.size(); ++i) {
        const char character = aText[i];
        const auto byte = static_cast<unsigned char>(character);
        const bool isFirst = i == 0;
        const bool isLast = i + 1 == aText.size();
        if (byte < 0x20 || byte == 0x7F) {
            text += '\\' + toHex({&byte, 1});
            continue;
        }
        if (special.find(character) != special.npos || (isFirst && character == '#') ||
            ((isFirst || isLast) && character == ' ')) {
            text += '\\';
        }
        text += character;
    }
    return text;
}

bool isText(const CERT_RDN_ATTR& aAttribute) {
    return aAttribute.dwValueType != CERT_RDN_ENCODED_BLOB &&
           aAttribute.dwValueType != CERT_RDN_OCTET_STRING;
}

std::string encodedText(const CERT_RDN_ATTR& aAttribute) {
    CERT_NAME_VALUE value{aAttribute.dwValueType, aAttribute.Value};
    if (value.dwValueType == CERT_RDN_ENCODED_BLOB) return '#' + toHex(bytesOf(value.Value));
    if (isText(aAttribute)) value.Value.cbData = 0; // up to the terminating zero
    BYTE* der = nullptr;
    DWORD size = 0;
    if (!CryptEncodeObjectEx(certificateEncoding, X509_UNICODE_ANY_STRING, &value,
                             CRYPT_ENCODE_ALLOC_FLAG, nullptr, &der, &size)) {
        failPart("name");
    }
    const LocalHandle<BYTE> owner(der);
    return '#' + toHex({der, size});
}

std::string attributeText(const CERT_RDN_ATTR& aAttribute) {
    const std::string_view identifier(aAttribute.pszObjId);
    const auto* const known =
        std::find_if(attributes.begin(), attributes.end(),
                     [&](const Attribute& aKnown) { return aKnown.identifier == identifier; });
    // A value whose type has no short name is shown in its encoded form.
    if (known == attributes.end()) return std::string(identifier) + '=' + encodedText(aAttribute);
    return std::string(known->name) + '=' +
           (isText(aAttribute) ? escaped(textOf(aAttribute.Value)) : encodedText(aAttribute));
}

} // namespace

std::string nameText(Bytes aName) {
    const auto name = decode<CERT_NAME_INFO>(X509_UNICODE_NAME, aName, "name");
    std::string text;
    // The most particular part comes last in the certificate, and first in the text.
    for (auto part = name->cRDN; part > 0; --part) {
        const auto& set = name->rgRDN[part - 1];
        for (auto i = set.cRDNAttr; i > 0; --i) {
            if (!text.empty()) text += i == set.cRDNAttr ? ',' : '+';
            text += attributeText(set.rgRDNAttr[i - 1]);
        }
    }
    return text;
}

} // namespace plugins

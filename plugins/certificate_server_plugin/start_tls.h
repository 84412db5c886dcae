// SPDX-License-Identifier: MIT
#pragma once

#include "plain_dialogue.h"

#include <string>
#include <string_view>

namespace plugins {

/// Asks the server in plain text to change to TLS. @p aServerName is the name or the address by
/// which the client knows the server. Throws Failure: StartTlsRefused, with the server's reply; and
/// those of PlainDialogue.
using StartTls = void (*)(PlainDialogue& aDialogue, const std::string& aServerName);

/// Returns the function for "smtp", "imap", "pop3", "ldap", "postgres" or "xmpp". Throws Failure
/// (InvalidRequest) for any other protocol.
StartTls findStartTls(std::string_view aProtocol);

} // namespace plugins

// SPDX-License-Identifier: MIT
#include "plain_dialogue.h"

#include "plugins/common/failure.h"

namespace plugins {

namespace {

constexpr std::size_t maximumSize = 64 * 1024;

} // namespace

std::string PlainDialogue::receiveThrough(std::string_view aEnd) {
    std::size_t position;
    while ((position = mPending.find(aEnd)) == mPending.npos) receiveMore();
    return take(position + aEnd.size());
}

std::string PlainDialogue::receiveLine() {
    auto line = receiveThrough("\n");
    line.pop_back();
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

std::string PlainDialogue::receiveBytes(std::size_t aCount) {
    while (mPending.size() < aCount) receiveMore();
    return take(aCount);
}

void PlainDialogue::finish() const {
    if (mPending.empty()) return;
    throw Failure(ErrorCode::NoTls, "the server sent data ahead of the TLS handshake");
}

void PlainDialogue::receiveMore() {
    if (mReceived > maximumSize) {
        throw Failure(ErrorCode::NoTls, "the server sent too much data before TLS");
    }
    const auto bytes = mConnection.receive();
    if (bytes.empty()) {
        throw Failure(ErrorCode::NoTls, "the server closed the connection before TLS");
    }
    mPending += bytes;
    mReceived += bytes.size();
}

std::string PlainDialogue::take(std::size_t aCount) {
    auto text = mPending.substr(0, aCount);
    mPending.erase(0, aCount);
    return text;
}

} // namespace plugins

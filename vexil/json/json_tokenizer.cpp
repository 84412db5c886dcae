// SPDX-License-Identifier: MIT
#include "vexil/json/json_tokenizer.h"

#include "vexil/json/tokenizer_state.h"

namespace vexil {

JsonTokenizer::JsonTokenizer(InputStream& aStream, std::int32_t aFlags)
    : mState(std::make_unique<State>(aStream, aFlags)) {
}

JsonTokenizer::~JsonTokenizer() = default;

JsonToken JsonTokenizer::nextToken() {
    return mState->withScanner([](auto& aScanner) { return aScanner.next(); });
}

JsonToken JsonTokenizer::getToken() const {
    return mState->scan.token;
}

std::int32_t JsonTokenizer::getIntegerValue() const {
    return getToken() == JsonToken::Integer ? mState->scan.integerValue : 0;
}

double JsonTokenizer::getFloatValue() const {
    return getToken() == JsonToken::Float ? mState->scan.floatValue : 0.0;
}

const std::string& JsonTokenizer::getText() const {
    return mState->scan.moveTextToBuffer();
}

} // namespace vexil

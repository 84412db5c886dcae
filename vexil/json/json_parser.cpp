// SPDX-License-Identifier: MIT
#include "vexil/json/json_parser.h"

#include "vexil/exceptions.h"
#include "vexil/json/tokenizer_state.h"
#include "vexil/json/tree_stack.h"
#include "vexil/non_copyable.h"

#include <memory>

namespace vexil {

namespace {

/// Builds one tree from the tokens.
template <class Source>
class TreeBuilder : private NonCopyable {
public:
    explicit TreeBuilder(Scanner<Source>& aScanner)
        : mScanner(aScanner), mScan(aScanner.getScan()) {}

    std::unique_ptr<JsonValue> build() {
        bool isComplete = start();
        while (mTree.hasOpen()) isComplete = isComplete ? proceed() : start();
        return mTree.takeRoot();
    }

private:
    /// Parses the value that begins with the current token. Returns true if it is complete;
    /// otherwise it is a container, and the current token begins its first child.
    bool start() {
        switch (mScan.token) {
        case JsonToken::End:
            throw JsonParserError("no input");
        case JsonToken::ArrayBegin:
            return open(false);
        case JsonToken::ObjectBegin:
            return open(true);
        case JsonToken::Null:
            mTree.push(mTree.getFactory().createNull());
            break;
        case JsonToken::False:
            mTree.push(mTree.getFactory().createBoolean(false));
            break;
        case JsonToken::True:
            mTree.push(mTree.getFactory().createBoolean(true));
            break;
        case JsonToken::Integer:
            mTree.push(mTree.getFactory().createInteger(mScan.integerValue));
            break;
        case JsonToken::Float:
            mTree.push(mTree.getFactory().createFloat(mScan.floatValue));
            break;
        case JsonToken::String:
            mTree.push(mTree.getFactory().createString(mScan.text));
            break;
        default:
            throw JsonParserError("unexpected token");
        }
        return true;
    }

    bool open(bool aIsObject) {
        mTree.open(aIsObject);
        if (mScanner.next() != endOf(aIsObject)) return false;
        mTree.close();
        return true;
    }

    static JsonToken endOf(bool aIsObject) {
        return aIsObject ? JsonToken::ObjectEnd : JsonToken::ArrayEnd;
    }

    /// Continues after a complete value. Returns true if that completes the innermost container;
    /// otherwise the current token begins its next child.
    bool proceed() {
        const bool isInObject = mTree.isInObject();
        if (isInObject && mTree.countChildren() % 2 != 0) {
            // The token that completed the name is still the current one.
            if (mScan.token != JsonToken::String) throw JsonParserError("string expected");
            if (mScanner.next() != JsonToken::Colon) throw JsonParserError("':' expected");
        } else {
            const JsonToken token = mScanner.next();
            if (token == endOf(isInObject)) {
                mTree.close();
                return true;
            }
            if (token != JsonToken::Comma) {
                throw JsonParserError(isInObject ? "',' or '}' expected" : "',' or ']' expected");
            }
        }
        mScanner.next();
        return false;
    }

    Scanner<Source>& mScanner;
    const ScanState& mScan;
    TreeStack mTree;
};

} // namespace

struct JsonParser::State {
    JsonTokenizer::State& tokenizer;
    std::int32_t options;
};

JsonParser::JsonParser(JsonTokenizer& aTokenizer, std::int32_t aOptions)
    : mState(new State{*aTokenizer.mState, aOptions}) {
}

JsonParser::~JsonParser() = default;

JsonValue* JsonParser::parse(bool aExpectEnd) {
    const auto parseFrom = [aExpectEnd](auto& aScanner) {
        std::unique_ptr<JsonValue> root = TreeBuilder(aScanner).build();
        if (aExpectEnd && aScanner.next() != JsonToken::End) {
            throw JsonParserError("unexpected characters after value");
        }
        return root.release();
    };
    return mState->tokenizer.withScanner(parseFrom);
}

std::unique_ptr<JsonValue> parseJsonText(const ByteRange& aText) {
    MemoryInputStream stream(aText);
    JsonTokenizer tokenizer(stream, 0);
    tokenizer.nextToken();
    JsonParser parser(tokenizer, 0);
    return std::unique_ptr<JsonValue>(parser.parse(true));
}

} // namespace vexil

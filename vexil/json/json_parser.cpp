// SPDX-License-Identifier: MIT
#include "vexil/json/json_parser.h"

#include "vexil/assert.h"
#include "vexil/exceptions.h"
#include "vexil/json/arena_tree.h"
#include "vexil/json/tokenizer_state.h"
#include "vexil/non_copyable.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vexil {

namespace {

/// Builds one tree from the tokens, with explicit stacks instead of recursion. The children of a
/// container are kept on a stack until it is complete, so that it is created with its final size.
/// Values left on the stack by an exception are released with the arena.
template <class Source>
class TreeBuilder : private NonCopyable {
public:
    explicit TreeBuilder(Scanner<Source>& aScanner)
        : mScanner(aScanner), mScan(aScanner.getScan()), mArena(Arena::create()),
          mFactory(*mArena) {
        mFinished.reserve(32); // enough for a small text
        mOpen.reserve(8);
    }

    std::unique_ptr<JsonValue> build() {
        bool isComplete = start();
        while (!mOpen.empty()) isComplete = isComplete ? proceed() : start();
        // The root of a tree in an arena is a container; a scalar is returned as a copy.
        if (!mRoot) mRoot.reset(mFinished.back()->clone());
        return std::move(mRoot);
    }

private:
    /// A container that is not complete.
    struct OpenContainer {
        std::size_t firstChild; ///< index of its first child in mFinished
        bool isObject;
    };

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
            finish(mFactory.createNull());
            break;
        case JsonToken::False:
            finish(mFactory.createBoolean(false));
            break;
        case JsonToken::True:
            finish(mFactory.createBoolean(true));
            break;
        case JsonToken::Integer:
            finish(mFactory.createInteger(mScan.integerValue));
            break;
        case JsonToken::Float:
            finish(mFactory.createFloat(mScan.floatValue));
            break;
        case JsonToken::String:
            finish(mFactory.createString(mScan.text));
            break;
        default:
            throw JsonParserError("unexpected token");
        }
        return true;
    }

    void finish(JsonValue* aValue) { mFinished.push_back(aValue); }

    bool open(bool aIsObject) {
        mOpen.push_back({mFinished.size(), aIsObject});
        if (mScanner.next() != endOf(aIsObject)) return false;
        close();
        return true;
    }

    static JsonToken endOf(bool aIsObject) {
        return aIsObject ? JsonToken::ObjectEnd : JsonToken::ArrayEnd;
    }

    /// Continues after a complete value. Returns true if that completes the innermost container;
    /// otherwise the current token begins its next child.
    bool proceed() {
        const OpenContainer& container = mOpen.back();
        const bool isAfterName =
            container.isObject && (mFinished.size() - container.firstChild) % 2 != 0;
        if (isAfterName) {
            // The token that completed the name is still the current one.
            if (mScan.token != JsonToken::String) throw JsonParserError("string expected");
            if (mScanner.next() != JsonToken::Colon) throw JsonParserError("':' expected");
        } else {
            const JsonToken token = mScanner.next();
            if (token == endOf(container.isObject)) {
                close();
                return true;
            }
            if (token != JsonToken::Comma) {
                throw JsonParserError(container.isObject ? "',' or '}' expected"
                                                         : "',' or ']' expected");
            }
        }
        mScanner.next();
        return false;
    }

    /// Replaces the children of the innermost container by the container.
    void close() {
        const OpenContainer container = mOpen.back();
        const std::size_t count = mFinished.size() - container.firstChild;
        JsonValue** const slots = mFactory.createSlots(count);
        std::copy_n(mFinished.data() + container.firstChild, count, slots);
        const ContainerContents contents{container.isObject, slots, count};
        mFinished.resize(container.firstChild);
        mOpen.pop_back();
        if (mOpen.empty()) {
            mRoot.reset(createArenaRoot(mArena, contents));
        } else {
            finish(mFactory.createContainer(contents));
        }
    }

    Scanner<Source>& mScanner;
    const ScanState& mScan;
    Arena::Owner mArena;
    ArenaValueFactory mFactory;
    std::vector<JsonValue*> mFinished; ///< complete values without a container, innermost last
    std::vector<OpenContainer> mOpen;
    std::unique_ptr<JsonValue> mRoot;
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

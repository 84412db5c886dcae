#include "vexil/json/json_parser.h"

#include "vexil/exceptions.h"

#include <utility>
#include <vector>

namespace vexil {

namespace {

using Value = std::unique_ptr<JsonValue>;

/// Builds one tree from the tokens, with a stack of its own instead of recursion. What it holds
/// when an exception ends it is destroyed with it.
class TreeBuilder {
public:
    explicit TreeBuilder(JsonTokenizer& aTokenizer) : mTokenizer(aTokenizer) {}

    Value build() {
        Value done = start();
        while (!mLevels.empty()) done = done ? deliver(std::move(done)) : start();
        return done;
    }

private:
    struct Level {
        Value container;
        Value name; ///< of a member whose value is still to come
        bool isObject;
    };

    /// Parses the value that begins with the current token: gives a scalar or an empty container,
    /// or begins a level, gives nothing and stands on the first token of its first child.
    Value start() {
        switch (mTokenizer.getToken()) {
        case JsonToken::End:
            throw JsonParserError("no input");
        case JsonToken::ArrayBegin:
            return open(Value(JsonValue::createArray()), JsonToken::ArrayEnd, false);
        case JsonToken::ObjectBegin:
            return open(Value(JsonValue::createObject()), JsonToken::ObjectEnd, true);
        case JsonToken::Null:
            return Value(JsonValue::createNull());
        case JsonToken::False:
            return Value(JsonValue::createBoolean(false));
        case JsonToken::True:
            return Value(JsonValue::createBoolean(true));
        case JsonToken::Integer:
            return Value(JsonValue::createInteger(mTokenizer.getIntegerValue()));
        case JsonToken::Float:
            return Value(JsonValue::createFloat(mTokenizer.getFloatValue()));
        case JsonToken::String:
            return Value(JsonValue::createString(mTokenizer.getText()));
        default:
            throw JsonParserError("unexpected token");
        }
    }

    Value open(Value aContainer, JsonToken aEnd, bool aIsObject) {
        if (mTokenizer.nextToken() == aEnd) return aContainer;
        mLevels.push_back({std::move(aContainer), nullptr, aIsObject});
        return nullptr;
    }

    /// Puts a finished value into the innermost container: gives that container if it is complete
    /// now, or stands on the first token of its next child.
    Value deliver(Value aDone) {
        Level& level = mLevels.back();
        if (!level.isObject) {
            level.container->appendValue(aDone.get());
            static_cast<void>(aDone.release());
            return closeOrContinue(JsonToken::ArrayEnd, "',' or ']' expected");
        }
        if (level.name) {
            level.container->appendNameAndValue(level.name.get(), aDone.get());
            static_cast<void>(level.name.release());
            static_cast<void>(aDone.release());
            return closeOrContinue(JsonToken::ObjectEnd, "',' or '}' expected");
        }
        if (aDone->getType() != JsonType::String) throw JsonParserError("string expected");
        level.name = std::move(aDone);
        if (mTokenizer.nextToken() != JsonToken::Colon) throw JsonParserError("':' expected");
        mTokenizer.nextToken();
        return nullptr;
    }

    Value closeOrContinue(JsonToken aEnd, const char* aExpected) {
        const JsonToken token = mTokenizer.nextToken();
        if (token == aEnd) {
            Value done = std::move(mLevels.back().container);
            mLevels.pop_back();
            return done;
        }
        if (token != JsonToken::Comma) throw JsonParserError(aExpected);
        mTokenizer.nextToken();
        return nullptr;
    }

    JsonTokenizer& mTokenizer;
    std::vector<Level> mLevels;
};

} // namespace

struct JsonParser::State {
    JsonTokenizer& tokenizer;
    std::int32_t options;
};

JsonParser::JsonParser(JsonTokenizer& aTokenizer, std::int32_t aOptions)
    : mState(new State{aTokenizer, aOptions}) {
}

JsonParser::~JsonParser() = default;

JsonValue* JsonParser::parse(bool aExpectEnd) {
    Value root = TreeBuilder(mState->tokenizer).build();
    if (aExpectEnd && mState->tokenizer.nextToken() != JsonToken::End) {
        throw JsonParserError("unexpected characters after value");
    }
    return root.release();
}

std::unique_ptr<JsonValue> parseJsonText(const ByteRange& aText) {
    MemoryInputStream stream(aText);
    JsonTokenizer tokenizer(stream, 0);
    tokenizer.nextToken();
    JsonParser parser(tokenizer, 0);
    return std::unique_ptr<JsonValue>(parser.parse(true));
}

} // namespace vexil

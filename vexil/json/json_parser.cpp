#include "vexil/json/json_parser.h"

#include "vexil/exceptions.h"
#include "vexil/json/tokenizer_state.h"
#include "vexil/json/tree_pool.h"

#include <string_view>
#include <utility>
#include <vector>

namespace vexil {

namespace {

/// Builds one tree from the tokens, with a stack of its own instead of recursion. The children of a
/// container wait on that stack until it is complete, so it is created with its final size. What
/// waits when an exception ends the builder is destroyed with it.
template <class Source>
class TreeBuilder {
public:
    explicit TreeBuilder(Scanner<Source>& aScanner)
        : mScanner(aScanner), mScan(aScanner.getScan()), mPool(TreePool::create()) {
        mWaiting.reserve(32); // what a small text needs
        mLevels.reserve(8);
    }
    ~TreeBuilder() {
        for (JsonValue* const value : mWaiting) delete value;
    }
    TreeBuilder(const TreeBuilder&) = delete;
    TreeBuilder& operator=(const TreeBuilder&) = delete;

    std::unique_ptr<JsonValue> build() {
        bool isComplete = start();
        while (!mLevels.empty()) isComplete = isComplete ? proceed() : start();
        // A tree in a pool has a container for its root; a scalar comes out as a copy.
        if (!mRoot) mRoot.reset(mWaiting.back()->clone());
        return std::move(mRoot);
    }

private:
    /// A container that is not complete.
    struct Level {
        std::size_t firstChild; ///< where its children begin among those that wait
        bool isObject;
        bool isPlain; ///< none of its children needs to be destroyed
    };

    /// Parses the value that begins with the current token. True if it is complete; else it is a
    /// container, and the current token is the first of its first child.
    bool start() {
        switch (mScan.token) {
        case JsonToken::End:
            throw JsonParserError("no input");
        case JsonToken::ArrayBegin:
            return open(false);
        case JsonToken::ObjectBegin:
            return open(true);
        case JsonToken::Null:
            next() = mPool->createNull();
            break;
        case JsonToken::False:
            next() = mPool->createBoolean(false);
            break;
        case JsonToken::True:
            next() = mPool->createBoolean(true);
            break;
        case JsonToken::Integer:
            next() = mPool->createInteger(mScan.integerValue);
            break;
        case JsonToken::Float:
            next() = mPool->createFloat(mScan.floatValue);
            break;
        case JsonToken::String:
            addString(mScan.text);
            break;
        default:
            throw JsonParserError("unexpected token");
        }
        return true;
    }

    /// The place of the next value on the stack, there before the value so that none is lost.
    JsonValue*& next() { return mWaiting.emplace_back(nullptr); }

    void addString(std::string_view aText) {
        next() = mPool->createString(aText);
        if (aText.size() > TreePool::plainStringSize() && !mLevels.empty()) {
            mLevels.back().isPlain = false;
        }
    }

    bool open(bool aIsObject) {
        mLevels.push_back({mWaiting.size(), aIsObject, true});
        if (mScanner.next() != endOf(aIsObject)) return false;
        close();
        return true;
    }

    static JsonToken endOf(bool aIsObject) {
        return aIsObject ? JsonToken::ObjectEnd : JsonToken::ArrayEnd;
    }

    /// Goes on behind a complete value: true if that completes the innermost container, else the
    /// current token is the first of the next child.
    bool proceed() {
        const Level& level = mLevels.back();
        const bool isBehindName = level.isObject && (mWaiting.size() - level.firstChild) % 2 != 0;
        if (isBehindName) {
            // The token that completed the name is still the current one.
            if (mScan.token != JsonToken::String) throw JsonParserError("string expected");
            if (mScanner.next() != JsonToken::Colon) throw JsonParserError("':' expected");
        } else {
            const JsonToken token = mScanner.next();
            if (token == endOf(level.isObject)) {
                close();
                return true;
            }
            if (token != JsonToken::Comma) {
                throw JsonParserError(level.isObject ? "',' or '}' expected"
                                                     : "',' or ']' expected");
            }
        }
        mScanner.next();
        return false;
    }

    /// Puts a container in the place of the children that waited for it.
    void close() {
        const Level level = mLevels.back();
        const std::size_t count = mWaiting.size() - level.firstChild;
        next(); // there is room for the container before it takes its children over
        JsonValue** const slots = mWaiting.data() + level.firstChild;
        const TreePool::Children children{level.isObject, level.isPlain, slots, count};
        mLevels.pop_back();
        if (mLevels.empty()) {
            mRoot.reset(TreePool::createRoot(mPool, children));
            mWaiting.clear();
        } else {
            *slots = mPool->createContainer(children);
            mWaiting.resize(level.firstChild + 1);
            mLevels.back().isPlain &= level.isPlain;
        }
    }

    Scanner<Source>& mScanner;
    const Scan& mScan;
    TreePool::Owner mPool;            ///< outlives what waits
    std::vector<JsonValue*> mWaiting; ///< finished values without a container, innermost last
    std::vector<Level> mLevels;
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

// SPDX-License-Identifier: MIT
#include "vexil/json/json_tree_builder.h"

#include "vexil/json/arena_clone.h"
#include "vexil/json/tree_stack.h"

#include <new>

namespace vexil {

struct JsonTreeBuilder::State {
    TreeStack tree;
};

JsonTreeBuilder::JsonTreeBuilder() : mState(std::make_unique<State>()) {
}

JsonTreeBuilder::~JsonTreeBuilder() = default;

void JsonTreeBuilder::beginArray() {
    mState->tree.open(false);
}

void JsonTreeBuilder::beginObject() {
    mState->tree.open(true);
}

void JsonTreeBuilder::end() {
    mState->tree.close();
}

void JsonTreeBuilder::addString(std::string_view aText) {
    mState->tree.push(mState->tree.getFactory().createString(aText));
}

void JsonTreeBuilder::addCopy(const JsonValue& aValue) {
    TreeStack& tree = mState->tree;
    if (JsonValue* const copy = copyToArena(tree.getArena(), aValue)) {
        tree.push(copy);
    } else {
        tree.pushFromOutside(std::unique_ptr<JsonValue>(aValue.clone()));
    }
}

std::unique_ptr<JsonValue> JsonTreeBuilder::take() {
    return mState->tree.takeRoot();
}

} // namespace vexil

// SPDX-License-Identifier: MIT
#include "vexil/assert.h"
#include "vexil/json/arena_clone.h"
#include "vexil/json/containers.h"
#include "vexil/json/library_classes.h"

#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace vexil {

namespace {

/// Copies any tree value by value, with an explicit stack instead of recursion.
class TreeCopier {
public:
    std::unique_ptr<JsonValue> copy(const JsonValue& aRoot) {
        std::unique_ptr<JsonValue> done = start(aRoot);
        while (!mCopies.empty()) {
            if (done) deliver(std::move(done));
            done = advance();
        }
        return done;
    }

private:
    /// A container whose children are being copied.
    struct PartialCopy {
        const JsonValue* source;
        std::unique_ptr<JsonValue> copy;
        std::unique_ptr<JsonValue> value; ///< of a member whose name has not been copied yet
        std::uint32_t size;
        bool isObject;
    };

    /// Copies a value, or begins the copy of a container of this library and returns null.
    std::unique_ptr<JsonValue> start(const JsonValue& aSource) {
        if (asLibraryContainer(&aSource) == nullptr) {
            std::unique_ptr<JsonValue> copy(aSource.clone());
            if (!copy) throw std::bad_alloc();
            return copy;
        }
        const bool isObject = aSource.getType() == JsonType::Object;
        std::unique_ptr<JsonValue> copy(isObject ? JsonValue::createObject()
                                                 : JsonValue::createArray());
        mCopies.push_back({&aSource, std::move(copy), nullptr, aSource.getSize(), isObject});
        return nullptr;
    }

    /// Continues the innermost container: starts its next child, or returns its copy if complete.
    std::unique_ptr<JsonValue> advance() {
        PartialCopy& partial = mCopies.back();
        const std::uint32_t index = partial.copy->getSize();
        if (index == partial.size) {
            std::unique_ptr<JsonValue> done = std::move(partial.copy);
            mCopies.pop_back();
            return done;
        }
        return start(partial.value ? *partial.source->getNameAt(index)
                                   : *partial.source->getValueAt(index));
    }

    /// Adds a finished copy to the innermost container. The value of a member precedes its name.
    void deliver(std::unique_ptr<JsonValue> aDone) {
        PartialCopy& partial = mCopies.back();
        if (!partial.isObject) {
            partial.copy->appendValue(aDone.get());
        } else if (!partial.value) {
            partial.value = std::move(aDone);
            return;
        } else {
            partial.copy->appendNameAndValue(aDone.get(), partial.value.get());
            static_cast<void>(partial.value.release());
        }
        static_cast<void>(aDone.release());
    }

    std::vector<PartialCopy> mCopies;
};

JsonValue* cloneTree(const JsonValueContainer& aRoot, bool aIsObject) {
    if (JsonValue* const copy = cloneInArena(aRoot, aIsObject)) return copy;
    return TreeCopier().copy(aRoot).release();
}

} // namespace

JsonValue* JsonValueArray::clone() const {
    return cloneTree(*this, false);
}
JsonValue* JsonValueObject::clone() const {
    return cloneTree(*this, true);
}

} // namespace vexil

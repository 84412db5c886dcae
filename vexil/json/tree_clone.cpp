#include "vexil/json/containers.h"

#include <memory>
#include <utility>
#include <vector>

namespace vexil {

namespace {

/// Copies a tree with a stack of its own instead of recursion.
class TreeCopier {
public:
    std::unique_ptr<JsonValue> copy(const JsonValue& aRoot) {
        std::unique_ptr<JsonValue> done = start(aRoot);
        while (!mLevels.empty()) {
            if (done) deliver(std::move(done));
            done = advance();
        }
        return done;
    }

private:
    struct Level {
        const JsonValue* source;
        std::unique_ptr<JsonValue> copy;
        std::unique_ptr<JsonValue> value; ///< of a member whose name is still to be copied
        std::uint32_t size;
        bool isObject;
    };

    /// Copies a value at once, or begins a level for a container of ours and gives nothing yet.
    std::unique_ptr<JsonValue> start(const JsonValue& aSource) {
        if (JsonValueContainer::from(&aSource) == nullptr) {
            return std::unique_ptr<JsonValue>(aSource.clone());
        }
        const bool isObject = aSource.getType() == JsonType::Object;
        std::unique_ptr<JsonValue> copy(isObject ? JsonValue::createObject()
                                                 : JsonValue::createArray());
        mLevels.push_back({&aSource, std::move(copy), nullptr, aSource.getSize(), isObject});
        return nullptr;
    }

    /// Goes on with the innermost container: starts its next child, or gives its copy if complete.
    std::unique_ptr<JsonValue> advance() {
        Level& level = mLevels.back();
        const std::uint32_t index = level.copy->getSize();
        if (index == level.size) {
            std::unique_ptr<JsonValue> done = std::move(level.copy);
            mLevels.pop_back();
            return done;
        }
        return start(level.value ? *level.source->getNameAt(index)
                                 : *level.source->getValueAt(index));
    }

    /// Puts a finished copy into the innermost container; of a member the value comes first.
    void deliver(std::unique_ptr<JsonValue> aDone) {
        Level& level = mLevels.back();
        if (!level.isObject) {
            level.copy->appendValue(aDone.get());
        } else if (!level.value) {
            level.value = std::move(aDone);
            return;
        } else {
            level.copy->appendNameAndValue(aDone.get(), level.value.get());
            static_cast<void>(level.value.release());
        }
        static_cast<void>(aDone.release());
    }

    std::vector<Level> mLevels;
};

} // namespace

JsonValue* JsonValueArray::clone() const {
    return TreeCopier().copy(*this).release();
}
JsonValue* JsonValueObject::clone() const {
    return TreeCopier().copy(*this).release();
}

} // namespace vexil

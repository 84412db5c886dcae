// SPDX-License-Identifier: MIT
#include "vexil/json/json_value.h"

#include "vexil/exceptions.h"
#include "vexil/json/containers.h"
#include "vexil/json/scalar_values.h"

#include <string>

namespace vexil {

namespace {

[[noreturn]] void throwUnsupported(const char* aOperation) {
    throw UnsupportedFunction(std::string(aOperation) + "() not supported");
}

} // namespace

// JsonValueDefault

std::uint32_t JsonValueDefault::getSize() const {
    throwUnsupported("getSize");
}
bool JsonValueDefault::getBoolean() const {
    throwUnsupported("getBoolean");
}
std::int32_t JsonValueDefault::getInteger() const {
    throwUnsupported("getInteger");
}
double JsonValueDefault::getFloat() const {
    throwUnsupported("getFloat");
}
const std::string& JsonValueDefault::getString() const {
    throwUnsupported("getString");
}
const JsonValue* JsonValueDefault::getNameAt(std::uint32_t) const {
    throwUnsupported("getNameAt");
}
JsonValue* JsonValueDefault::getNameAt(std::uint32_t) {
    throwUnsupported("getNameAt");
}
const JsonValue* JsonValueDefault::getValueAt(std::uint32_t) const {
    throwUnsupported("getValueAt");
}
JsonValue* JsonValueDefault::getValueAt(std::uint32_t) {
    throwUnsupported("getValueAt");
}
const JsonValue* JsonValueDefault::findFirst(const char*) const {
    throwUnsupported("findFirst");
}
JsonValue* JsonValueDefault::findFirst(const char*) {
    throwUnsupported("findFirst");
}
void JsonValueDefault::appendValue(JsonValue*) {
    throwUnsupported("appendValue");
}
void JsonValueDefault::appendNameAndValue(JsonValue*, JsonValue*) {
    throwUnsupported("appendNameAndValue");
}

// Factories

JsonValue* JsonValue::createNull() {
    return new JsonValueNull;
}
JsonValue* JsonValue::createBoolean(bool aValue) {
    return new JsonValueBoolean(aValue);
}
JsonValue* JsonValue::createInteger(std::int32_t aValue) {
    return new JsonValueInteger(aValue);
}
JsonValue* JsonValue::createFloat(double aValue) {
    return new JsonValueFloat(aValue);
}
JsonValue* JsonValue::createString(const std::string& aText) {
    return new JsonValueString(aText);
}
JsonValue* JsonValue::createString(const char* aText) {
    return new JsonValueString(aText);
}
JsonValue* JsonValue::createArray() {
    return new JsonValueArray;
}
JsonValue* JsonValue::createObject() {
    return new JsonValueObject;
}

} // namespace vexil

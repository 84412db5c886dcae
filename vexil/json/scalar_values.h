// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/json_value.h"

#include <cstdint>
#include <string>
#include <string_view>

// The classes of values without children. Private to the JSON library: all other code creates
// values through the factories of JsonValue.

namespace vexil {

class JsonValueNull : public JsonValueDefault {
public:
    JsonType getType() const override { return JsonType::Null; }
    JsonValue* clone() const override { return new JsonValueNull; }
};

class JsonValueBoolean : public JsonValueDefault {
public:
    explicit JsonValueBoolean(bool aValue) : mValue(aValue) {}
    JsonType getType() const override { return JsonType::Boolean; }
    bool getBoolean() const final { return mValue; }
    JsonValue* clone() const override { return new JsonValueBoolean(mValue); }

private:
    bool mValue;
};

class JsonValueInteger : public JsonValueDefault {
public:
    explicit JsonValueInteger(std::int32_t aValue) : mValue(aValue) {}
    JsonType getType() const override { return JsonType::Integer; }
    std::int32_t getInteger() const final { return mValue; }
    JsonValue* clone() const override { return new JsonValueInteger(mValue); }

private:
    std::int32_t mValue;
};

class JsonValueFloat : public JsonValueDefault {
public:
    explicit JsonValueFloat(double aValue) : mValue(aValue) {}
    JsonType getType() const override { return JsonType::Float; }
    double getFloat() const final { return mValue; }
    JsonValue* clone() const override { return new JsonValueFloat(mValue); }

private:
    double mValue;
};

class JsonValueString : public JsonValueDefault {
public:
    explicit JsonValueString(std::string_view aText) : mText(aText) {}
    JsonType getType() const override { return JsonType::String; }
    const std::string& getString() const final { return mText; }
    JsonValue* clone() const override { return new JsonValueString(mText); }

private:
    std::string mText;
};

} // namespace vexil

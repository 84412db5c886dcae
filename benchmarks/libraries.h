// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/json_parser.h"
#include "vexil/json/json_writer.h"

#include <nlohmann/json.hpp>

#ifdef HAS_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/writer.h>
#endif
#ifdef HAS_BOOST_JSON
#include <boost/json.hpp>
#endif
#ifdef HAS_JSONCPP
#include <json/json.h>
#endif
#ifdef HAS_JANSSON
#include <jansson.h>
#endif
#ifdef HAS_YAJL
#include <yajl/yajl_gen.h>
#include <yajl/yajl_tree.h>
#endif
#ifdef HAS_SIMDJSON
#include <simdjson.h>
#endif

#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

/// One adapter per library, configured to be as strict and exact as the library can be. Each has
/// - name,
/// - parse(text): returns an owning tree, or throws,
/// - write(tree, sink): creates the compact text, passes it to the sink and frees it,
/// - clone(tree): returns a deep copy that owns its memory, if the library has such an operation,
/// - readStrings(tree, read): passes each string and name, for some of the libraries.
namespace benchmarks {

inline void require(bool aSuccess) {
    if (!aSuccess) throw std::runtime_error("refused");
}

template <auto function>
struct Free {
    template <typename Type>
    void operator()(Type* aObject) const {
        function(aObject);
    }
};

struct Vexil {
    static constexpr auto name = "vexil";
    static auto parse(const std::string& aText) {
        return vexil::parseJsonText(vexil::ByteRange(aText));
    }
    template <typename Sink>
    static void write(const std::unique_ptr<vexil::JsonValue>& aTree, Sink aSink) {
        std::string text;
        vexil::StringOutputStream stream(&text);
        vexil::JsonWriter(stream, 0).write(*aTree);
        aSink(text);
    }
    static auto clone(const std::unique_ptr<vexil::JsonValue>& aTree) {
        return std::unique_ptr<vexil::JsonValue>(aTree->clone());
    }
    template <typename Read>
    static void readStrings(const std::unique_ptr<vexil::JsonValue>& aTree, Read aRead) {
        readValue(*aTree, aRead);
    }

private:
    template <typename Read>
    static void readValue(const vexil::JsonValue& aValue, Read aRead) {
        const auto type = aValue.getType();
        if (type == vexil::JsonType::String) return aRead(aValue.getString());
        if (type != vexil::JsonType::Array && type != vexil::JsonType::Object) return;
        const auto size = aValue.getSize();
        for (std::uint32_t i = 0; i < size; ++i) {
            if (type == vexil::JsonType::Object) aRead(aValue.getNameAt(i)->getString());
            readValue(*aValue.getValueAt(i), aRead);
        }
    }
};

struct Nlohmann {
    static constexpr auto name = "nlohmann";
    static auto parse(const std::string& aText) { return nlohmann::json::parse(aText); }
    template <typename Sink>
    static void write(const nlohmann::json& aTree, Sink aSink) {
        aSink(aTree.dump());
    }
    static auto clone(const nlohmann::json& aTree) { return nlohmann::json(aTree); }
    template <typename Read>
    static void readStrings(const nlohmann::json& aTree, Read aRead) {
        if (aTree.is_string()) return aRead(aTree.get_ref<const std::string&>());
        if (aTree.is_array()) {
            for (const auto& element : aTree) readStrings(element, aRead);
        } else if (aTree.is_object()) {
            for (const auto& [name, value] : aTree.get_ref<const nlohmann::json::object_t&>()) {
                aRead(name);
                readStrings(value, aRead);
            }
        }
    }
};

#ifdef HAS_RAPIDJSON
struct RapidJson {
    static constexpr auto name = "rapidjson";
    static auto parse(const std::string& aText) {
        constexpr unsigned flags =
            rapidjson::kParseFullPrecisionFlag | rapidjson::kParseValidateEncodingFlag;
        rapidjson::Document tree;
        tree.Parse<flags>(aText.data(), aText.size());
        require(!tree.HasParseError());
        return tree;
    }
    template <typename Sink>
    static void write(const rapidjson::Document& aTree, Sink aSink) {
        using namespace rapidjson;
        StringBuffer text;
        Writer<StringBuffer, UTF8<>, UTF8<>, CrtAllocator, kWriteValidateEncodingFlag> writer(text);
        require(aTree.Accept(writer));
        aSink(std::string_view(text.GetString(), text.GetSize()));
    }
    static auto clone(const rapidjson::Document& aTree) {
        rapidjson::Document copy;
        copy.CopyFrom(aTree, copy.GetAllocator());
        return copy;
    }
    template <typename Read>
    static void readStrings(const rapidjson::Value& aTree, Read aRead) {
        if (aTree.IsString()) return readString(aTree, aRead);
        if (aTree.IsArray()) {
            for (const auto& element : aTree.GetArray()) readStrings(element, aRead);
        } else if (aTree.IsObject()) {
            for (const auto& member : aTree.GetObject()) {
                readString(member.name, aRead);
                readStrings(member.value, aRead);
            }
        }
    }

private:
    template <typename Read>
    static void readString(const rapidjson::Value& aString, Read aRead) {
        aRead(std::string_view(aString.GetString(), aString.GetStringLength()));
    }
};
#endif

#ifdef HAS_BOOST_JSON
struct BoostJson {
    static constexpr auto name = "boost.json";
    static auto parse(const std::string& aText) {
        boost::json::parse_options options;
        options.max_depth = 128;
        return boost::json::parse(aText, {}, options);
    }
    template <typename Sink>
    static void write(const boost::json::value& aTree, Sink aSink) {
        aSink(boost::json::serialize(aTree));
    }
    static auto clone(const boost::json::value& aTree) { return boost::json::value(aTree); }
    template <typename Read>
    static void readStrings(const boost::json::value& aTree, Read aRead) {
        if (const auto* const text = aTree.if_string()) return aRead(std::string_view(*text));
        if (const auto* const array = aTree.if_array()) {
            for (const auto& element : *array) readStrings(element, aRead);
        } else if (const auto* const object = aTree.if_object()) {
            for (const auto& member : *object) {
                aRead(std::string_view(member.key()));
                readStrings(member.value(), aRead);
            }
        }
    }
};
#endif

#ifdef HAS_JSONCPP
struct JsonCpp {
    static constexpr auto name = "jsoncpp";
    static auto parse(const std::string& aText) {
        static const auto builder = [] {
            Json::CharReaderBuilder result;
            Json::CharReaderBuilder::strictMode(&result.settings_);
            return result;
        }();
        const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        Json::Value tree;
        require(reader->parse(aText.data(), aText.data() + aText.size(), &tree, nullptr));
        return tree;
    }
    template <typename Sink>
    static void write(const Json::Value& aTree, Sink aSink) {
        static const auto builder = [] {
            Json::StreamWriterBuilder result;
            result["indentation"] = "";
            result["emitUTF8"] = true;
            return result;
        }();
        aSink(Json::writeString(builder, aTree));
    }
    static auto clone(const Json::Value& aTree) { return Json::Value(aTree); }
};
#endif

#ifdef HAS_JANSSON
struct Jansson {
    static constexpr auto name = "jansson";
    using Tree = std::unique_ptr<json_t, Free<json_decref>>;
    static Tree parse(const std::string& aText) {
        Tree tree(json_loadb(aText.data(), aText.size(), 0, nullptr));
        require(tree != nullptr);
        return tree;
    }
    template <typename Sink>
    static void write(const Tree& aTree, Sink aSink) {
        const std::unique_ptr<char, Free<std::free>> text(json_dumps(aTree.get(), JSON_COMPACT));
        require(text != nullptr);
        aSink(text.get());
    }
    static Tree clone(const Tree& aTree) { return Tree(json_deep_copy(aTree.get())); }
};
#endif

#ifdef HAS_JSON_C
// Defined in a separate file: the headers of Jansson and json-c use the same names.
struct JsonC {
    static constexpr auto name = "json-c";
    struct Release {
        void operator()(void* aTree) const;
    };
    using Tree = std::unique_ptr<void, Release>;
    static Tree parse(const std::string& aText);
    template <typename Sink>
    static void write(const Tree& aTree, Sink aSink) {
        aSink(toText(aTree));
    }

private:
    static const char* toText(const Tree& aTree); // owned by the tree
};
#endif

#ifdef HAS_YAJL
struct Yajl {
    static constexpr auto name = "yajl";
    using Tree = std::unique_ptr<yajl_val_s, Free<yajl_tree_free>>;
    static Tree parse(const std::string& aText) {
        Tree tree(yajl_tree_parse(aText.c_str(), nullptr, 0));
        require(tree != nullptr);
        return tree;
    }
    template <typename Sink>
    static void write(const Tree& aTree, Sink aSink) {
        const std::unique_ptr<yajl_gen_t, Free<yajl_gen_free>> generator(yajl_gen_alloc(nullptr));
        yajl_gen_config(generator.get(), yajl_gen_validate_utf8, 1);
        writeValue(generator.get(), aTree.get());
        const unsigned char* text;
        std::size_t length;
        require(yajl_gen_get_buf(generator.get(), &text, &length) == yajl_gen_status_ok);
        aSink(std::string_view(reinterpret_cast<const char*>(text), length));
    }

private:
    // The library cannot write a tree itself.
    static void writeValue(yajl_gen aGenerator, yajl_val aValue) {
        switch (aValue->type) {
        case yajl_t_string:
            return writeString(aGenerator, aValue->u.string);
        case yajl_t_number:
            return require((YAJL_IS_INTEGER(aValue)
                                ? yajl_gen_integer(aGenerator, aValue->u.number.i)
                                : yajl_gen_double(aGenerator, aValue->u.number.d)) ==
                           yajl_gen_status_ok);
        case yajl_t_object:
            require(yajl_gen_map_open(aGenerator) == yajl_gen_status_ok);
            for (std::size_t i = 0; i < aValue->u.object.len; ++i) {
                writeString(aGenerator, aValue->u.object.keys[i]);
                writeValue(aGenerator, aValue->u.object.values[i]);
            }
            return require(yajl_gen_map_close(aGenerator) == yajl_gen_status_ok);
        case yajl_t_array:
            require(yajl_gen_array_open(aGenerator) == yajl_gen_status_ok);
            for (std::size_t i = 0; i < aValue->u.array.len; ++i) {
                writeValue(aGenerator, aValue->u.array.values[i]);
            }
            return require(yajl_gen_array_close(aGenerator) == yajl_gen_status_ok);
        case yajl_t_null:
            return require(yajl_gen_null(aGenerator) == yajl_gen_status_ok);
        default:
            return require(yajl_gen_bool(aGenerator, YAJL_IS_TRUE(aValue)) == yajl_gen_status_ok);
        }
    }
    static void writeString(yajl_gen aGenerator, const char* aText) {
        require(yajl_gen_string(aGenerator, reinterpret_cast<const unsigned char*>(aText),
                                std::strlen(aText)) == yajl_gen_status_ok);
    }
};
#endif

#ifdef HAS_SIMDJSON
struct SimdJson {
    static constexpr auto name = "simdjson";
    using Tree = std::unique_ptr<simdjson::dom::parser>; // owns the parsed document
    static Tree parse(const std::string& aText) {
        auto parser = std::make_unique<simdjson::dom::parser>();
        require(parser->parse(aText).error() == simdjson::SUCCESS);
        return parser;
    }
    template <typename Sink>
    static void write(const Tree& aTree, Sink aSink) {
        aSink(simdjson::minify(aTree->doc.root()));
    }
    template <typename Read>
    static void readStrings(const Tree& aTree, Read aRead) {
        readElement(aTree->doc.root(), aRead);
    }

private:
    template <typename Read>
    static void readElement(simdjson::dom::element aElement, Read aRead) {
        std::string_view text;
        simdjson::dom::array array;
        simdjson::dom::object object;
        if (aElement.get(text) == simdjson::SUCCESS) {
            aRead(text);
        } else if (aElement.get(array) == simdjson::SUCCESS) {
            for (const auto element : array) readElement(element, aRead);
        } else if (aElement.get(object) == simdjson::SUCCESS) {
            for (const auto& [name, value] : object) {
                aRead(name);
                readElement(value, aRead);
            }
        }
    }
};
#endif

/// Calls @p aVisit<Library>() for each library that is installed.
template <typename Visit>
void forEachLibrary(Visit aVisit) {
    aVisit.template operator()<Vexil>();
    aVisit.template operator()<Nlohmann>();
#ifdef HAS_RAPIDJSON
    aVisit.template operator()<RapidJson>();
#endif
#ifdef HAS_BOOST_JSON
    aVisit.template operator()<BoostJson>();
#endif
#ifdef HAS_JSONCPP
    aVisit.template operator()<JsonCpp>();
#endif
#ifdef HAS_JANSSON
    aVisit.template operator()<Jansson>();
#endif
#ifdef HAS_JSON_C
    aVisit.template operator()<JsonC>();
#endif
#ifdef HAS_YAJL
    aVisit.template operator()<Yajl>();
#endif
#ifdef HAS_SIMDJSON
    aVisit.template operator()<SimdJson>();
#endif
}

} // namespace benchmarks

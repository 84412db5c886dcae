// SPDX-License-Identifier: MIT

// Writes a request for the plugin; includes every public header of the library.
#include <vexil/dynamic_library.h>
#include <vexil/exceptions.h>
#include <vexil/format_to_memory.h>
#include <vexil/json/json_parser.h>
#include <vexil/json/json_tokenizer.h>
#include <vexil/json/json_value.h>
#include <vexil/json/json_writer.h>
#include <vexil/non_copyable.h>
#include <vexil/numbers/big_unsigned.h>
#include <vexil/numbers/decimal_conversion.h>
#include <vexil/numbers/powers_of_five.h>
#include <vexil/streams.h>
#include <vexil/unicode_strings.h>

#include <iostream>

int main() {
    vexil::DynamicLibrary library;
    const std::string text = R"( { "action" : "getCertificate" , "names" : [ "Zo\u00eb" ] } )";
    const auto request = vexil::parseJsonText(vexil::ByteRange(text));
    std::string output;
    vexil::StringOutputStream stream(&output);
    vexil::JsonWriter(stream, 0).write(*request);
    std::cout << output;
}

#pragma once

#include "certbridge/name_value_list.h"
#include "vexil/dynamic_library.h"
#include "vexil/json/json_value.h"
#include "vexil/json/json_writer.h"
#include "vexil/streams.h"
#include <certbridge/plugin.h>

#include <string>

// The steps of an exchange with a plugin, in their order; certbridge and certbridge-check are made
// of them. What a step refuses it tells fatalError(), which does not return.

using GetPluginFunction = decltype(&GetPlugin);

/// Loads the library @p aLibraryName; refused with "cannot load DLL, " and the loader's text.
void loadPluginLibrary(vexil::DynamicLibrary& aLibrary, const char* aLibraryName);

/// Finds the export; refused with "cannot get DLL's GetPlugin function".
GetPluginFunction findGetPlugin(vexil::DynamicLibrary& aLibrary);

/// Calls the export; refused with "no plugin object from DLL's GetPlugin function".
Plugin& getPluginObject(GetPluginFunction aGetPlugin);

/// Asks for the type, once; refused with "wrong plugin type".
void checkPluginType(Plugin& aPlugin);

/// The text sent to the plugin and all that it is made with, released from the last to the first.
struct PluginRequest {
    /// Every member of the object @p aRequest but "action", as a name/value list.
    explicit PluginRequest(const vexil::JsonValue& aRequest);

    ValueHolder envelope;
    std::string text;
    vexil::StringOutputStream stream;
    vexil::JsonWriter writer;
};

/// What a plugin has set; either may be null, and both stay the plugin's.
struct PluginTexts {
    const char* response;
    const char* error;
};

PluginTexts callPlugin(Plugin& aPlugin, const std::string& aRequestText);

/// The two ways a plugin answers.
struct ReplyMode {
    const char* listName;  ///< the member of the reply that holds the list
    const char* resultKey; ///< the member of the result document
    bool isError;
};

struct Reply {
    const ReplyMode& mode;
    const char* text; ///< the plugin's
};

/// The text that counts; refused with "no output from plugin's getCertificate()".
Reply chooseReply(const PluginTexts& aTexts);

/// Refused with the parser's text.
ValueHolder parseReply(const char* aText);

/// Makes the result document of a parsed reply; refused with "invalid or missing \"%s\" member" or
/// "element %u of \"%s\" is not a structure object".
ValueHolder makeResult(const vexil::JsonValue& aReply, const ReplyMode& aMode);

/// @file
/// What a plugin includes: the class Plugin and the function GetPlugin().
#pragma once

#include <cstdint>

/// The contract between certbridge and a certificate plugin: all that a plugin includes.
///
/// A plugin is a dynamic library for the same processor and word size as the program (on Windows:
/// 32-bit x86) that exports one plain function, GetPlugin, under exactly that name. certbridge
/// loads it, makes the calls below once each, in this order and on its only thread, and ends:
///
///     GetPlugin()  ->  getPluginType()  ->  getCertificate()
///
/// Every text is NUL-terminated UTF-8 JSON. The program never frees or changes anything of the
/// plugin's. It unloads the library after a response; after an error it exits with the library
/// still loaded. Standard input and output are the program's own. An exception must not leave a
/// plugin: where the program can catch it at all, the run ends with status 2 and no output.
///
/// A plugin that is not written in C++ makes the object by hand: its first word is the address of a
/// table of ten code addresses, the operations below in their order. Each gets the object as its
/// hidden first argument, on 32-bit Windows in the register ecx (__thiscall). What getCertificate()
/// returns is not looked at.
class Plugin {
public:
    /// @{
    /// Eight entries of the table of operations that certbridge does not call; they are the
    /// plugin's own, and only there so that the two below are the ninth and the tenth.
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}
    virtual void reserved4() {}
    virtual void reserved5() {}
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}
    /// @}

    /// Must return 1. Called once, before anything else; with any other result the run ends with
    /// "wrong plugin type" and nothing more is called.
    virtual std::int32_t getPluginType() = 0;

    /// Answers one request. Called at most once, after getPluginType() returned 1.
    ///
    /// @param aRequest  the request, gone when the call returns:
    ///   `{"request":[{"name":"file","value":"a.pem"},{"name":"depth","value":1}]}`,
    ///   one element for each member of the caller's request but "action", in the caller's order,
    ///   with a value of any JSON type; names may repeat.
    /// @param aResponse  null on entry; on success set it to a reply
    ///   `{"response":[{"name":"subject","value":"CN=a"}]}`
    /// @param aError  null on entry; on failure set it to a reply
    ///   `{"error":[{"name":"errorCode","value":7},{"name":"erroMessage","value":"why"}]}`.
    ///   Once it is set, @p aResponse is never looked at.
    ///
    /// The reply stays the plugin's. It is read once, right after the call, and must stay readable
    /// until the library is unloaded or the process ends; a member of the plugin object will do. In
    /// a list an element without "value" or without a string "name" is skipped and further members
    /// are ignored; an element that is no object is an error of the plugin. In an error list the
    /// names "errorCode" and "erroMessage" (spelt so) reach the caller as "code" and "message"; all
    /// other names pass unchanged.
    virtual void getCertificate(const char* aRequest, const char** aResponse,
                                const char** aError) = 0;

protected:
    /// @{
    /// Nobody makes, copies or destroys a plugin through this class. A virtual destructor would
    /// take entries of the table.
    Plugin() = default;
    Plugin(const Plugin&) = default;
    Plugin& operator=(const Plugin&) = default;
    ~Plugin() = default;
    /// @}
};

/// Returns the plugin object, which stays the plugin's and must live as long as the library is
/// loaded; a static object will do. Called once. The name must be exported undecorated: on Linux a
/// default build does that, on Windows a module definition file with the line "GetPlugin" under
/// EXPORTS, or the definition marked __declspec(dllexport).
extern "C" Plugin* GetPlugin();

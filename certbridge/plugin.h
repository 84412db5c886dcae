// SPDX-License-Identifier: MIT

/// @file
/// The contract between certbridge and a certificate plugin, for C (C99) and C++ (C++11).
///
/// A plugin is a dynamic library for the processor and word size of the program that exports one
/// function, GetPlugin(). Each run of certbridge serves one request with these calls, in this
/// order, each made at most once:
///
///     GetPlugin()  ->  getPluginType()  ->  getCertificate()
///
/// The program guarantees that
/// - the request has been read and validated before the library is loaded, and standard input is at
///   end of file;
/// - all calls are made on the only thread of the program, never concurrently, and each of them
///   starts in the default floating-point environment;
/// - it reads the reply right after getCertificate() has returned, before it makes any other call;
/// - it never frees or modifies an object or a text of the plugin;
/// - it unloads the library after a response; after an error of any kind it exits with the library
///   still loaded.
///
/// In return, a plugin leaves standard output to the program, lets no exception escape, and leaves
/// no thread running that executes its code once getCertificate() has returned, unless the library
/// cannot be unloaded (on Linux: linked with -z nodelete).
///
/// All texts are NUL-terminated UTF-8 JSON.
#ifndef CERTBRIDGE_PLUGIN_H
#define CERTBRIDGE_PLUGIN_H

#ifdef __cplusplus
#include <cstdint>
#else
#include <stdint.h>
#endif

/// Exports GetPlugin() under its plain name, whatever the default visibility of the project is. The
/// declaration below applies it, so a definition need not repeat it.
#if defined(_WIN32)
#define CERTBRIDGE_EXPORT __declspec(dllexport)
#elif defined(__GNUC__)
#define CERTBRIDGE_EXPORT __attribute__((visibility("default")))
#else
#define CERTBRIDGE_EXPORT
#endif

#ifdef __cplusplus

/// The plugin object. A plugin derives from this class alone; a virtual destructor or a second base
/// class would move the entries of the table of operations.
class Plugin {
public:
    /// @{
    /// The first eight entries of the table of operations. The program never calls them.
    virtual void reserved1() {}
    virtual void reserved2() {}
    virtual void reserved3() {}
    virtual void reserved4() {}
    virtual void reserved5() {}
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}
    /// @}

    /// Must return 1. After any other result the run ends with the fatal error "wrong plugin type",
    /// and nothing else is called.
    virtual std::int32_t getPluginType() = 0;

    /// Answers one request. Called after getPluginType() has returned 1.
    ///
    /// @param aRequest  The request, readable during the call only:
    ///   `{"request":[{"name":"file","value":"a.pem"},{"name":"depth","value":1}]}`
    ///   has one element for each member of the caller's request except "action", in the caller's
    ///   order, with a value of any JSON type. Names may repeat.
    /// @param aResponse  Null on entry. On success, set it to a reply
    ///   `{"response":[{"name":"subject","value":"CN=a"}]}`.
    /// @param aError  Null on entry. On failure, set it to a reply
    ///   `{"error":[{"name":"errorCode","value":7},{"name":"erroMessage","value":"why"}]}`.
    ///   If it is set, @p aResponse is ignored.
    ///
    /// The plugin owns the reply, which must stay readable until the program has read it, right
    /// after the call. A local variable is gone by then; a member of the plugin object is not.
    ///
    /// Elements without a "value" or without a string "name" are skipped, and further members of an
    /// element are ignored; an element that is not an object is a fatal error. In an error reply
    /// the names "errorCode" and "erroMessage" (sic) reach the caller as "code" and "message"; all
    /// other names are passed on unchanged.
    virtual void getCertificate(const char* aRequest, const char** aResponse,
                                const char** aError) = 0;

protected:
    /// @{
    /// The program neither creates nor destroys plugin objects.
    Plugin() = default;
    Plugin(const Plugin&) = default;
    Plugin& operator=(const Plugin&) = default;
    ~Plugin() = default;
    /// @}
};

extern "C" {

#else /* C */

/// Calling convention of the operations: that of C++ member functions. On 32-bit Windows it passes
/// the object in the register ecx; GCC reports the attribute with -Wpedantic, unless
/// -Wno-attributes is given.
#if defined(_WIN32) && defined(__i386__)
#define CERTBRIDGE_CALL __attribute__((__thiscall__))
#elif defined(_WIN32) && defined(_M_IX86)
#error "C compiler without the thiscall convention: compile the plugin as C++"
#else
#define CERTBRIDGE_CALL
#endif

/// The plugin object: begins with the address of its table of operations. Further members may
/// follow in a structure of the plugin that begins with this one.
typedef struct Plugin {
    const struct PluginOperations* operations;
} Plugin;

/// The table of operations. The functions are those of the C++ class above, with the object as
/// their first argument.
typedef struct PluginOperations {
    void (*reserved[8])(void); ///< never called; may be null
    int32_t(CERTBRIDGE_CALL* getPluginType)(Plugin* aThis);
    void(CERTBRIDGE_CALL* getCertificate)(Plugin* aThis, const char* aRequest,
                                          const char** aResponse, const char** aError);
} PluginOperations;

#endif

/// Returns the plugin object, which the plugin owns and which must exist as long as the library is
/// loaded; a static object is suitable. A null pointer is a fatal error.
CERTBRIDGE_EXPORT Plugin* GetPlugin(void);

#ifdef __cplusplus
} // extern "C"
#endif

#endif // CERTBRIDGE_PLUGIN_H

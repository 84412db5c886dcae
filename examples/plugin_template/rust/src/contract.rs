// SPDX-License-Identifier: MIT

//! The contract of `<certbridge/plugin.h>`: the plugin object, its table of operations, and the
//! reply. On 32-bit Windows, the operations are `extern "thiscall"` functions.

use crate::{answer, Failure, Response};
use std::ffi::{CStr, CString};
use std::os::raw::c_char;
use std::panic::catch_unwind;
use std::sync::Mutex;

#[repr(C)]
struct Operations {
    reserved: [usize; 8],
    get_plugin_type: extern "C" fn(*const Plugin) -> i32,
    get_certificate:
        extern "C" fn(*const Plugin, *const c_char, *mut *const c_char, *mut *const c_char),
}

#[repr(C)]
pub struct Plugin {
    operations: &'static Operations,
}

static OPERATIONS: Operations = Operations { reserved: [0; 8], get_plugin_type, get_certificate };
static PLUGIN: Plugin = Plugin { operations: &OPERATIONS };

/// The reply must exist until certbridge has read it, after `get_certificate()` has returned.
static REPLY: Mutex<Option<CString>> = Mutex::new(None);

const INTERNAL_ERROR: &[u8] = b"{\"error\":[{\"name\":\"errorCode\",\"value\":4},\
    {\"name\":\"erroMessage\",\"value\":\"internal failure\"}]}\0";

/// Returns the text as a JSON string.
fn quoted(text: &str) -> String {
    let mut result = String::from("\"");
    for character in text.chars() {
        match character {
            '"' | '\\' => result.extend(['\\', character]),
            '\0'..='\x1F' => result += &format!("\\u{:04x}", character as u32),
            _ => result.push(character),
        }
    }
    result + "\""
}

fn element(name: &str, value: &str) -> String {
    format!("{{\"name\":\"{}\",\"value\":{}}}", name, value)
}

fn write_response(response: Response) -> String {
    let elements: Vec<_> =
        response.iter().map(|(name, text)| element(name, &quoted(text))).collect();
    format!("{{\"response\":[{}]}}", elements.join(","))
}

fn write_error(failure: Failure) -> String {
    let code = element("errorCode", &(failure.code as i32).to_string());
    let message = element("erroMessage", &quoted(&failure.message)); // sic
    format!("{{\"error\":[{},{}]}}", code, message)
}

/// Returns the reply, and whether it is a response.
fn make_reply(request: &CStr) -> (String, bool) {
    match answer(&request.to_string_lossy()) {
        Ok(response) => (write_response(response), true),
        Err(failure) => (write_error(failure), false),
    }
}

extern "C" fn get_plugin_type(_this: *const Plugin) -> i32 {
    1
}

/// A panic must not leave the plugin.
extern "C" fn get_certificate(
    _this: *const Plugin,
    request: *const c_char,
    response: *mut *const c_char,
    error: *mut *const c_char,
) {
    let result = catch_unwind(|| {
        // SAFETY: the request is a NUL-terminated text, readable during the call.
        let (text, is_response) = make_reply(unsafe { CStr::from_ptr(request) });
        let text = CString::new(text).expect("a JSON text contains no NUL");
        let mut reply = REPLY.lock().expect("there are no other threads");
        (reply.insert(text).as_ptr(), is_response)
    });
    let (text, is_response) = result.unwrap_or((INTERNAL_ERROR.as_ptr().cast(), false));
    // SAFETY: both addresses are valid during the call.
    unsafe { *(if is_response { response } else { error }) = text };
}

/// Returns the plugin object, which exists as long as the library is loaded.
#[no_mangle]
pub extern "C" fn GetPlugin() -> *const Plugin {
    &PLUGIN
}

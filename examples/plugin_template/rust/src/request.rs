// SPDX-License-Identifier: MIT

//! Reads the request, `{"request":[{"name":"file","value":"a.pem"}, ...]}`. certbridge writes it
//! without white space and escapes only control characters, quotation marks and backslashes.

/// Returns the length of the element at the start of the text, whatever its values contain.
fn element_length(text: &str) -> usize {
    let (mut depth, mut in_string, mut is_escaped) = (0, false, false);
    for (index, byte) in text.bytes().enumerate() {
        match byte {
            _ if is_escaped => is_escaped = false,
            b'\\' => is_escaped = true,
            b'"' => in_string = !in_string,
            b'{' | b'[' if !in_string => depth += 1,
            b'}' | b']' if !in_string => {
                depth -= 1;
                if depth == 0 {
                    return index + 1;
                }
            }
            _ => {}
        }
    }
    text.len()
}

/// Decodes the JSON string at the start of the text; `None` if there is no string.
fn read_text(text: &str) -> Option<String> {
    let mut result = String::new();
    let mut characters = text.strip_prefix('"')?.chars();
    loop {
        let character = match characters.next()? {
            '"' => return Some(result),
            '\\' => match characters.next()? {
                'b' => '\x08',
                't' => '\t',
                'n' => '\n',
                'f' => '\x0C',
                'r' => '\r',
                'u' => {
                    let digits: String = characters.by_ref().take(4).collect();
                    char::from_u32(u32::from_str_radix(&digits, 16).ok()?)?
                }
                other => other,
            },
            other => other,
        };
        result.push(character);
    }
}

/// Returns the text of the first element with this name, which must not need escapes; `None` if
/// there is no such element or its value is not a string.
pub fn find_text(request: &str, name: &str) -> Option<String> {
    let start = format!("{{\"name\":\"{}\",\"value\":", name);
    let mut rest = request.strip_prefix("{\"request\":[")?;
    while rest.starts_with('{') {
        if let Some(value) = rest.strip_prefix(start.as_str()) {
            return read_text(value);
        }
        rest = &rest[element_length(rest)..];
        rest = rest.strip_prefix(',').unwrap_or(rest);
    }
    None
}

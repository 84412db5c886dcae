// SPDX-License-Identifier: MIT

//! Plugin template in Rust, without dependencies: answers with the certificate in the PEM file that
//! the member "file" of the request names. Replace `answer()` and the error codes. A plugin that
//! reads more than one or two texts from its request should use a JSON library.

mod contract;
mod request;

use std::fs::File;
use std::io::Read;

/// Callers make decisions by these numbers: once published, a number keeps its meaning.
#[derive(Clone, Copy)]
pub enum ErrorCode {
    /// "file" is missing or not a file name.
    InvalidRequest = 1,
    /// The file cannot be opened or read, or is too large.
    NotReadable = 2,
    /// The file contains no certificate in PEM form.
    NoCertificate = 3,
    // 4 is the internal failure in contract.rs.
}

pub struct Failure {
    pub code: ErrorCode,
    pub message: String,
}

impl Failure {
    fn new(code: ErrorCode, message: impl Into<String>) -> Self {
        Failure { code, message: message.into() }
    }
}

/// The elements of the response.
pub type Response = Vec<(&'static str, String)>;

const MAX_FILE_SIZE: usize = 32768;

fn read_file(name: &str) -> Option<Vec<u8>> {
    let mut bytes = Vec::new();
    let file = File::open(name).ok()?;
    file.take(MAX_FILE_SIZE as u64).read_to_end(&mut bytes).ok()?;
    // Otherwise the file may be larger than the limit.
    (bytes.len() < MAX_FILE_SIZE).then_some(bytes)
}

fn find_certificate(bytes: &[u8]) -> Option<String> {
    const END_LINE: &str = "-----END CERTIFICATE-----";
    // External bytes may be invalid UTF-8, which a reply must not contain.
    let text = String::from_utf8_lossy(bytes);
    let begin = text.find("-----BEGIN CERTIFICATE-----")?;
    let end = begin + text[begin..].find(END_LINE)? + END_LINE.len();
    let certificate = &text[begin..end];
    certificate.bytes().all(|byte| byte < 0x7F && byte != 0).then(|| certificate.to_string())
}

/// Answers a request: the elements of the response, or the failure to report.
pub fn answer(request: &str) -> Result<Response, Failure> {
    let name = request::find_text(request, "file")
        .filter(|name| !name.is_empty() && !name.contains('\0'))
        .ok_or_else(|| {
            Failure::new(ErrorCode::InvalidRequest, "member \"file\" must be a file name")
        })?;
    let bytes = read_file(&name).ok_or_else(|| {
        Failure::new(ErrorCode::NotReadable, format!("{}: cannot be read", name))
    })?;
    let certificate = find_certificate(&bytes).ok_or_else(|| {
        let message = format!("{}: holds no certificate in PEM form", name);
        Failure::new(ErrorCode::NoCertificate, message)
    })?;
    Ok(vec![("file", name), ("pem", certificate)])
}

// SPDX-License-Identifier: MIT
"use strict";

// The classes are documented in index.d.ts.

class CertbridgeError extends Error {
    get name() {
        return this.constructor.name;
    }
}

class PluginError extends CertbridgeError {
    constructor(error) {
        super(`plugin error ${error.code}: ${error.message}`);
        this.error = error;
        this.code = error.code;
    }
}

class FatalError extends CertbridgeError {
    constructor(code, text) {
        super(`fatal error ${code}: ${text}`);
        this.code = code;
        this.text = text;
    }
}

class NoAnswer extends CertbridgeError {
    constructor(reason, status = null, signal = null) {
        super(`no answer: ${reason}`);
        this.status = status;
        this.signal = signal;
    }
}

class TimedOut extends CertbridgeError {
    constructor(milliseconds) {
        super(`no answer within ${milliseconds / 1000} seconds`);
        this.milliseconds = milliseconds;
    }
}

class NotFound extends CertbridgeError {}

module.exports = { CertbridgeError, FatalError, NoAnswer, NotFound, PluginError, TimedOut };

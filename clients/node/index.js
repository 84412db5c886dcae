// SPDX-License-Identifier: MIT
"use strict";

const { readAnswer, writeRequest } = require("./lib/answer");
const { confinedCommand } = require("./lib/confinement");
const { CertbridgeError, FatalError, NoAnswer, NotFound, PluginError, TimedOut } = require("./lib/errors");
const { findPlugin, findProgram } = require("./lib/locate");
const { run } = require("./lib/process");

const longestDelay = 2 ** 31 - 1; // setTimeout() takes a longer one for 1 ms

function checkedLimits({ timeout = 60000, maxAnswer = 2 ** 24 }) {
    if (timeout !== null && !(timeout > 0 && timeout <= longestDelay)) {
        throw new RangeError(`timeout is neither null nor between 0 and ${longestDelay} milliseconds`);
    }
    if (!(maxAnswer >= 0)) throw new RangeError("maxAnswer is not a number of bytes");
    return { timeout, maxAnswer };
}

async function getCertificate(plugin, members = {}, options = {}) {
    const limits = checkedLimits(options);
    const request = writeRequest(members);
    options.signal?.throwIfAborted();
    const program = findProgram();
    const path = findPlugin(plugin, program);
    const command = options.confine ? confinedCommand(program, path, options.confine) : [program, path];
    return readAnswer(await run(command, request, { ...limits, signal: options.signal }));
}

// Shorthand names only, from which Node.js derives the names that an ES module can import.
module.exports = { getCertificate, CertbridgeError, FatalError, NoAnswer, NotFound, PluginError, TimedOut };

// SPDX-License-Identifier: MIT
// Writes requests and reads answers, as docs/protocol.md specifies them.
"use strict";

const os = require("os");

const { FatalError, NoAnswer, PluginError } = require("./errors");

const resultStatus = 0;
const errorStatus = 2;
const starts = ['{"getCertificate":{', '{"error":{', '{"error":['];

function checkedValue(name, value) {
    // JSON.stringify() would replace it with null.
    if (typeof value === "number" && !Number.isFinite(value)) {
        throw new TypeError(`member ${name} is not a finite number`);
    }
    return value;
}

// Throws TypeError for a member named "action" or a value that JSON cannot represent.
function writeRequest(members) {
    if (Object.hasOwn(members, "action")) throw new TypeError('"action" is set by getCertificate()');
    return JSON.stringify({ action: "getCertificate", ...members }, checkedValue);
}

// The last complete line of the output that begins as an answer does; undefined if there is none.
// Latin-1 preserves the bytes, which a plugin may have written in any encoding.
function findAnswer(output) {
    const lines = output.toString("latin1").split("\n").slice(0, -1);
    return lines.filter((line) => starts.some((start) => line.startsWith(start))).pop();
}

function parse(line) {
    return JSON.parse(new TextDecoder("utf-8", { fatal: true }).decode(Buffer.from(line, "latin1")));
}

function errorOf(error, status) {
    if (!Array.isArray(error)) return new PluginError(error);
    const values = Object.fromEntries(error.map((element) => [element?.name, element?.value]));
    if (!("errorCode" in values && "errorMessage" in values)) return new NoAnswer("malformed fatal error", status);
    return new FatalError(values.errorCode, values.errorMessage);
}

// The result object. Throws PluginError, FatalError or NoAnswer.
//
// A plugin may print complete lines before and after the answer. An answer counts only with its own
// exit status: a plugin that crashes later may have left anything on standard output.
function readAnswer({ status, signal, output }) {
    const ending = signal ? `signal ${os.constants.signals[signal]}` : `exit status ${status}`;
    const fail = (reason) => new NoAnswer(reason, status, signal);
    const line = findAnswer(output);
    if (line === undefined || ![resultStatus, errorStatus].includes(status)) throw fail(ending);
    let answer;
    try {
        answer = parse(line);
    } catch {
        throw fail(`malformed output with ${ending}`);
    }
    const name = status === resultStatus ? "getCertificate" : "error";
    if (Object.keys(answer).join() !== name) throw fail(`output that contradicts ${ending}`);
    if (status === resultStatus) return answer[name];
    throw errorOf(answer[name], status);
}

module.exports = { readAnswer, writeRequest };

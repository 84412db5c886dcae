// SPDX-License-Identifier: MIT
// Runs a command under a time limit and a limit of its output.
"use strict";

const { spawn } = require("child_process");

const { NoAnswer, NotFound, TimedOut } = require("./errors");

const isWindows = process.platform === "win32";

function killGroup(child) {
    try {
        process.kill(-child.pid, "SIGKILL");
    } catch {
        // The group is empty.
    }
}

// Ends a command and its children; does nothing if it has ended, since its number may then belong to
// another process.
function killTree(child) {
    if (child.pid === undefined || child.exitCode !== null || child.signalCode !== null) return;
    if (!isWindows) {
        killGroup(child);
        return;
    }
    spawn("taskkill", ["/F", "/T", "/PID", String(child.pid)], { stdio: "ignore" }).on("error", () => {});
}

function cannotRun(command, error) {
    return new NotFound(`cannot run ${command[0]}: ${error.code}`);
}

// Starts a command in a process group of its own, so that its children end with it.
function start(command, standardInput) {
    let child;
    try {
        child = spawn(command[0], command.slice(1), {
            stdio: ["pipe", "pipe", "inherit"],
            detached: !isWindows,
            windowsHide: true,
        });
    } catch (error) {
        throw error instanceof TypeError ? error : cannotRun(command, error);
    }
    child.stdin.on("error", () => {}); // the program ended without reading its input
    child.stdin.end(standardInput);
    return child;
}

// Calls fail() with an error if the output exceeds the limit. Returns the blocks, which are complete
// once the command has ended.
function collectOutput(child, maxAnswer, fail) {
    const blocks = [];
    let size = 0;
    child.stdout.on("data", (block) => {
        size += block.length;
        if (size > maxAnswer) fail(new NoAnswer(`more than ${maxAnswer} bytes of output`));
        else blocks.push(block);
    });
    return blocks;
}

// Resolves to the status or the signal, and the output. Rejects with TimedOut, NotFound if the command
// cannot be started, NoAnswer if the output exceeds the limit, or the signal's reason. In each case the
// command and its children have been killed.
function run(command, standardInput, { timeout, maxAnswer, signal }) {
    return new Promise((resolve, reject) => {
        const child = start(command, standardInput);
        const abort = () => fail(signal.reason);
        const timer = timeout === null ? undefined : setTimeout(() => fail(new TimedOut(timeout)), timeout);
        const finish = () => {
            clearTimeout(timer);
            signal?.removeEventListener("abort", abort);
        };
        const fail = (error) => {
            finish();
            killTree(child);
            child.stdout.destroy(); // a process that left the group may hold it open
            reject(error);
        };
        signal?.addEventListener("abort", abort);
        const blocks = collectOutput(child, maxAnswer, fail);
        child.on("error", (error) => fail(cannotRun(command, error)));
        // Children may still hold the output. A group with members keeps its number; that of an empty one
        // is free only since the event loop reaped the process, just before this call.
        if (!isWindows) child.on("exit", () => killGroup(child));
        child.on("close", (status, killedBy) => {
            finish();
            resolve({ status, signal: killedBy, output: Buffer.concat(blocks) });
        });
    });
}

module.exports = { run };

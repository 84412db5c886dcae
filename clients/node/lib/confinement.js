// SPDX-License-Identifier: MIT
// Runs a plugin that is not trusted in a sandbox.
"use strict";

const path = require("path");

const { NotFound } = require("./errors");
const { findExecutable } = require("./locate");

const readable = ["/usr", "/lib", "/lib32", "/lib64", "/bin", "/etc/ld.so.cache"];

function find(command) {
    const found = findExecutable(command);
    if (found) return found;
    throw new NotFound(`${command} is not installed, and a plugin cannot be confined without it`);
}

// The command that runs the program with the plugin. Throws NotFound without the tools.
function confinedCommand(program, plugin, { files = [], memory = 2 ** 30, cpuSeconds = 30 }) {
    const mounts = readable.flatMap((name) => ["--ro-bind-try", name, name]);
    const named = [program, plugin, ...files.map((name) => path.resolve(name))];
    return [
        ...[find("bwrap"), "--unshare-all", "--die-with-parent", "--new-session"],
        ...["--cap-drop", "ALL", "--clearenv", "--setenv", "LC_ALL", "C.UTF-8"],
        ...mounts,
        ...["--proc", "/proc", "--dev", "/dev"],
        ...named.flatMap((name) => ["--ro-bind", name, name]),
        ...["--remount-ro", "/", "--chdir", "/", "--"],
        ...[find("prlimit"), `--as=${memory}`, `--cpu=${cpuSeconds}`, "--fsize=0", "--core=0", "--nofile=64"],
        ...["--", program, plugin],
    ];
}

module.exports = { confinedCommand };

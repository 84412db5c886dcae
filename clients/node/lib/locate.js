// SPDX-License-Identifier: MIT
// Finds the program and the plugins.
"use strict";

const fs = require("fs");
const path = require("path");

const { NotFound } = require("./errors");

const isWindows = process.platform === "win32";
const suffix = isWindows ? ".dll" : ".so";

function isFile(name, mode = fs.constants.R_OK) {
    try {
        fs.accessSync(name, mode);
        return fs.statSync(name).isFile();
    } catch {
        return false;
    }
}

// The path of a command in PATH; undefined if there is none.
function findExecutable(command) {
    const name = isWindows ? `${command}.exe` : command;
    const folders = (process.env.PATH ?? "").split(path.delimiter).filter(Boolean);
    return folders.map((folder) => path.resolve(folder, name)).find((file) => isFile(file, fs.constants.X_OK));
}

function installedProgram() {
    const found = findExecutable("certbridge");
    if (found) return found;
    const candidates = isWindows
        ? [path.join(process.env.ProgramFiles ?? "C:\\Program Files", "certbridge", "bin", "certbridge.exe")]
        : ["/usr/local/bin/certbridge", "/usr/bin/certbridge"];
    return candidates.find((file) => isFile(file, fs.constants.X_OK));
}

// The path of the program: $CERTBRIDGE_PROGRAM, then PATH, then the usual install locations.
// Throws NotFound if there is none, or if the variable does not name an executable file.
function findProgram() {
    const chosen = process.env.CERTBRIDGE_PROGRAM;
    if (!chosen) {
        const found = installedProgram();
        if (found) return found;
        throw new NotFound("certbridge is not installed; set CERTBRIDGE_PROGRAM if it is not in PATH");
    }
    const file = path.resolve(chosen);
    if (!isFile(file, fs.constants.X_OK)) {
        throw new NotFound(`CERTBRIDGE_PROGRAM does not name a program: ${chosen}`);
    }
    return file;
}

function subfolders(folder) {
    try {
        return fs.readdirSync(folder).sort();
    } catch {
        return [];
    }
}

function pluginFolders(program) {
    if (process.env.CERTBRIDGE_PLUGINS) return [process.env.CERTBRIDGE_PLUGINS];
    const folder = path.dirname(fs.realpathSync(program));
    if (isWindows) return [folder];
    return [path.dirname(folder), "/usr/local", "/usr"].flatMap((prefix) => [
        path.join(prefix, "lib/certbridge"),
        path.join(prefix, "lib64/certbridge"),
        // one per architecture on Debian
        ...subfolders(path.join(prefix, "lib")).map((name) => path.join(prefix, "lib", name, "certbridge")),
    ]);
}

// The absolute path of a plugin. A name with a directory is a path. A bare name, with or without the
// suffix of a library, is looked up in $CERTBRIDGE_PLUGINS or in the plugin folders of the installed
// program, never by the system's loader. Throws NotFound if no folder contains it.
function findPlugin(plugin, program) {
    if (!plugin) throw new NotFound("the name of the plugin is empty");
    if (path.basename(plugin) !== plugin) return path.resolve(plugin);
    const name = plugin.endsWith(suffix) ? plugin : plugin + suffix;
    const files = pluginFolders(program).map((folder) => path.resolve(folder, name));
    const found = files.find((file) => isFile(file));
    if (found) return found;
    throw new NotFound(`no plugin folder contains ${name}`);
}

module.exports = { findExecutable, findPlugin, findProgram };

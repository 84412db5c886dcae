// SPDX-License-Identifier: MIT

/** Limits for a plugin, enforced by bubblewrap and prlimit on Linux.
 *
 * The plugin runs without network, environment variables and capabilities, in namespaces that contain
 * no other process. It sees /usr, the program and itself, read-only, and nothing else except `files`.
 * The plugin cannot write to files or dump core.
 */
export interface Confinement {
    /** Files or directories that the plugin may read, under the same paths. Name them by absolute paths
     * in the request, since the working directory is the root. */
    files?: readonly string[];
    /** Limit of the address space, in bytes. Default: 1 GiB. */
    memory?: number;
    /** Limit of the processor time, in seconds. Default: 30. */
    cpuSeconds?: number;
}

export interface Options {
    /** In milliseconds, null for no limit. Default: 60000. */
    timeout?: number | null;
    /** Limit of all output, in bytes. Default: 16 MiB. */
    maxAnswer?: number;
    /** Runs the plugin in a sandbox. */
    confine?: Confinement;
    /** Aborting it kills the program and its children, and rejects with its reason. */
    signal?: AbortSignal;
}

/** Requests a certificate and resolves to the members of the plugin's answer.
 *
 * `plugin` is a path, or a bare name that is looked up in the plugin folders. `members` are sent on
 * standard input, never on a command line. Rejects with a subclass of CertbridgeError, with TypeError
 * if the members cannot be written as JSON, and with RangeError for an invalid limit.
 */
export function getCertificate(
    plugin: string,
    members?: Readonly<Record<string, unknown>>,
    options?: Options,
): Promise<Record<string, unknown>>;

/** Base class of all errors of this package. */
export class CertbridgeError extends Error {}

/** The plugin processed the request and reported an error. */
export class PluginError extends CertbridgeError {
    /** The complete error object. By convention it has an integer `code` and a string `message`. */
    readonly error: Record<string, unknown>;
    /** `error.code`, undefined if the plugin omitted it. */
    readonly code: unknown;
}

/** certbridge itself detected an error. */
export class FatalError extends CertbridgeError {
    readonly code: 100 | 102;
    /** The text that certbridge reported, which is stable. */
    readonly text: string;
}

/** The program ended without a valid answer, for example because the plugin crashed. */
export class NoAnswer extends CertbridgeError {
    /** Null if a signal ended the program, or if its output exceeded the limit. */
    readonly status: number | null;
    /** Null unless a signal ended the program. */
    readonly signal: string | null;
}

/** The time limit expired; the program and its children were killed. */
export class TimedOut extends CertbridgeError {
    readonly milliseconds: number;
}

/** The program `certbridge`, the plugin, or a command needed for confinement is missing. */
export class NotFound extends CertbridgeError {}

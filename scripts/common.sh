# SPDX-License-Identifier: MIT
# Functions shared by the scripts in this folder. Sourcing it changes to the root of the project.

cd "$(dirname "${BASH_SOURCE[0]}")/.."
export NO_COLOR=1 CLICOLOR=0 CMAKE_COLOR_DIAGNOSTICS=OFF

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

can_be_root() {
    [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

apt_get() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y "$@"
}

# quietly COMMAND...: prints the output of the command only if it fails, and then exits.
quietly() {
    local output
    output=$("$@" 2>&1 </dev/null) || {
        echo "$output" >&2
        fail "failed: $*"
    }
}

check_cmake() {
    local version
    version=$(cmake --version | sed -n '1s/.* //p')
    [ "$(printf '%s\n' 3.21 "$version" | sort -V | head -n 1)" = 3.21 ] ||
        fail "CMake 3.21 or later is required; found $version"
}

# public_headers: prints the names of the installed headers.
public_headers() {
    grep -oE '(certbridge|vexil)/[a-z_/0-9]+\.h' cmake/Install.cmake
}

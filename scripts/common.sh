# Shared by the scripts of this folder; each sources it first and then stands in the project's root.

cd "$(dirname "${BASH_SOURCE[0]}")/.."
export NO_COLOR=1 CLICOLOR=0 CMAKE_COLOR_DIAGNOSTICS=OFF

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# What it takes to build the program and the example plugins, and to test them.
build_packages=(g++=c++ cmake ninja-build=ninja libssl-dev nlohmann-json3-dev openssl)
test_packages=(libgtest-dev libgmock-dev python3 locales pkg-config dpkg-dev=dpkg-shlibdeps lintian
    jq nodejs=node)

# need_packages PACKAGE[=COMMAND]...: installs what is missing. A package counts as there if the
# system has it installed or if its command, which is called like the package if not given, is found.
need_packages() {
    local missing=() item package command
    for item in "$@"; do
        package=${item%%=*}
        command=${item#*=}
        command -v "$command" >/dev/null && continue
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' && continue
        missing+=("$package")
    done
    if [ ${#missing[@]} -eq 0 ]; then return; fi
    can_be_root || fail "missing packages, and no sudo to install them: ${missing[*]}"
    command -v apt-get >/dev/null || fail "no apt-get here; install the equivalents of: ${missing[*]}"
    echo "Installing ${missing[*]}"
    quietly apt_get update
    quietly apt_get install --no-install-recommends "${missing[@]}"
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

# quietly COMMAND...: shows what the command writes only if it fails, and ends the script then.
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
        fail "CMake 3.21 or later is needed, and this is $version"
}

#!/bin/sh
# Builds the library and shows it at work on this machine. From any folder, as root or as ordinary user.
set -eu

cd -- "$(dirname -- "$(readlink -f -- "$0")")"
build=build/demo
log=$build/demo.log
document=$build/machine.xml

fail() {
    printf 'demo.sh: %s\n' "$*" >&2
    exit 1
}

# Runs a command quietly; what it printed is shown when it fails.
quietly() {
    what=$1
    shift
    if ! "$@" >"$log" 2>&1; then
        cat "$log" >&2
        fail "$what failed; the lines above say why"
    fi
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

missing_packages() {
    command -v cmake >/dev/null || printf 'cmake '
    command -v ninja >/dev/null || printf 'ninja-build '
    { command -v c++ && command -v cc; } >/dev/null || printf 'g++ '
}

install_missing() {
    packages=$(missing_packages)
    [ -n "$packages" ] || return 0
    command -v apt-get >/dev/null || fail "please install: $packages(there is no apt-get here to do it)"
    [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null || fail "please install, as root: $packages"
    printf 'Installing Debian packages, which stay installed: %s\n' "$packages"
    [ "$(id -u)" -eq 0 ] || sudo -v || fail "please install, as root: $packages"
    quietly 'apt-get update' as_root apt-get -q update
    # shellcheck disable=SC2086 # a list of names
    quietly 'apt-get install' as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get -q -y --no-install-recommends install $packages
}

# The CRC-32 of a file as gzip writes it behind what it has packed, lowest byte first.
crc32_of() {
    # shellcheck disable=SC2046 # four bytes, four words
    set -- $(gzip -c <"$1" | tail -c 8 | od -A n -t x1 -N 4)
    printf '%s' "${4-}${3-}${2-}${1-}"
}

md5_of() {
    md5sum <"$1" | cut -d ' ' -f 1
}

heading() {
    printf '\n  %s\n  %s\n' "$1" "$(printf '%s' "$1" | sed 's/./-/g')"
}

# compare NAME TOOL FUNCTION: the sum that a tool finds, and whether the client's row of that name says the same.
compare() {
    if ! command -v "$2" >/dev/null; then
        printf '  %-9s not compared, there is no %s here\n' "$1" "$2"
        return
    fi
    theirs=$("$3" "$build/examples/client")
    verdict='agrees'
    if [ "$theirs" != "$(printf '%s\n' "$shown" | sed -n "s/^  $1  *//p")" ]; then
        verdict='DOES NOT AGREE'
        differing=$1
    fi
    printf '  %-9s %-32s  %s %s\n' "$1" "$theirs" "$2" "$verdict"
}

printf '%s\n' \
    'This builds libqzvest and two small programs, a service and a client, and runs them three times.' \
    'The service asks this machine about itself and hands the answers to the client as one block' \
    'of bytes. Both read only, need no special rights, open no port and end when they are done.' \
    "What is left behind: $PWD/$build, and Debian packages only where it says so." ''

if ! mkdir -p "$build" 2>/dev/null || [ ! -w "$build" ]; then
    fail "cannot write to $PWD/$build; if it belongs to another user, that one can remove it"
fi
install_missing
# The release preset without tests and benchmarks, whose packages a bare machine lacks. Fresh, because the
# folder may have been moved or the compiler changed since the last time.
quietly 'Preparing the build' cmake --preset release --fresh -B "$build" -DQZVEST_TESTS=OFF -DQZVEST_BENCH=OFF
quietly 'The build' cmake --build "$build"

# Both streams in one, so that a message keeps its place.
shown=$("$build/examples/service" 2>&1) || {
    printf '%s\n' "$shown" >&2
    fail 'the demo ended with a failure'
}
printf '%s\n' "$shown"
heading 'The same sums of the same file by tools of this system'
differing=
compare CRC-32 gzip crc32_of
compare 'RFC 1321' md5sum md5_of
[ -z "$differing" ] || fail "$differing differs from what the tool of this system says"

printf '\nAGAIN, with options that the service hands on: service "show=memory|load"\n\n'
"$build/examples/service" 'show=memory|load' 2>&1 || fail 'the demo with show ended with a failure'

printf '\nAGAIN, as an XML document: service format=xml >%s\n\n' "$document"
if ! "$build/examples/service" format=xml >"$document" 2>"$log"; then
    cat "$log" >&2
    fail 'the demo with format=xml ended with a failure'
fi
head -c 300 "$document" | fold -w 96 | sed 's/^/  /'
printf ' ...\n\n  %s bytes in all, ' "$(wc -c <"$document")"
if ! command -v xmllint >/dev/null; then
    printf 'not checked: there is no xmllint here\n'
elif xmllint --noout "$document" >"$log" 2>&1; then
    printf 'and xmllint finds them well-formed\n'
else
    printf 'and xmllint finds them NOT WELL-FORMED\n'
    cat "$log" >&2
    fail 'xmllint does not take the document'
fi

printf '\n%s\n' "Again without building: $PWD/$build/examples/service"

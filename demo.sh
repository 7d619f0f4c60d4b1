#!/bin/sh
# Builds the library and shows it at work on this machine. From any folder, as root or as ordinary user.
set -eu

cd -- "$(dirname -- "$(readlink -f -- "$0")")"
build=build/demo
log=$build/demo.log
document=$build/machine.xml
product=$PWD/$build/product
registration=$product/vkreg.cfg
settings=$product/ini/machine.ini
text_log=$product/log/qzsys64.log
xml_log=$product/log/qzsys64.xml

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

# A product of the demo's own: where it lies, its texts, and the directory of the library's lock files. Its settings
# and logs stay from the last time.
make_product() {
    mkdir -p "$product/ini" "$product/.ipc" &&
        cp examples/qzsdst64.ini "$product/ini/" &&
        printf '%s\n' "Gaugework.installpath=$product" "Gaugework.inipath=$product" \
            "Gaugework.logpath=$product" "vestlib.vardatapath=$product" >"$registration"
}

# Runs a command where /etc/vkreg.cfg is the product's registration file, and what it changes in /etc its own.
in_private_etc() {
    # shellcheck disable=SC2016 # for the shell inside
    "$build/examples/in_private_etc" \
        sh -euc 'rm -f /etc/vkreg.cfg; cp "$0" /etc/vkreg.cfg; exec "$@"' "$registration" "$@"
}

on_host() {
    "$@"
}

made_on_host=
clean_up() {
    [ -z "$made_on_host" ] || rm -f /etc/vkreg.cfg
}
trap clean_up EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# Sets in_product to what runs a command where the product is registered. Fails where there is no way.
register_product() {
    in_product=in_private_etc
    if in_private_etc test -x "$PWD/$build/examples/service" -a -w "$product/ini" >"$log" 2>&1; then
        printf '  It stands in an /etc that the two programs alone see. That of this machine stays as it is.\n'
        return
    fi
    in_product=on_host
    printf '  The two programs cannot have an /etc of their own here (%s).\n' "$(head -n 1 "$log")"
    printf '  So it takes that file in the /etc of this machine, for as long as they run.\n'
    for file in /etc/vkreg.cfg /usr/lib/ext/brio/vkreg.cfg; do
        if [ -e "$file" ] || [ -L "$file" ]; then
            printf '  Left out: %s is there already, and stays as it is.\n' "$file"
            return 1
        fi
    done
    if ! [ -w /etc ]; then
        printf '  Left out: only root may make it.\n'
        return 1
    fi
    made_on_host=yes
    if ! (set -C && : >/etc/vkreg.cfg); then
        made_on_host=
        fail 'cannot make /etc/vkreg.cfg'
    fi
    cat "$registration" >/etc/vkreg.cfg
    printf '  Made, to be taken away again.\n'
}

runs_so_far() {
    [ ! -e "$settings" ] || sed -n 's/^runs=//p' "$settings"
}

# judge_xml FILE: whether it is a document.
judge_xml() {
    printf '  %s bytes in all, ' "$(wc -c <"$1")"
    if ! command -v xmllint >/dev/null; then
        printf 'not checked: there is no xmllint here\n'
    elif xmllint --noout "$1" >"$log" 2>&1; then
        printf 'and xmllint finds them well-formed\n'
    else
        printf 'and xmllint finds them NOT WELL-FORMED\n'
        cat "$log" >&2
        fail "xmllint does not take $1"
    fi
}

# The last two records of both logs, and whether the last is the end of process $1.
show_logs() {
    heading "The last two records of $text_log"
    if ! command -v iconv >/dev/null; then
        printf '  Not shown: it is UTF-16, and there is no iconv here.\n'
    else
        iconv -f UTF-16LE -t UTF-8 "$text_log" >"$log" || fail "iconv does not take $text_log"
        tr -d '\r' <"$log" | awk '/^EventID: / { before = last; last = "" } /./ { last = last "  " $0 "\n" }
            END { printf "%s\n%s", before, last }'
        tail -n 4 "$log" | grep -q "^process $1 ends" || fail 'the text log does not end with the end of the last run'
    fi
    heading "The same of $xml_log"
    sed 's/<LogEntry>/\n&/g' "$xml_log" | tail -n 2 | fold -w 96 | sed 's/^/  /'
    printf '\n\n'
    judge_xml "$xml_log"
    grep -q ">process $1 ends</Description><Data></Data></LogEntry></EventLog>\$" "$xml_log" ||
        fail 'the XML log does not end with the end of the last run'
}

# The product's two runs, and whether the service has counted and logged them.
run_product() {
    before=$(runs_so_far)
    printf '\n  LANG=de service settings=machine.ini\n\n'
    LANG=de quietly 'The product' $in_product "$build/examples/service" settings=machine.ini
    cat "$log"
    printf '\n  service settings=machine.ini language=fr\n\n'
    quietly 'The product' $in_product "$build/examples/service" settings=machine.ini language=fr
    cat "$log"
    process=$(sed -n 's/^SERVICE, process \([0-9]*\),.*/\1/p' "$log")
    heading "The settings now, yours to change: $settings"
    sed 's/^/  /' "$settings"
    [ "$(runs_so_far)" = $((${before:-0} + 2)) ] || fail 'the service has not counted its two runs'
    show_logs "$process"
}

# Sets sharing to "shared" where the product's programs have the System V objects of the host. Fails where they must
# not.
judge_name_space() {
    sharing=
    # shellcheck disable=SC2086 # no word or one
    inside=$($in_product readlink /proc/self/ns/ipc) && [ "$inside" != "$(readlink /proc/self/ns/ipc)" ] && return
    sharing=shared
    printf '  The programs use the System V objects of this machine; theirs are removed at the end.\n\n'
    command -v ipcrm >/dev/null || { printf '  Left out: there is no ipcrm here to do that.\n' && return 1; }
    if grep -qs '^ *3000[0-9][0-9] ' /proc/sysvipc/shm /proc/sysvipc/sem; then
        printf '  Left out: there are some with the same keys already.\n'
        return 1
    fi
}

# Services and clients that meet by name, and whether the numbers of the publications went on.
meet_by_name() {
    story=$build/by_name.log
    {
        $in_product examples/by_name.sh "$build/examples" "$build" $sharing 2>&1 || printf '%s\n' "ended with $?"
    } | tee "$story"
    ! grep -q '^ended with' "$story" || fail 'the services and clients that meet by name ended with a failure'
    if ! grep -q 'takes over .* publication 3$' "$story" || ! grep -q 'reads publication [456] ' "$story"; then
        fail 'the second service has not gone on where the killed one ended'
    fi
    printf '\n  What is left was made by the killed service: its memory and the guard of that, a semaphore set that\n'
    printf '  tells whether a service lives. Who takes a memory over does not remove the two.\n'
    if [ -n "$sharing" ]; then
        printf '  Both are removed now.\n'
    else
        printf '  Both are gone now, with the IPC name space that the programs had to themselves.\n'
    fi
}

printf '%s\n' \
    'This builds libqzvest and two small programs, a service and a client. The service asks this' \
    'machine about itself and hands the answers to the client as one block of bytes: three times over' \
    'a socket; twice more as a product with settings, texts and logs; and at last by shared memory,' \
    'where the two find each other by a name, and a service is killed. They need no special rights, open' \
    'no port and end when they are done. The product is registered where they alone see it.' \
    "What is left behind: $PWD/$build, with the product's logs and settings, where the" \
    'service counts its runs from one demo to the next, and Debian packages only where it says so.' ''

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
printf ' ...\n\n'
judge_xml "$document"

printf '\nAGAIN, twice, as a product with settings, texts and logs in files\n\n'
make_product || fail "cannot make $product"
printf '  The library finds the product by its registration file, /etc/vkreg.cfg:\n\n'
sed 's/^/    /' "$registration"
printf '\n'
if [ "${#product}" -gt 200 ]; then # the library has its limit at 255, with a file's name
    printf '  Left out: the path is too long to be registered.\n'
elif register_product; then
    run_product
    printf '\nBY NAME: processes that did not start each other share the block and survive a death\n\n'
    ! judge_name_space || meet_by_name
fi

printf '\n%s\n' "Again without building: $PWD/$build/examples/service"

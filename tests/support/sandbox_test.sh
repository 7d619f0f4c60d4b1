#!/bin/sh
# sandbox_test.sh SANDBOX: inside, the host's places are empty or the sandbox's own; outside, nothing has changed.
set -u
sandbox=$1
probe=qzvest-probe-$$
failures=0

expect() { # expect WHAT TEST...
    what=$1
    shift
    "$@" || { echo "not so: $what"; failures=$((failures + 1)); }
}

"$sandbox" true || exit

"$sandbox" sh -euc '
    said() { echo "inside, not so: $1"; exit 1; }
    [ -z "$(ls -A /run)" ] || said "/run is empty"
    [ -z "$(ls -A /var/run/)" ] || said "/var/run is empty"
    [ ! -e /dev/log ] || said "no /dev/log"
    [ -z "$(ls -A /dev/shm)" ] || said "no shared memory files"
    [ "$(cat /proc/sysvipc/sem /proc/sysvipc/shm /proc/sysvipc/msg | wc -l)" = 3 ] || said "no System V objects"
    [ "$(awk "NR > 2 { print \$1 }" /proc/net/dev)" = lo: ] || said "loopback alone"
    grep -q 127.0.0.1 /proc/net/fib_trie || said "loopback is up"
    [ -s /etc/passwd ] || said "/etc has the content of the host"
    [ "$(head -c 4 /dev/zero | wc -c)" = 4 ] || said "devices work"
    for place in /run /var/run /etc /usr/lib /dev /dev/shm; do
        echo text >"$place/'"$probe"'" || said "$place can be written"
    done
' || failures=$((failures + 1))

for space in user mnt ipc net; do
    expect "a private $space name space" \
        [ "$("$sandbox" readlink "/proc/self/ns/$space")" != "$(readlink "/proc/self/ns/$space")" ]
done

for place in /run /var/run /etc /usr/lib /dev /dev/shm; do
    expect "nothing left in $place" [ ! -e "$place/$probe" ]
done
expect "every sandbox is a new one" "$sandbox" sh -c "[ -z \"\$(ls -A /run)\" ] && [ ! -e /etc/$probe ]"

"$sandbox" sh -c 'exit 3'
expect "the program's exit status comes back" [ $? = 3 ]
"$sandbox" /nonexistent/program 2>/dev/null
expect "a missing program gives 127" [ $? = 127 ]

# Inside, its root may forbid further name spaces: what a hardened kernel does.
reason=$("$sandbox" sh -c "echo 0 >/proc/sys/user/max_user_namespaces && exec '$sandbox' true" 2>&1)
expect "where the kernel forbids it, 77" [ $? = 77 ]
expect "and the reason: $reason" [ "$reason" = "sandbox: private name spaces: No space left on device" ]

exit $((failures > 0))

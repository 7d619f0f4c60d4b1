#!/bin/sh
# by_name.sh PROGRAMS FOLDER [shared] - services and clients that find each other by a name alone, and what becomes of
# it when a service is killed. PROGRAMS: the folder with service and client. FOLDER: for a pipe. A product is registered
# here, whose .ipc the programs use. With "shared", the System V objects are those of the host, and what the programs
# leave is removed; without, they go with the name space.
set -eu

programs=$1
pipe=$2/said
shared=${3-}
service=
client=

say() {
    printf '  demo           %s\n' "$*"
}

# The keys of what the programs have made, in /proc/sysvipc/$1: the library gives them out from 300001 on.
keys() {
    while read -r key rest; do
        case $key in
        3000[0-9][0-9]) printf '%s\n' "$key" ;;
        esac
    done <"/proc/sysvipc/$1"
}

count() {
    keys "$1" | wc -l
}

say_left() {
    say "left in the system: shared memories $(count shm), semaphore sets $(count sem)${1-}"
}

clean_up() {
    for process in $service $client; do
        kill -KILL "$process" 2>/dev/null || :
    done
    rm -f "$pipe"
    [ -n "$shared" ] || return 0
    keys shm | while read -r key; do ipcrm -M "$key"; done
    keys sem | while read -r key; do ipcrm -S "$key"; done
}
trap clean_up EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# ended NAME PROCESS STATUS: waits for a process, which is to end with that status.
ended() {
    result=0
    wait "$2" || result=$?
    [ "$result" = "$3" ] || { say "the $1 ended with status $result" && exit 1; }
}

printf '  1. A service ends as it should: service publish=1 every=1\n\n'
"$programs/service" publish=1 every=1
say_left
[ "$(count shm) $(count sem)" = '0 0' ] || exit 1

printf '\n  2. A service is killed: service publish=9 every=300 hang=4, and client watch=9 wait=700\n\n'
rm -f "$pipe"
mkfifo "$pipe"
"$programs/client" watch=9 wait=700 & # looks for a service until there is one
client=$!
"$programs/service" publish=9 every=300 hang=4 2>"$pipe" &
service=$!
IFS= read -r said <"$pipe" || said='  the service has ended too soon'
printf '%s\n' "$said"
case $said in
*'holds the mutex'*) ;;
*) exit 1 ;;
esac
kill -KILL "$service"
say "kills process $service: SIGKILL"
ended service "$service" 137 2>/dev/null # the shell has its own word for it
service=
ended client "$client" 3
client=
say_left ' (the guard of the memory, the event)'

printf '\n  3. Another service goes on: service publish=3 every=300, and a new client watch=9\n\n'
"$programs/client" watch=9 &
client=$!
"$programs/service" publish=3 every=300 &
service=$!
ended service "$service" 0
service=
ended client "$client" 0
client=
say_left

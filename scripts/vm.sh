#!/usr/bin/env bash
# A real host to try things on: a throw-away Debian machine with volumes, file servers and clients.
#
#   scripts/vm.sh [--release bookworm|trixie] VERB [ARG...]
#
#   image                    builds what machines of the release begin with, where it isn't there yet
#   disk                     a fresh machine: forgets all that the last one has written
#   boot [PARAMETER...]      starts it, with parameters for its kernel; returns when all is up
#   run [COMMAND [ARG...]]   runs a command as its root and passes the exit status on; without one,
#                            a shell
#   install [BUILD]          installs the project in it as README says, built for its release, or
#                            what the build folder BUILD of this host has
#   link FOLDER              builds the programs of a folder of the project, which link the library
#                            that "install" has installed, and puts them into /usr/local/bin
#   put FILE... TARGET       copies files and folders into it
#   get FILE... TARGET       copies them out of it
#   reboot                   returns when all is up again
#   console                  what it has written to its console
#   stop                     shuts it down; what it has written stays for the next boot
#
# The release is bookworm unless told. scripts/vm/image.sh says what a machine has. Each verb makes
# first what it needs: "boot" alone builds image and disk.
#
# systemd is PID 1 with control groups v2 alone, as Debian has it, and the kernel is Debian's own.
# The machine has no network but what this host forwards from a free port of its loopback to sshd.
# It runs with KVM where that works, else emulated, which is slow.
#
# Images are kept in VORN_VM_CACHE (${XDG_CACHE_HOME:-/var/cache}/vorn-vm), a folder a release, and
# built anew when what makes them in scripts/vm/ has changed. What belongs to a machine lies in VORN_VM_RUN
# (build/vm/RELEASE): one machine a folder, as many as there are folders. VORN_VM_ACCELERATOR=tcg
# does without KVM.
#
# Needs the group vm of scripts/install-deps.sh, and root to build an image.
#
# Exit status: that of COMMAND; 2 when called wrongly; 1 when a verb fails.
set -euo pipefail

self=$(realpath "$0")
scripts=$(dirname "$self")
patience=600 # seconds for an emulated machine to boot beside other work

fail() {
    echo "vm: $1" >&2
    exit "${2:-1}"
}

usage() {
    sed -n '4,/^# The release/{/^# The release/d; s/^# \{0,1\}//; p}' "$self" >&2
    exit 2
}

# --- Image and disk ------------------------------------------------------------------------------

make_image() {
    local checksum lock
    checksum=$(cat "$scripts"/vm/{tree,image}.sh | sha256sum)
    mkdir -p "$cache"
    exec {lock}>"$cache/$release.lock"
    flock "$lock"
    if [[ ! -e $image/checksum || $(<"$image/checksum") != "$checksum" ]]; then
        echo "Building the image of $release, which takes some minutes ..."
        rm -rf "$image".new*
        "$scripts/vm/image.sh" "$release" "$image.new"
        echo "$checksum" >"$image.new/checksum"
        rm -rf "$image"
        mv "$image.new" "$image"
    fi
    exec {lock}>&-
}

disks=(disk volume1 volume2)

# Only what differs from the image is written, and the image stays as it is.
make_disk() {
    ! is_running || fail "the machine is running"
    make_image
    mkdir -p "$run"
    local name
    for name in "${disks[@]}"; do
        qemu-img create -q -f qcow2 -b "$image/$name.img" -F raw "$run/$name.qcow2"
    done
    cp "$image/checksum" "$run/checksum"
}

# --- The machine ---------------------------------------------------------------------------------

is_running() {
    local pid
    [[ -e $run/pid ]] || return 1
    pid=$(<"$run/pid")
    [[ -n $pid && -e /proc/$pid/cmdline ]] &&
        tr '\0' '\n' <"/proc/$pid/cmdline" | grep -qxF -- "$run/pid"
}

require_running() {
    is_running || fail "no machine is running in $run"
}

# Some hosts have /dev/kvm without a processor that virtualises: only kernels which were made for
# that start there, and Debian's was not.
kvm_works() {
    [[ -r /dev/kvm && -w /dev/kvm ]] && grep -qwE 'vmx|svm' /proc/cpuinfo
}

accelerator() {
    if [[ -n ${VORN_VM_ACCELERATOR-} ]]; then
        echo "$VORN_VM_ACCELERATOR"
    elif kvm_works; then
        echo kvm
    else
        echo tcg,thread=multi
    fi
}

# A machine outlives its caller and must not keep what that has open, a lock for one.
close_inherited() {
    local path number
    for path in "/proc/$BASHPID/fd"/*; do
        number=${path##*/}
        [[ $number -le 2 || $number -eq 255 ]] || exec {number}>&-
    done
}

start_machine() ( # [PARAMETER...]
    local options name
    options=(-accel "$(accelerator)")
    for name in "${disks[@]}"; do
        options+=(-drive "file=$run/$name.qcow2,if=virtio,cache=unsafe,discard=unmap")
    done
    rm -f "$run"/ready.{in,out} "$run/port"
    mkfifo "$run"/ready.{in,out}
    close_inherited
    exec qemu-system-x86_64 -name "vorn-vm-$release" -machine q35 -cpu max -smp 2 -m 2048 \
        -nodefaults -no-user-config -display none "${options[@]}" \
        -kernel "$image/vmlinuz" -initrd "$image/initrd.img" \
        -append "root=LABEL=root rw console=ttyS0 quiet $*" \
        -netdev user,id=net,restrict=on,hostfwd=tcp:127.0.0.1:0-:22 \
        -device virtio-net-pci,netdev=net,romfile= \
        -device virtio-rng-pci -serial "file:$run/console" \
        -device virtio-serial-pci -chardev "pipe,id=ready,path=$run/ready" \
        -device virtserialport,chardev=ready,name=vorn.ready \
        -pidfile "$run/pid" -daemonize
)

# Which port the kernel has chosen for it.
note_port() {
    local pid
    pid=$(<"$run/pid")
    ss --no-header --listening --tcp --numeric --processes |
        sed -n "s/^LISTEN.* 127\.0\.0\.1:\([0-9]*\) .*[,(]pid=$pid,.*/\1/p" >"$run/port"
    [[ -s $run/port ]] || fail "qemu listens on no port"
}

# The machine itself says when all is up.
await_ready() {
    local state='' part pipe deadline=$((SECONDS + patience))
    exec {pipe}<>"$run/ready.out" # as a reader alone it would wait for a writer
    until read -r -t 1 -u "$pipe" part; do
        state+=$part # The word may come in parts.
        if ! is_running || [[ $SECONDS -ge $deadline ]]; then
            break
        fi
    done
    state+=$part
    exec {pipe}>&-
    [[ $state != running ]] || return 0
    if [[ $state == degraded ]]; then
        shell systemctl --failed --no-legend --plain >&2 || true
    fi
    tail -n 20 "$run/console" >&2
    fail "the machine did not come up${state:+, but is $state}"
}

boot() { # [PARAMETER...]
    ! is_running || fail "the machine is running already"
    [[ -e $run/checksum ]] || make_disk
    cmp -s "$run/checksum" "$image/checksum" ||
        fail "the disk in $run is of another image: make a fresh one with 'disk'"
    trap 'end_machine' EXIT
    trap 'exit 1' HUP INT TERM
    start_machine "$@"
    note_port
    await_ready
    trap - EXIT HUP INT TERM
}

connection() { # prints ssh's options, one a line
    printf '%s\n' -F none -i "$image/key" -o IdentitiesOnly=yes -o BatchMode=yes \
        -o LogLevel=ERROR -o ConnectTimeout=20 -o HostKeyAlias=vorn-vm \
        -o "UserKnownHostsFile=$image/known_hosts" -o StrictHostKeyChecking=yes \
        -o "Port=$(<"$run/port")"
}

shell() { # [COMMAND [ARG...]]
    local options
    mapfile -t options < <(connection)
    # shellcheck disable=SC2029 # quoted for the shell over there
    ssh "${options[@]}" root@127.0.0.1 "${@@Q}"
}

copy() { # FILE... TARGET
    local options
    mapfile -t options < <(connection)
    scp -q -r "${options[@]}" -- "$@"
}

run_command() { # [COMMAND [ARG...]]
    require_running
    shell "$@"
}

put() { # FILE... TARGET
    require_running
    copy "${@:1:$#-1}" "root@127.0.0.1:${!#}"
}

get() { # FILE... TARGET
    require_running
    local files=("${@:1:$#-1}")
    copy "${files[@]/#/root@127.0.0.1:}" "${!#}"
}

install_project() { # [BUILD]
    require_running
    local tree=$run/tree
    rm -rf "$tree"
    if [[ $# -eq 0 ]]; then
        "$scripts/vm/build.sh" "$release" "$cache/$release-build" "$run/build" "$tree"
    else
        DESTDIR=$tree cmake --install "$1" >"$run/install.log"
    fi
    tar --create --directory "$tree" --owner=0 --group=0 . |
        shell tar --extract --directory / --no-overwrite-dir
    shell sh -c 'ldconfig && systemctl daemon-reload'
}

link_programs() { # FOLDER
    require_running
    rm -rf "$run/linked"
    "$scripts/vm/build.sh" "$release" "$cache/$release-build" "$run/linked" "$run/tree" \
        "$(realpath "$1")"
    find "$run/linked" -maxdepth 1 -type f -executable -print0 |
        xargs -0 -I '{}' "$self" --release "$release" put '{}' /usr/local/bin
}

reboot_machine() {
    require_running
    # The connection ends before the command does.
    shell systemctl reboot || true
    await_ready
}

# Ends it without a word, where it still runs.
end_machine() {
    ! is_running || kill "$(<"$run/pid")"
    forget_machine
}

forget_machine() {
    rm -f "$run"/{pid,port,ready.in,ready.out}
}

stop() {
    is_running || return 0
    local pid
    pid=$(<"$run/pid")
    # However this ends: whoever is told to end meanwhile must leave no machine behind.
    trap end_machine EXIT
    timeout 30 "$self" --release "$release" run systemctl poweroff || true
    timeout 90 tail --pid="$pid" --sleep-interval=0.1 -f /dev/null ||
        fail "the machine had to be killed"
}

# --- Verbs ---------------------------------------------------------------------------------------

release=bookworm
if [[ ${1-} == --release ]]; then
    release=${2-}
    shift 2 || usage
fi
[[ $release =~ ^[a-z]+$ ]] || usage
cache=$(realpath --canonicalize-missing "${VORN_VM_CACHE:-${XDG_CACHE_HOME:-/var/cache}/vorn-vm}")
run=$(realpath --canonicalize-missing "${VORN_VM_RUN:-$scripts/../build/vm/$release}")
image=$cache/$release
verb=${1-}
shift || usage
case $verb/$# in
    image/0) make_image ;;
    disk/0) make_disk ;;
    boot/*) boot "$@" ;;
    run/*) run_command "$@" ;;
    install/[01]) install_project "$@" ;;
    link/1) link_programs "$@" ;;
    put/[01] | get/[01]) usage ;;
    put/*) put "$@" ;;
    get/*) get "$@" ;;
    reboot/0) reboot_machine ;;
    console/0) cat "$run/console" ;;
    stop/0) stop ;;
    *) usage ;;
esac

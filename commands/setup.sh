# What every command begins with: packages, and builds by preset. Sourced by ./quill.
# shellcheck shell=bash

# The packages of the groups named, from the one list.
packages() {
    awk -v groups=" $* " '/^\[/ { wanted = index(groups, " " substr($0, 2, length($0) - 2) " ") } wanted && /^[a-z]/' \
        "$root/packages.txt"
}

# is_installed PACKAGE[:ARCHITECTURE]; without one, the machine's own.
is_installed() {
    local architecture
    architecture=$(dpkg --print-architecture 2>/dev/null) || return 1
    case $1 in *:*) architecture=${1#*:} ;; esac
    dpkg-query -W -f='${Architecture} ${db:Status-Status}\n' "${1%:*}" 2>/dev/null |
        grep -qxE "($architecture|all) installed"
}

missing_packages() {
    local package
    packages "$@" | while read -r package; do
        is_installed "$package" || echo "$package"
    done
}

# find_sudo WHAT_FOR
find_sudo() {
    command -v sudo || die "needs root or sudo $1"
}

# install_packages GROUP...
install_packages() {
    local missing sudo=
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    command -v apt-get >/dev/null || die "needs Debian 12's packages: ${missing//$'\n'/ }"
    [ "$(id -u)" = 0 ] || sudo=$(find_sudo "to install ${missing//$'\n'/ }")
    echo "Installing ${missing//$'\n'/ }" >&2
    case $missing in *:arm64*)
        logged $sudo dpkg --add-architecture arm64 || die "dpkg cannot take arm64 packages"
        ;;
    esac
    # shellcheck disable=SC2086
    { logged $sudo apt-get update &&
        logged $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing; } ||
        die "could not install the packages above; $log says why"
}

# Runs a command with its output in the log; shows the log's end when it fails.
logged() {
    mkdir -p "$(dirname "$log")"
    echo "\$ $*" >>"$log"
    "$@" >>"$log" 2>&1 && return
    tail -n 40 "$log" >&2
    return 1
}

# is_configured DIR: for this place, by the presets as they are. A checkout that was moved or copied has another's tree.
is_configured() {
    [ "$1/build.ninja" -nt "$root/CMakePresets.json" ] &&
        grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$1/CMakeCache.txt"
}

# is_built STAMP: since that was made nothing here has changed.
is_built() {
    [ -e "$1" ] && [ -z "$(find "$root" \( -path "$root/build" -o -path "$root/out" -o -name .git \) -prune -o \
        -mindepth 1 -newer "$1" -print -quit)" ]
}

# build PRESET [TARGET...]
build() {
    local preset=$1 dir=$root/build/$1
    shift
    local IFS=-
    local stamp="$dir/built-$*"
    unset IFS
    if [ ! -w "$root" ]; then
        is_configured "$dir" && is_built "$stamp" && return
        die "$root has to be built by $(stat -c %U "$root"), who owns it: the same command does so"
    fi
    is_configured "$dir" || {
        echo "Configuring ($preset)" >&2
        (cd "$root" && logged cmake --fresh --preset "$preset") || die "cannot configure preset $preset"
    }
    is_built "$stamp" || echo "Building ($preset)" >&2
    touch "$stamp.new"
    logged cmake --build "$dir" ${1:+--target "$@"} || die "cannot build preset $preset"
    mv "$stamp.new" "$stamp"
}

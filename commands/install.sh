# ./quill install and ./quill uninstall. Sourced by ./quill.
# shellcheck shell=bash

# Sets `prefix` by the options, and `sudo` to what has to stand before a command that changes it.
choose_prefix() {
    prefix=/usr/local sudo=
    while [ $# -gt 0 ]; do
        case $1=${2-} in
        --prefix=?*) prefix=$(realpath -m -- "$2") ;;
        *) wrong_usage "no such option or value: $*" ;;
        esac
        shift 2
    done
    local folder=$prefix
    while [ ! -e "$folder" ]; do folder=$(dirname "$folder"); done
    [ -w "$folder" ] || sudo=$(find_sudo "to write to $prefix")
}

install_command() {
    local prefix sudo
    choose_prefix "$@"
    build release quill_classes quill_texts
    # The list in the prefix is written last but for one in the build folder, which may be another user's.
    local list=$prefix/share/quill/installed.txt
    $sudo rm -f "$list"
    logged $sudo cmake --install "$root/build/release" --prefix "$prefix" || [ -e "$list" ] ||
        die "cannot install into $prefix"
    $sudo rm -f "$root/build/release/install_manifest.txt" 2>/dev/null || true
    # So that programs find the libraries, where the loader looks into the prefix at all.
    [ "$(id -u)" != 0 ] && [ -z "$sudo" ] || logged $sudo /sbin/ldconfig || true
    echo "Installed: $prefix/bin/quill"
    case :$PATH: in *":$prefix/bin:"*) ;; *) echo "PATH has no $prefix/bin yet" ;; esac
}

uninstall_command() {
    local prefix sudo folders
    choose_prefix "$@"
    local list=$prefix/share/quill/installed.txt
    [ -e "$list" ] || die "nothing is installed in $prefix"
    cd "$prefix"
    mapfile -t folders < <(xargs -d '\n' -a "$list" dirname -- | sort -u)
    $sudo xargs -d '\n' rm -f -- <"$list"
    $sudo rmdir -p --ignore-fail-on-non-empty -- "${folders[@]}"
    echo "Uninstalled from $prefix"
}

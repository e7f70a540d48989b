# shellcheck shell=bash
#
# What ./run-demo and ./run-tests have in common: installing what is missing, configuring a preset
# and building it. To be sourced; it sets `project_dir`, the folder of the project.
#
#   need_packages PACKAGE...        Debian packages; installs those that are missing, or ends the
#                                   script with their names where that is not possible
#   configure PRESET [CMAKE-ARG...] configures build/PRESET
#   build PRESET [TARGET...]        builds the targets, or everything
#
# Progress is shown on a terminal only. Elsewhere a step that fails prints the end of its log,
# which stands in build/ (packages) or build/PRESET.

project_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s\n' "$*"; }

die() {
    printf '%s\n' "$*" >&2
    exit 1
}

has_command() { command -v "$1" >/dev/null 2>&1; }

# Where there is no package database: what is used of a package has to be found. A package without
# a line here is a program of its name.
is_found_without_dpkg() {
    case $1 in
        ninja-build) has_command ninja ;;
        xvfb) has_command Xvfb ;;
        binutils) has_command ar && has_command nm && has_command readelf ;;
        qtbase5-dev) has_library Qt5Widgets ;;
        qtwayland5)
            compgen -G '/usr/lib*/qt*/plugins/platforms/libqwayland*' >/dev/null ||
                compgen -G '/usr/lib/*/qt*/plugins/platforms/libqwayland*' >/dev/null ;;
        libsodium-dev) has_library libsodium ;;
        libssl-dev) has_library openssl ;;
        *) has_command "$1" ;;
    esac
}

has_library() { pkg-config --exists "$1" >/dev/null 2>&1; }

is_installed() {
    if has_command dpkg-query; then
        [ "$(dpkg-query --show --showformat '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
    else
        is_found_without_dpkg "$1"
    fi
}

install_packages() {
    local root_command=()
    if [ "$(id -u)" -ne 0 ]; then
        has_command sudo || die "These packages are missing: $*
Please have them installed; that takes root, and there is no sudo here."
        root_command=(sudo)
    fi
    say "Installing what is missing: $*"
    mkdir -p "$project_dir/build"
    run_logged "$project_dir/build/packages.log" "${root_command[@]}" \
        env DEBIAN_FRONTEND=noninteractive sh -c \
        'apt-get update -qq && apt-get install --yes -qq --no-install-recommends "$@"' sh "$@"
}

need_packages() {
    local package missing=()
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    has_command apt-get || die "These packages are missing (under their Debian names): ${missing[*]}
Please install them; there is no apt-get here to do it with."
    install_packages "${missing[@]}"
}

# run_logged LOG COMMAND...
run_logged() {
    local log=$1
    shift
    if [ -t 1 ]; then
        "$@"
    elif ! "$@" >"$log" 2>&1; then
        tail -n 60 "$log" >&2
        die "That failed; the whole log stands in $log"
    fi
}

configure() {
    local preset=$1
    shift
    mkdir -p "$project_dir/build/$preset"
    say "Configuring the build \"$preset\" ..."
    (cd "$project_dir" && run_logged "build/$preset/configure.log" \
        cmake --preset "$preset" --log-level=NOTICE "$@") || exit 1
}

build() {
    local preset=$1 target_args=()
    shift
    [ $# -eq 0 ] || target_args=(--target "$@")
    say "Building ..."
    (cd "$project_dir" && run_logged "build/$preset/build.log" \
        cmake --build --preset "$preset" "${target_args[@]}") || exit 1
}

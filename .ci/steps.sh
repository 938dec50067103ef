# Shell functions that ./demo, ./test and .ci/run share. Each step says in one line what it does.

root_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc)

# The build stamp of error reports uses __DATE__ and __TIME__; without this ccache would skip those files.
export CCACHE_SLOPPINESS=time_macros
# What one clone has compiled serves another one in a different folder.
export CCACHE_BASEDIR=$root_dir CCACHE_NOHASHDIR=1

say() { printf '==> %s\n' "$*"; }

fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# run_logged LOG COMMAND...: keeps the output in LOG and shows its end when the command fails.
run_logged() {
    local log=$1
    shift
    mkdir -p "$(dirname "$log")"
    "$@" >"$log" 2>&1 && return
    tail -n 60 "$log" >&2
    fail "$1 failed, the whole output is in ${log#"$root_dir"/}"
}

# install_packages KIND: KIND is "demo", "test" or "ci"; each needs what the one before it needs, and more.
install_packages() {
    local others wanted missing=() package as_root=()
    case $1 in
        demo) others='test|docs|ci' ;;
        test) others='docs|ci' ;;
        ci) others='nobody' ;;
    esac
    wanted=$(sed -E -e "/# *($others) *$/d" -e 's/#.*//' "$root_dir/debian-packages.txt")
    command -v dpkg-query >/dev/null || fail "this is no Debian system; install the packages of debian-packages.txt by hand"
    for package in $wanted; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    if [ ${#missing[@]} -eq 0 ]; then
        say "Packages: all there"
        return
    fi
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || fail "as root, install: ${missing[*]}"
        as_root=(sudo)
    fi
    say "Packages: installing ${missing[*]}"
    run_logged "$root_dir/build/packages.log" "${as_root[@]}" apt-get update -q
    run_logged "$root_dir/build/packages.log" "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    cd "$root_dir"
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "Configure: build/$preset"
        run_logged "$root_dir/build/$preset.configure.log" cmake --preset "$preset"
    fi
    say "Build: build/$preset"
    run_logged "$root_dir/build/$preset.build.log" cmake --build --preset "$preset" -j "$jobs" ${1:+--target "$@"}
}

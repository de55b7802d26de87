# The common part of the commands of ./dev. Each command sources this file, and runs in the root of the project.
# shellcheck shell=bash
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

jobs="$(nproc)"
# The cache of all clones of this user: results of checks, and unpacked programs.
cache="${XDG_CACHE_HOME:-$HOME/.cache}/vorelCore"
compiler=x86_64-w64-mingw32-g++-posix

# ---- Progress -------------------------------------------------------------------------------------------------------

step=""

say() { # say <step>: prints the duration of the previous step, and begins the next
    end_step
    printf '\n== %s\n' "$*"
    step="$*"
    step_begin="$SECONDS"
}

end_step() {
    [[ -z $step ]] || echo "-- $step: $((SECONDS - step_begin)) s"
    step=""
}

fail() {
    printf 'dev: %s\n' "$*" >&2
    exit 1
}

at_exit() {
    end_step
    [[ -z ${wine_users:-} ]] || release_wine
}
trap at_exit EXIT

# ---- Packages -------------------------------------------------------------------------------------------------------

packages=(
    g++-mingw-w64-x86-64-posix # the compiler, with its runtime DLLs
    clang-19 lld-19 llvm-19    # the second compiler; llvm creates the import library for C
    libc++-19-dev              # the headers of the second standard library
    wine wine64                # runs the programs
    cmake ninja-build ccache googletest
    libz-mingw-w64-dev    # the log viewer reads compressed logs
    gdb-mingw-w64 pkgconf # tests of the package
    python3               # runs the scripts of the commands and of the tests
    jq xxd                # a test compares vorelconv with them
    git
)
# Programs that some tests start, and the libraries of rsyslog and syslog-ng.
test_packages=(
    lnav chromium ruby ripgrep
    libestr0 libfastjson4 liblognorm5 libzstd1
    libcap2 libjson-c5 libnet1 libwrap0
)
# Some packages have other names after Debian 12.
debian="$(. /etc/os-release 2>/dev/null && echo "${VERSION_ID:-}")" || true
if [[ $debian == 12 ]]; then
    test_packages+=(libglib2.0-0 libivykis0 libpcre3)
else
    test_packages+=(libglib2.0-0t64 libivykis0t64 libpcre2-8-0)
fi
check_packages=(clang-format clang-tidy cppcheck codespell)
bench_packages=(libfast-float-dev libfmt-dev) # headers of the libraries that the benchmarks compare with
publish_packages=(python3-matplotlib) # charts of the benchmarks
package_packages=(nsis unzip)
docs_packages=(doxygen doxygen-awesome-css)
coverage_packages=(gcovr)
fuzz_packages=(clang libclang-rt-dev llvm) # llvm resolves the addresses in a report
packages+=(mono-mcs) # compiles the sample in C#
# For the tests of the binding for Node. Any version of npm is accepted.
command -v npm >/dev/null || packages+=(nodejs npm)

missing_packages() { # missing_packages <package>...
    local package status
    for package in "$@"; do
        status="$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)"
        [[ $status == installed ]] || echo "$package"
    done
}

as_root() {
    if ((EUID == 0)); then
        env DEBIAN_FRONTEND=noninteractive "$@"
    else
        sudo env DEBIAN_FRONTEND=noninteractive "$@"
    fi
}

setup() { # setup [package]...: installs the packages that every command needs, and the given packages
    local needed=("${packages[@]}" "$@")
    command -v dpkg-query >/dev/null || fail "setup supports Debian only; install the equivalents of: ${needed[*]}"
    local missing
    mapfile -t missing < <(missing_packages "${needed[@]}")
    ((${#missing[@]})) || return 0
    if ((EUID != 0)) && ! command -v sudo >/dev/null; then
        fail "root or sudo is needed to install packages; install these and run the command again: ${missing[*]}"
    fi
    say "Installing ${missing[*]}"
    as_root apt-get update -qq
    as_root apt-get install -y -qq -o Dpkg::Use-Pty=0 --no-install-recommends "${missing[@]}"
}

# Installs the packages of tests. If one of them cannot be installed, the tests that need the package are skipped.
setup_tests() {
    local package
    (setup "${test_packages[@]}") || for package in $(missing_packages "${test_packages[@]}"); do
        (setup "$package") || echo "dev: $package is missing; the tests that need it are skipped" >&2
    done
    unpack_shippers || echo "dev: rsyslog or syslog-ng is missing; the tests that need it are skipped" >&2
}

# Debian's packages of rsyslog and syslog-ng exclude each other, and would replace the logging of this machine. So they
# are unpacked, not installed.
unpack_shippers() {
    local shippers="$cache/shippers" folder
    [[ ! -x $shippers/usr/sbin/rsyslogd || ! -x $shippers/usr/sbin/syslog-ng ]] || return 0
    say "Unpacking rsyslog and syslog-ng"
    mkdir -p "$cache"
    folder="$(mktemp -d "$cache/shippers.XXXXXX")"
    if ! download_shippers "$folder" && as_root apt-get update -qq; then
        download_shippers "$folder"
    fi
    [[ ! -d $folder/usr ]] || { rm -rf "$shippers" && mv "$folder" "$shippers" && return; }
    rm -rf "$folder"
    return 1
}

download_shippers() { # download_shippers <folder>
    local package
    (cd "$1" && apt-get download -qq rsyslog syslog-ng-core 2>/dev/null) || return
    for package in "$1"/*.deb; do
        dpkg-deb --extract "$package" "$1" || return
        rm "$package"
    done
}

# Installs the packages of a lock file into a folder, unless the folder already contains them.
install_npm_packages() { # install_npm_packages <folder of package-lock.json> <folder>
    local lock="$1/package-lock.json" installed="$2/node_modules/.installed-lock"
    cmp --silent "$lock" "$installed" && return
    mkdir -p "$2"
    cp "$1/package.json" "$lock" "$2/"
    # --force, because the packages may be for Windows.
    npm ci --prefix "$2" --force --ignore-scripts --no-audit --no-fund --loglevel=error
    cp "$lock" "$installed"
}

# ---- Build ----------------------------------------------------------------------------------------------------------

# All clones of this user share compiled objects. CCACHE_DEPEND makes ccache identify a source by the files that it
# includes, without running the preprocessor. Precompiled headers are identified by their inputs.
export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1 CCACHE_DEPEND=1 CCACHE_SLOPPINESS=pch_defines,time_macros

configure() { # configure <preset>
    local preset="$1"
    if [[ ! -e build/$preset/build.ninja || CMakePresets.json -nt build/$preset/build.ninja ]]; then
        say "Configuring $preset"
        cmake --preset "$preset"
    fi
}

# An old precompiled header would become part of the key under which the cache stores the new header. A fresh clone
# would then find neither the new header nor any object that was compiled with it.
remove_outdated_precompiled_headers() { # remove_outdated_precompiled_headers <preset>
    local header
    while read -r header; do
        if [[ -n $(find include tests/support/Precompiled.h -type f -newer "$header" -print -quit) ]]; then
            rm "$header"
        fi
    done < <(find "build/$1" -name '*.gch' -o -name '*.pch')
}

build() { # build <preset> [target]...: builds everything if no target is given
    local preset="$1"
    local targets=("${@:2}")
    configure "$preset"
    remove_outdated_precompiled_headers "$preset"
    say "Building $preset${targets[*]:+: ${targets[*]}}"
    cmake --build --preset "$preset" --parallel "$jobs" ${targets[@]:+--target "${targets[@]}"}
}

configure_fuzz() { # configures fuzz/, whose programs run on this machine without Wine
    [[ -e build/fuzz/build.ninja ]] || cmake -S fuzz -B build/fuzz -G Ninja -DCMAKE_CXX_COMPILER=clang++
}

# ---- Run ------------------------------------------------------------------------------------------------------------

# Several commands may use the Wine prefix at the same time. The last command to finish ends the server of the prefix.
hold_wine() { # hold_wine [command]...: starts the server, through the given command (such as taskset) if there is one
    mkdir -p build
    exec {wine_users}>build/wine.users
    flock --shared "$wine_users"
    [[ -e build/wine/vorel-prefix-ready ]] || say "Creating the Wine prefix build/wine"
    in_wine "$@" cmake/wine-run --hold
}

in_wine() { # in_wine <command>...: runs the command, which does not inherit the lock on the prefix
    (exec {wine_users}>&- && "$@")
}

release_wine() {
    if flock --exclusive --nonblock "$wine_users"; then
        in_wine cmake/wine-run --release
    fi
}

# SPDX-License-Identifier: MIT
# Sourced by run, test and the scripts in tests and tools: moves to the project's root and installs what this machine
# lacks: the packages of every machine, those of the Qt named in TAV_QT (5), and those of the sections named in $sections.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

install_packages() {
    local wanted missing=() package root=()
    wanted=$(awk -v asked=" qt${TAV_QT:-5} ${sections:-} " '/^#/ { next }
        /^\[/ { left_out = !index(asked, " " substr($0, 2, length($0) - 2) " "); next }
        !left_out' cmake/debian-packages.txt)
    for package in $wanted; do
        # Some commands come from elsewhere: npm along with a newer Node, for one.
        command -v "$package" >/dev/null && continue
        # A package counts as there only when it is installed and configured, not when dpkg merely knows it.
        [ "$(dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null)" = "ii " ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    [ "$(id -u)" = 0 ] || root=(sudo)
    echo "Installing: ${missing[*]}"
    "${root[@]}" apt-get update -q=2 &&
        "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q=2 -y --no-install-recommends "${missing[@]}" >/dev/null || {
        echo "Some packages could not be installed." >&2
        exit 1
    }
}

# The one npm package of the drawing conversion, as its lock file has it.
install_node_modules() {
    local folder=local_platform/conversion
    [ $folder/node_modules/.package-lock.json -nt $folder/package-lock.json ] ||
        npm ci --prefix $folder --no-audit --no-fund --loglevel=error >/dev/null
}

install_packages
install_node_modules || exit 1

# What one build directory compiled serves the others. Only so does ccache keep what is compiled with a precompiled header.
export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros

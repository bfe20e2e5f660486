# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Sourced by ./play, ./check and others: their arguments, what they need from the system, and how to
# get it.

# Each set of needs: Debian packages, what shows that they are there (commands, then modules: those
# of pkg-config, and with "python:" before them those of the system's Python), and the packages of
# Fedora and Arch.
BUILD_DEBIAN="cmake make g++ pkg-config libsdl1.2-dev libsdl-mixer1.2-dev libsdl-image1.2-dev
    libgl-dev libglu1-mesa-dev libcurl4-openssl-dev libssl-dev"
BUILD_COMMANDS="cmake make c++ pkg-config"
BUILD_MODULES="sdl SDL_mixer SDL_image gl glu libcurl libcrypto"
BUILD_FEDORA="cmake make gcc-c++ pkgconf-pkg-config sdl12-compat-devel SDL_mixer-devel
    SDL_image-devel mesa-libGL-devel mesa-libGLU-devel libcurl-devel openssl-devel"
BUILD_ARCH="cmake make gcc pkgconf sdl12-compat sdl_mixer sdl_image libglvnd glu curl openssl"

SCREEN_DEBIAN="xvfb xdotool imagemagick libgl1-mesa-dri"
SCREEN_COMMANDS="Xvfb xdotool import identify convert"
SCREEN_FEDORA="xorg-x11-server-Xvfb xdotool ImageMagick mesa-dri-drivers"
SCREEN_ARCH="xorg-server-xvfb xdotool imagemagick mesa"

TEST_DEBIAN="libgtest-dev libegl-dev libpng-dev python3 clang clang-format clang-tidy desktop-file-utils
    appstream mandoc shared-mime-info x11-xserver-utils python3-numpy python3-pil vorbis-tools
    ffmpeg reuse cppcheck"
TEST_COMMANDS="ctest python3 clang++ clang-format clang-tidy run-clang-tidy desktop-file-validate
    appstreamcli mandoc update-mime-database xrandr oggdec ffmpeg reuse
    cppcheck"
TEST_MODULES="gtest egl libpng python:numpy python:PIL"
TEST_FEDORA="gtest-devel mesa-libEGL-devel libpng-devel python3 clang-tools-extra desktop-file-utils
    appstream mandoc shared-mime-info xrandr python3-numpy python3-pillow vorbis-tools ffmpeg-free
    reuse cppcheck"
TEST_ARCH="gtest libpng python clang desktop-file-utils appstream mandoc shared-mime-info
    xorg-xrandr python-numpy python-pillow vorbis-tools ffmpeg reuse cppcheck"
# Tests are skipped without these, and not every release has them.
TEST_OPTIONAL_DEBIAN="libsdl1.2-compat"

# accept_arguments SCRIPT PATTERN ARGUMENT...: help, which is the script's head comment, for whoever
# asks for it; ends with 2 if the arguments are others than the extended regular expression allows.
accept_arguments() {
    local script=$1 pattern=$2
    shift 2
    if [[ "$*" =~ ^(-h|--help)$ ]]; then
        sed -n '5,/^$/s/^#\( \|$\)//p' "$script"
        exit 0
    elif [[ ! "$*" =~ ^($pattern)?$ ]]; then
        {
            echo "${script##*/}: cannot be called with: $*"
            sed -n '5,/^$/s/^#\( \|$\)//p' "$script"
        } >&2
        exit 2
    fi
}

# absent_packages PACKAGE...: prints those that dpkg has not, nor anything that provides them.
absent_packages() {
    printf '%s\n' "$@" | grep -Fxv -f <(
        dpkg-query -W -f='${db:Status-Status} ${Package}, ${Provides}\n' |
            sed -n 's/ ([^)]*)//g; s/^installed //p' | tr -s ', ' '\n'
    ) || true
}

# missing_tools COMMANDS MODULES: prints what is not there.
missing_tools() {
    local name
    for name in $1; do
        command -v "$name" >/dev/null || echo "$name"
    done
    for name in $2; do
        case $name in
            python:*) /usr/bin/python3 -c "import ${name#*:}" 2>/dev/null || echo "$name" ;;
            *) pkg-config --exists "$name" 2>/dev/null || echo "$name.pc" ;;
        esac
    done
}

# install_packages PACKAGE...: with apt-get, as root or through sudo; fails without either.
install_packages() {
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || return 1
        as_root=(sudo)
    fi
    echo "Installing with apt-get: $*"
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq update || return 1
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq install -y --no-install-recommends "$@"
}

# require PURPOSE DEBIAN FEDORA ARCH COMMANDS MODULES [OPTIONAL_DEBIAN]: installs what is missing,
# or tells the packages and exits.
require() {
    local optional=""
    if command -v dpkg-query >/dev/null && command -v apt-get >/dev/null; then
        if [ -n "$(missing_tools "$5" "$6")" ]; then
            install_packages $(absent_packages $2) || true
        fi
        optional=$(absent_packages ${7:-})
        if [ -n "$optional" ] && ! install_packages $optional; then
            echo "Going on without $optional: the tests that need it are skipped."
        fi
    fi
    if [ -n "$(missing_tools "$5" "$6")" ]; then
        {
            echo "Missing for $1:" $(missing_tools "$5" "$6")
            echo "Install these packages, then try again."
            echo "  Debian, Ubuntu: " $2
            echo "  Fedora:         " $3
            echo "  Arch:           " $4
        } >&2
        exit 1
    fi
}

require_for_building() {
    require "building" "$BUILD_DEBIAN" "$BUILD_FEDORA" "$BUILD_ARCH" "$BUILD_COMMANDS" \
        "$BUILD_MODULES"
}

require_for_virtual_display() {
    require "a virtual display" "$SCREEN_DEBIAN" "$SCREEN_FEDORA" "$SCREEN_ARCH" \
        "$SCREEN_COMMANDS" ""
}

require_for_testing() {
    require "testing" "$TEST_DEBIAN" "$TEST_FEDORA" "$TEST_ARCH" "$TEST_COMMANDS" \
        "$TEST_MODULES" "$TEST_OPTIONAL_DEBIAN"
}

require_for_benchmarks() {
    require "the benchmarks" "libbenchmark-dev python3" "google-benchmark-devel python3" \
        "benchmark python" "python3" "benchmark" "chocolate-doom freedoom"
}

require_for_packaging() {
    require "packaging" "dpkg-dev file gzip libegl-dev libpng-dev" "dpkg-dev gzip" "dpkg gzip" \
        "dpkg-shlibdeps gzip" "egl libpng"
}

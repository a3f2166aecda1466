# shellcheck shell=bash
# The packages of this project in Debian 12 and Debian 13, by purpose, and their installation.
# To be sourced.
# shellcheck disable=SC2034 # the lists are for the scripts that source this

buildPackages=(
    cmake
    g++
    libboost-dev
    libboost-program-options-dev
    libfmt-dev
    libtiff-dev
    ninja-build
    qtbase5-dev
)

runPackages=(
    fonts-dejavu-core         # without a font the cover page is blank
    ghostscript               # reads PDF
    qt5-image-formats-plugins # reads TIFF
    shared-mime-info          # tells a file's format by its content
)

demoPackages=(
    libtiff-tools # shows what is in the result
)

packagePackages=(
    dpkg-dev
    file
)

# The test of batches over SSH is skipped without sshd: its package starts a
# service, for which checking sources is no reason.
testPackages=(
    fontconfig          # which characters have a font
    imagemagick         # makes and reads pictures of all kinds
    libgtest-dev
    libjpeg-turbo-progs # turns JPEG pictures without loss
    libspandsp-dev      # sends the result through a fax call
    libtiff-tools
    man-db
    openssh-client
    paps                # lays out text
    parallel
    python3
    qpdf                # repairs PDF documents and turns their pages
    qt5-gtk-platformtheme # a plug-in that must not be loaded
    systemd             # checks the units of the watched folder
    zlib1g-dev
)

# Instead of qtbase5-dev and the plug-ins of Qt 5. In Debian 12 and 13 a library of
# Qt, libqt6gui6, brings the offscreen platform.
qt6Packages=(
    qt6-base-dev
    qt6-gtk-platformtheme # a plug-in that must not be loaded
    qt6-image-formats-plugins
)

# For ctest -L server alone: their installation starts services.
serverTestPackages=(
    hylafax-server
    iproute2
)

checkPackages=(
    clang-19
    clang-format-19
    clang-tidy-19
    libclang-rt-19-dev # the sanitizers
    lld-19
    lintian
    shellcheck
)

coveragePackages=(
    clang-19
    libclang-rt-19-dev
    lld-19
    llvm-19
)

benchPackages=(
    gnuplot-nox
    graphicsmagick
    imagemagick
    jbigkit-bin      # decodes
    jbigkit-testdata # the test charts of the CCITT
    libbenchmark-dev
    libtiff-tools
    parallel
    poppler-utils
)

fuzzPackages=(
    clang-19
    libclang-rt-19-dev
)

isInstalled() {
    [[ $(dpkg-query --show --showformat='${db:Status-Abbrev}' "$1" 2>/dev/null) == ?i* ]]
}

# Installs those of the packages that are missing. Without any, there is no need
# for a network or for root.
installPackages() {
    local package missing=() asRoot=()
    for package in "$@"; do
        isInstalled "$package" || missing+=("$package")
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    if ! command -v apt-get >/dev/null; then
        echo "This is not a Debian system. What Debian calls ${missing[*]} is needed." >&2
        return 1
    fi
    if ((EUID != 0)); then
        if ! command -v sudo >/dev/null; then
            echo "Run this as root first: apt-get install --no-install-recommends ${missing[*]}" >&2
            return 1
        fi
        asRoot=(sudo)
    fi
    echo "Installing ${missing[*]}"
    # A package source that cannot be reached does no harm as long as another
    # one has the packages.
    "${asRoot[@]}" apt-get update -q || true
    "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}"
}

# Shared by ./demo and ./check: messages, and the installation of what is missing.
# Sourced with the repository as current directory.

set -euo pipefail

say() { printf '\n== %s\n' "$*"; }

# The last line of a failing run says what failed.
fail() {
    printf '\n%s: FAILED: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# The comment at the top of a script is its help.
print_usage() {
    sed -n '2,/^set/{/^#/s/^# \{0,1\}//p}' "$1"
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        return 127
    fi
}

is_installed() {
    dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed
}

# install_packages NAME...: installs the Debian packages that are not there yet.
install_packages() {
    local package missing=()
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    if [ ${#missing[@]} -eq 0 ]; then
        echo "all needed packages are installed"
        return
    fi
    echo "installing: ${missing[*]}"
    command -v apt-get >/dev/null || fail "this is no Debian system; please install: ${missing[*]}"
    [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null ||
        fail "neither root nor sudo; please install: ${missing[*]}"
    as_root apt-get update -qq || fail "apt-get update"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
        >/dev/null || fail "apt-get could not install: ${missing[*]}"
}

build_packages=(g++ gcc libc6-dev cmake ninja-build pkg-config qtbase5-dev libqt5svg5-dev libevdev-dev libudev-dev
    libboost1.81-dev libssl-dev libqpdf-dev qttools5-dev-tools)
package_packages=(cmark-gfm debhelper dh-python doxygen dpkg-dev fonts-dejavu-core python3 python3-all python3-setuptools
    python3-wheel qt6-base-dev qt6-svg-dev)
test_packages=(libgtest-dev libgmock-dev relacy-dev binutils clang-format dpkg-dev qt6-base-dev
    locales python3 python3-venv python3-setuptools python3-wheel python3-pytest python3-tomli
    python3-exceptiongroup mypy
    python3-websockets python3-jsonschema python3-numpy python3-pil openssl
    patchelf qpdf xvfb xauth fonts-dejavu-core fonts-liberation imagemagick libxml2-utils poppler-utils umockdev libumockdev-dev
    desktop-file-utils logrotate systemd)
browser_packages=(chromium firefox-esr fonts-dejavu-core imagemagick openssl)

# Somebody's own Node.js comes with npm as a rule, and Debian's npm does not go with it.
install_node() {
    local missing=()
    command -v node >/dev/null || missing+=(nodejs)
    command -v npm >/dev/null || missing+=(npm)
    [ ${#missing[@]} -eq 0 ] || install_packages "${missing[@]}"
    [ "$(node -p 'parseInt(process.versions.node)')" -ge 18 ] || fail "Node.js 18 or later is needed"
}

# install_node_packages FOLDER: what its lock file names, unless that is there already.
install_node_packages() {
    local lock=$1/package-lock.json stamp=$1/node_modules/.installed-lock
    if ! cmp -s "$lock" "$stamp"; then
        echo "installing the npm packages of $1"
        npm ci --prefix "$1" --silent && cp "$lock" "$stamp" || fail "npm could not install the packages of $1"
    fi
}

# configure PRESET [cmake option]...
configure() {
    local preset=$1 log
    shift
    log=$(cmake --preset "$preset" "$@" 2>&1) || { echo "$log"; fail "configuring preset $preset"; }
}

# configure_and_build PRESET [cmake option]...
configure_and_build() {
    configure "$@"
    cmake --build --preset "$1" || fail "building preset $1"
}

# shellcheck shell=bash disable=SC2034
# Debian packages that the other scripts need. Sourced, not run.

build_packages=(g++ cmake ninja-build pkg-config libcurl4-openssl-dev libssl-dev libxml2-dev
    libicu-dev libspdlog-dev libcli11-dev nlohmann-json3-dev libsecret-1-dev libsqlite3-dev
    libical-dev libsqlitecpp-dev libc-ares-dev tzdata ca-certificates)
test_packages=(libgtest-dev googletest make openssl python3 python3-dateutil python3-vobject
    python3-icalendar python3-h2 dnsmasq-base zsh)
server_packages=(radicale openssl curl)
demo_packages=(jq)
cyrus_packages=(cyrus-caldav cyrus-imapd sasl2-bin openssl curl)
clang_packages=(clang libclang-rt-14-dev llvm)
check_packages=(clang clang-format clang-tidy doxygen shellcheck git)
packaging_packages=(dpkg-dev fakeroot file lintian)

# missing_packages PKG...: prints those that are not installed, one a line.
missing_packages() {
    local package
    for package in "$@"; do
        dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
            echo "$package"
    done
}

# ensure_packages PKG...: installs what is missing; returns 1 with a message when that fails.
ensure_packages() {
    local missing as_root=()
    if ! command -v dpkg-query >/dev/null; then
        echo "packages: this script installs Debian packages; please provide: $*" >&2
        return 1
    fi
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -eq 0 ] && return 0
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "packages: not root and no sudo; please install: ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "packages: installing ${missing[*]}" >&2
    # A service that starts by itself would take a port of the machine; the scripts start their own.
    if "${as_root[@]}" apt-get -qq update >/dev/null &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive RUNLEVEL=1 \
            apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null; then
        return 0
    fi
    echo "packages: could not install ${missing[*]}" >&2
    return 1
}

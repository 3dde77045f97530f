# Shared by demo, check and .ci/run: source it.

export DEBIAN_FRONTEND=noninteractive

# What each command needs, as Debian 12 names it.
TOVI_BUILD_PACKAGES="g++ cmake ninja-build ccache git libicu-dev uuid-dev pkgconf libgmime-3.0-dev"
TOVI_TEST_PACKAGES="$TOVI_BUILD_PACKAGES libgtest-dev gdb doxygen clang-format-14 libglib2.0-dev"
TOVI_CI_PACKAGES="$TOVI_TEST_PACKAGES qtbase5-dev clang-14 libclang-rt-14-dev clang-tidy-14"
TOVI_BENCH_PACKAGES="$TOVI_BUILD_PACKAGES python3 libbenchmark-dev qtbase5-dev libglib2.0-dev libboost-dev libabsl-dev libroaring-dev
    nlohmann-json3-dev libpoco-dev libxml2-dev libhowardhinnant-date-dev"

# Says what comes next: step "what".
step() {
    printf '\n==> %s\n' "$*"
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo --preserve-env=DEBIAN_FRONTEND "$@"
    else
        echo "Packages are missing, and neither root nor sudo is at hand to run: $*" >&2
        return 1
    fi
}

installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Installs those of the packages that are missing.
install_packages() {
    if ! command -v apt-get >/dev/null; then
        echo "No apt-get here. What follows needs the counterparts of these packages: $*"
        return 0
    fi
    local package missing=()
    for package in "$@"; do
        installed "$package" || missing+=("$package")
    done
    if [ ${#missing[@]} = 0 ]; then
        echo "Nothing to install."
        return 0
    fi
    echo "Installing ${missing[*]}"
    local apt=(apt-get -qq -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3 -o Dpkg::Use-Pty=0)
    as_root "${apt[@]}" update
    as_root "${apt[@]}" install --yes --no-install-recommends "${missing[@]}"
}

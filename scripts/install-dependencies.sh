#!/usr/bin/env bash
# Installs the Debian packages that are still missing for a purpose:
#   build  library and examples        test   build, and GoogleTest
#   check  test, and clang with its tools    bench  build, and the benchmark library with the peers measured beside ours
#   cost   build, and what measures a build
# Asks apt-get only when something is missing, through sudo unless run as root.
set -euo pipefail

purpose=${1:-build}
packages=(g++ cmake ninja-build pkg-config libjsoncpp-dev libutfcpp-dev libutf8proc-dev)
case $purpose in
build) ;;
test) packages+=(libgtest-dev) ;;
check) packages+=(libgtest-dev clang clang-format) ;;
bench)
    packages+=(libbenchmark-dev libeigen3-dev libxtensor-dev rapidjson-dev nlohmann-json3-dev libsimdjson-dev
        libudunits2-dev libabsl-dev qtbase5-dev)
    ;;
cost) packages+=(time) ;;
*)
    echo "usage: $0 [build|test|check|bench|cost]" >&2
    exit 1
    ;;
esac

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
fi
"${as_root[@]}" apt-get update -qq >&2
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2

#!/usr/bin/env bash
# Installs the Debian packages the build needs, when any is missing. Nothing is
# downloaded from anywhere but the Debian archive. (postgresql provides the server
# programs the tests start a private server with; no system server is used.)
set -euo pipefail

packages=(cmake g++ make libsqlite3-dev sqlite3 libgtest-dev libgmock-dev libbenchmark-dev
          libcli11-dev nlohmann-json3-dev libpq-dev postgresql)
# `make fuzz` (libFuzzer and the sanitizers' runtime come with clang's runtime package).
[ "${1:-}" = fuzz ] && packages+=(clang libclang-rt-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}" >&2
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"

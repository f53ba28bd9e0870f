#!/usr/bin/env bash
# Installs everything the headless editor, the tests and the benchmarks need on a Debian machine.
# Safe to run again: packages already present are skipped and sol2 is fetched only once.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
packages=(build-essential cmake ninja-build ccache clang libclang-rt-dev liblua5.4-dev pkg-config libcli11-dev
	libgtest-dev libbenchmark-dev nlohmann-json3-dev libpugixml-dev valgrind lua-check)
# For the tests only: headless Chromium renders the channel map page, zlib reads its PNG, and
# qlcplus-data's fixture definitions (test data, never shipped) feed the import and give the text
# report real names.
packages+=(chromium-headless-shell zlib1g-dev qlcplus-data)

missing=()
for p in "${packages[@]}"; do
	dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ "${#missing[@]}" -gt 0 ]; then
	sudo_cmd=""
	[ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
	$sudo_cmd apt-get update -q
	DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

"$here/scripts/fetch-sol2.sh"

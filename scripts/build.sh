#!/usr/bin/env bash
# Configures and builds one build folder: scripts/build.sh [release|asan]
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
kind="${1:-release}"
# The project's own builds treat warnings as errors; ccache, when installed, keeps rebuilds short.
common=(-G Ninja -DKEST_WARNINGS_AS_ERRORS=ON)
if command -v ccache >/dev/null 2>&1; then
	common+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
case "$kind" in
release)
	dir="$here/build"
	cmake -S "$here" -B "$dir" "${common[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	;;
asan)
	dir="$here/build-asan"
	# clang, for libFuzzer as well as the sanitizers.
	cmake -S "$here" -B "$dir" "${common[@]}" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ \
		-DKEST_SANITIZE=ON -DKEST_FUZZ=ON -DKEST_BENCHMARKS=OFF >/dev/null
	;;
*)
	echo "usage: scripts/build.sh [release|asan]" >&2
	exit 2
	;;
esac
ninja -C "$dir"

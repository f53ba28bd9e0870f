#!/usr/bin/env bash
# Configures and builds one build folder from its preset in CMakePresets.json:
# scripts/build.sh [release|asan] (build/ or build-asan/).
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
kind="${1:-release}"
case "$kind" in
release | asan) ;;
*)
	echo "usage: scripts/build.sh [release|asan]" >&2
	exit 2
	;;
esac
# ccache, when installed, keeps rebuilds short.
launcher=()
if command -v ccache >/dev/null 2>&1; then
	launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cd "$here"
cmake --preset "$kind" "${launcher[@]}" >/dev/null
cmake --build --preset "$kind"

#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test twice: in the release build and in the
# AddressSanitizer + UndefinedBehaviorSanitizer build (the presets of CMakePresets.json).
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$here/scripts/install-deps.sh"

cd "$here"
scripts/build.sh release
ctest --preset release

scripts/build.sh asan
ctest --preset asan

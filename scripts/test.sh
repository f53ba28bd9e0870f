#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test twice: in the release build and in the
# AddressSanitizer + UndefinedBehaviorSanitizer build.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$here/scripts/install-deps.sh"

"$here/scripts/build.sh" release
ctest --test-dir "$here/build" --output-on-failure

"$here/scripts/build.sh" asan
ASAN_OPTIONS="detect_leaks=1:abort_on_error=1" UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1" \
	ctest --test-dir "$here/build-asan" --output-on-failure

#!/usr/bin/env bash
# Installs what is missing, builds, and runs the demo rig in the headless editor.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$here/scripts/install-deps.sh"
"$here/scripts/build.sh" release >/dev/null
exec "$here/build/kestdmx" run "$here/examples/stage_rig.lua"

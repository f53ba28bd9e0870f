#!/usr/bin/env bash
# Builds LuaUnwindExperiment.cpp against the C and the C++ build of Lua 5.4 and runs both:
# experiments/lua-unwind/run.sh [build folder, default a temporary one]
set -uo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
out="${1:-$(mktemp -d)}"
mkdir -p "$out"
cxx="${CXX:-g++}"
flags=(-std=c++20 -O1 -g -Wall -Wextra -Werror -I/usr/include/lua5.4)
"$cxx" "${flags[@]}" -DKEST_LUA_C_BUILD=1 "$here/LuaUnwindExperiment.cpp" -o "$out/lua_unwind_c" -llua5.4 || exit 2
"$cxx" "${flags[@]}" "$here/LuaUnwindExperiment.cpp" -o "$out/lua_unwind_cxx" -llua5.4-c++ || exit 2
"$out/lua_unwind_c"; c_status=$?
"$out/lua_unwind_cxx"; cxx_status=$?
echo "exit status: C build $c_status, C++ build $cxx_status (0 = every step closed and every buffer freed)"

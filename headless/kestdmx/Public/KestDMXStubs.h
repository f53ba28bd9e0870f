// Editor support for scripts, written from the API schema: a definition file for Lua language
// servers (LuaLS annotations) and a luacheck configuration declaring the globals.
#pragma once

#include <string>

// A "---@meta" file: aliases for the texts the module parses, a class for every handle, params
// table and result table, and every global and method with its parameters and results.
std::string FormatLuaLSDefinitions();

// A .luacheckrc (Lua 5.4) that declares the three globals and the editor global's functions.
std::string FormatLuacheckConfig();

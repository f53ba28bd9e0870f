-- The three globals, their argument checks, and the headless editor's own helpers.

assert(type(dmx_library) == "function")
assert(type(dmx_component) == "function")
assert(type(dmx_subsystem) == "function")

local function error_of(fn, ...)
  local ok, err = pcall(fn, ...)
  assert(not ok, "expected an error")
  return tostring(err)
end

-- sol2 refuses a wrong argument type before the module runs.
local err = error_of(dmx_library, 5)
assert(err:find("stack index 1, expected string, received number", 1, true), err)
err = error_of(dmx_library)
assert(err:find("stack index 1, expected string, received no value", 1, true), err)
err = error_of(dmx_component, nil)
assert(err:find("expected string, received nil", 1, true), err)

-- An unresolved path still answers a handle, never nil, and echoes the exact bytes given.
local h = dmx_library("")
assert(type(h) == "table" and h.valid == false and h.path == "")
local odd = "/Game/\0weird\255"
assert(dmx_library(odd).path == odd)
assert(dmx_component("").valid == false)
assert(dmx_component("").actor == "")

-- A fresh handle each call.
assert(dmx_library("/Game/Nope") ~= dmx_library("/Game/Nope"))

-- An unknown global fails with Lua's own error.
err = error_of(function() nope() end)
assert(err:find("attempt to call a nil value (global 'nope')", 1, true), err)

-- The editor global.
assert(editor.transaction_depth() == 0)
assert(editor.undo() == false and editor.redo() == false)
assert(#editor.undo_history() == 0)
assert(editor.spawn_actor("Spot_1", "Stage Left Spot") == true)
assert(editor.spawn_actor("spot_1") == false, "actor names are unique ignoring case")
assert(editor.create_library("/Game/DMX/Stage") == true)
assert(editor.create_library("/Game/DMX/Stage") == false)
assert(editor.create_library("not a path") == false)
local dirty = editor.dirty_packages()
assert(#dirty == 2 and dirty[1] == "/Game/DMX/Stage" and dirty[2] == "/Game/Maps/Untitled", table.concat(dirty, ","))

-- dmx_library(path): path resolution, invalid handles, argument checks, kinds and name lookup.

assert(editor.create_library("/Game/DMX/Stage"))
assert(editor.create_library("/Game/My"))
local function argument_error(fn, ...)
	local ok, err = pcall(fn, ...)
	assert(not ok and tostring(err):find("stack index", 1, true), "argument error expected, got " .. tostring(err))
end

-- Package path and object path reach the same library; each handle keeps its own text.
local H = dmx_library("/Game/DMX/Stage")
local ByObject = dmx_library("/Game/DMX/Stage.Stage")
assert(H.valid == true and ByObject.valid == true and ByObject.path == "/Game/DMX/Stage.Stage")
assert(H:add("fixture_type", {name = "Spot"}).name == "Spot" and ByObject:info().fixture_type_count == 1)
assert(dmx_library("/Game/DMX/Stage\0tail").valid == true, "the text up to a NUL is loaded")
-- A dot anywhere means an object path: a dotted folder is loaded as written and finds nothing.
assert(dmx_library("/Game/My").valid == true and dmx_library("/Game/My.Folder/Stage").valid == false)

-- Unresolved handles: methods answer their failure value without opening a step; info is {valid = false} alone.
for _, Path in ipairs({"", "   ", "/Game/DMX/Missing", "/Game/DMX/Stage.Nope"}) do
	local Bad = dmx_library(Path)
	assert(Bad.valid == false and Bad.path == Path, "invalid handle for '" .. Path .. "'")
	assert(Bad:add("fixture_type", {}) == nil and Bad:configure("fixture_type", "Spot", {}) == false
		and Bad:remove("fixture_type", "Spot") == false)
	local Info = Bad:info()
	assert(Info.valid == false and next(Info, next(Info)) == nil, "info holds only valid = false")
end
argument_error(H.add, H, "fixture_type", nil)
argument_error(H.add, H, "fixture_type", 3)
argument_error(H.configure, H, "fixture_type", "Spot")
argument_error(H.configure, H, "fixture_type", 1, {})
argument_error(H.remove, H, "fixture_type", 5)
argument_error(H.info)
assert(#editor.undo_history() == 1 and editor.transaction_depth() == 0, "no step from invalid handles or argument errors")

-- Kinds and names ignore case; other kinds fail.
assert(H:add("FIXTURE_TYPE", {name = "Wash"}).name == "Wash")
assert(H:add("Fixture_Patch", {fixture_type = "WASH", name = "W1"}).name == "W1")
assert(H:add("fixture", {}) == nil and H:add("", {}) == nil and H:configure("patch", "W1", {}) == false)
assert(H:configure("FIXTURE_PATCH", "w1", {universe = 4}) == true and H:remove("Fixture_Patch", "W1") == true)

-- Duplicate names: the first in library order wins; types and patches have their own names.
assert(H:add("fixture_patch", {fixture_type = "Spot", name = "Front"}))
assert(H:add("fixture_patch", {fixture_type = "Spot", name = "Back"}))
assert(H:configure("fixture_patch", "back", {name = "FRONT", universe = 9}))
assert(H:add("fixture_patch", {fixture_type = "Spot", name = "Spot"}).name == "Spot", "a patch may share a type's name")
assert(H:configure("fixture_patch", "front", {universe = 5}))
local Patches = H:info().fixture_patches
assert(Patches[1].name == "Front" and Patches[1].universe == 5 and Patches[2].name == "FRONT" and Patches[2].universe == 9)
assert(H:remove("fixture_patch", "FrOnT") and H:info().fixture_patches[1].name == "FRONT", "the next call finds the second")
assert(H:remove("fixture_patch", "spot") and H:info().fixture_type_count == 2, "patch Spot removed, type Spot kept")

-- The empty name is a name like any other; an absent fixture_type looks for it.
assert(H:add("fixture_patch", {}) == nil, "no type named ''")
assert(H:configure("fixture_type", "wash", {name = ""}))
assert(H:add("fixture_patch", {name = "U1"}).name == "U1" and H:info().fixture_patches[2].fixture_type == "")
assert(H:remove("fixture_type", "") and not H:remove("fixture_type", ""), "removed once")

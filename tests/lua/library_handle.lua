-- dmx_library(path): handle shape, path resolution, name lookup and the binding layer's argument checks.

local Title = "Vorlith: Add DMX Library Entity"

assert(editor.create_library("/Game/DMX/Stage"))
assert(editor.create_library("/Game/My"))

-- Package path and object path reach the same library; each handle keeps its own text.
local ByPackage = dmx_library("/Game/DMX/Stage")
local ByObject = dmx_library("/Game/DMX/Stage.Stage")
assert(ByPackage.valid == true and ByObject.valid == true, "both paths resolve")
assert(ByPackage.path == "/Game/DMX/Stage" and ByObject.path == "/Game/DMX/Stage.Stage", "path is the argument as given")
assert(type(ByPackage.info) == "function" and type(ByPackage.add) == "function"
	and type(ByPackage.configure) == "function" and type(ByPackage.remove) == "function", "four methods")
assert(ByPackage:add("fixture_type", {name = "Spot"}).name == "Spot")
assert(ByObject:info().fixture_type_count == 1, "the object-path handle sees the type added through the package path")
assert(ByPackage ~= dmx_library("/Game/DMX/Stage"), "a fresh table per call")

-- A dot anywhere means an object path: a dotted folder is loaded as written (package /Game/My,
-- object Folder/Stage) and finds nothing.
assert(dmx_library("/Game/My").valid == true)
assert(dmx_library("/Game/My.Folder/Stage").valid == false, "dotted folder is not completed")

-- Unresolved handles: methods exist and fail at once without opening a transaction.
local Steps = #editor.undo_history()
for _, Path in ipairs({"", "   ", "/Game/DMX/Missing", "/Game/DMX/Stage.Nope"}) do
	local Bad = dmx_library(Path)
	assert(Bad.valid == false and Bad.path == Path, "invalid handle for '" .. Path .. "'")
	assert(Bad:add("fixture_type", {}) == nil)
	assert(Bad:configure("fixture_type", "Spot", {}) == false)
	assert(Bad:remove("fixture_type", "Spot") == false)
	local Info = Bad:info()
	assert(Info.valid == false and next(Info, next(Info)) == nil, "info holds only valid = false")
end
assert(#editor.undo_history() == Steps, "no undo step from an invalid handle")

-- The path field keeps the script's bytes, even past a NUL.
local Odd = dmx_library("/Game/DMX/Stage\0tail")
assert(Odd.path == "/Game/DMX/Stage\0tail" and Odd.valid == true, "text up to the NUL is loaded, path kept whole")

-- Argument errors come from the binding layer and leave nothing behind.
local function ExpectArgumentError(Fn, ...)
	local Ok, Err = pcall(Fn, ...)
	assert(not Ok and tostring(Err):find("stack index", 1, true), "argument error expected, got " .. tostring(Err))
end
ExpectArgumentError(dmx_library, 5)
ExpectArgumentError(dmx_library)
ExpectArgumentError(ByPackage.add, "fixture_type", {})
ExpectArgumentError(ByPackage.add, ByPackage, "fixture_type", nil)
ExpectArgumentError(ByPackage.add, ByPackage, "fixture_type", 3)
ExpectArgumentError(ByPackage.configure, ByPackage, "fixture_type", "Spot")
ExpectArgumentError(ByPackage.remove, ByPackage, "fixture_type", 5)
ExpectArgumentError(ByPackage.remove, "fixture_type", "Spot")
assert(#editor.undo_history() == Steps and editor.transaction_depth() == 0, "argument errors open nothing")

-- Kinds ignore case; anything else fails after opening a step.
local H = ByPackage
assert(H:add("FIXTURE_TYPE", {name = "Wash"}).name == "Wash")
assert(H:add("Fixture_Patch", {fixture_type = "WASH", name = "W1"}).name == "W1", "type name found ignoring case")
assert(H:add("fixture", {}) == nil and H:add("", {}) == nil)
assert(H:configure("FIXTURE_PATCH", "w1", {universe = 4}) == true)
assert(H:configure("patch", "W1", {}) == false)
assert(H:remove("Fixture_Patch", "W1") == true)

-- Duplicate names: the first in library order wins, and each class has its own names.
assert(H:add("fixture_patch", {fixture_type = "Spot", name = "Front"}).name == "Front")
assert(H:add("fixture_patch", {fixture_type = "Spot", name = "Back"}).name == "Back")
assert(H:configure("fixture_patch", "back", {name = "FRONT", universe = 9}))
assert(H:add("fixture_patch", {fixture_type = "Spot", name = "Spot"}).name == "Spot", "patch may share a type's name")
assert(H:configure("fixture_patch", "front", {universe = 5}))
local Patches = H:info().fixture_patches
assert(Patches[1].name == "Front" and Patches[1].universe == 5, "first Front configured")
assert(Patches[2].name == "FRONT" and Patches[2].universe == 9, "second FRONT untouched")
assert(H:remove("fixture_patch", "FrOnT"))
Patches = H:info().fixture_patches
assert(#Patches == 2 and Patches[1].name == "FRONT", "remove took the first, the next call finds the second")
assert(H:remove("fixture_patch", "spot") and H:info().fixture_type_count == 2, "patch Spot removed, type Spot kept")

-- The empty name is a name like any other.
assert(H:add("fixture_patch", {}) == nil, "no fixture_type names no type")
assert(H:configure("fixture_type", "wash", {name = ""}))
local Unnamed = H:add("fixture_patch", {name = "U1"})
assert(Unnamed and Unnamed.name == "U1", "absent fixture_type matches the type named ''")
assert(H:info().fixture_patches[2].fixture_type == "")
assert(H:remove("fixture_type", "") and not H:remove("fixture_type", ""), "empty name removes once")

for _, Step in ipairs(editor.undo_history()) do
	assert(Step:sub(1, 8) == "Vorlith:", "only module steps: " .. Step)
end
assert(editor.undo_history()[1] == Title)

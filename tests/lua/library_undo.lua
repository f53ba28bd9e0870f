-- One undo step per changing call, with its title; failing calls leave exactly the steps they opened.

local Add, Configure, Remove = "Vorlith: Add DMX Library Entity", "Vorlith: Configure DMX Library Entity",
	"Vorlith: Remove DMX Library Entity"
assert(editor.create_library("/Game/DMX/Undo"))
local H = dmx_library("/Game/DMX/Undo")

local function ExpectSteps(...)
	local History, Expected = table.concat(editor.undo_history(), "|"), table.concat({...}, "|")
	assert(History == Expected, "history " .. History .. " ~= " .. Expected)
	assert(editor.transaction_depth() == 0, "transaction left open")
end
local function Counts()
	local Info = H:info()
	return Info.fixture_type_count .. "/" .. Info.fixture_patch_count
end
local function Patch() return H:info().fixture_patches[1] end

-- add.
assert(H:add("fixture_type", {name = "Spot", modes = {{functions = {{attribute = "Dimmer"}}}}}))
assert(H:add("fixture_patch", {fixture_type = "Spot", name = "S1", universe = 2}))
ExpectSteps(Add, Add)
assert(editor.undo() and Counts() == "1/0" and editor.undo() and Counts() == "0/0")
assert(editor.redo() and editor.redo() and Counts() == "1/1" and Patch().fixture_type == "Spot")

-- configure.
assert(H:configure("fixture_patch", "S1", {universe = 9, name = "Renamed", tags = {"a"}}))
assert(H:configure("fixture_type", "Spot", {modes = {}, category = "Strobe"}))
ExpectSteps(Add, Add, Configure, Configure)
assert(editor.undo())
local Type = H:info().fixture_types[1]
assert(Type.mode_count == 1 and Type.category ~= "Strobe", "type configuration undone")
assert(editor.undo() and Patch().name == "S1" and Patch().universe == 2 and Patch().tag_count == 0, "patch configuration undone")
assert(H:configure("fixture_patch", "s1", {universe = 4}) and editor.undo() and editor.redo() and Patch().universe == 4)
ExpectSteps(Add, Add, Configure)

-- remove: undo brings the type back, but not its patch's link to it (the engine does not record the patch).
assert(H:remove("fixture_type", "Spot") and Patch().fixture_type == "")
assert(editor.undo() and Counts() == "1/1" and Patch().fixture_type == "" and Patch().active_mode_index == 0)
Type = H:info().fixture_types[1]
assert(Type.name == "Spot" and Type.mode_count == 1 and Type.category ~= "Strobe", "the type comes back whole")
assert(editor.redo() and Counts() == "0/1" and editor.undo())
assert(H:remove("fixture_patch", "S1") and editor.undo() and Counts() == "1/1")
assert(H:remove("fixture_patch", "S1") and not H:remove("fixture_patch", "S1"))
ExpectSteps(Add, Add, Configure, Remove, Remove)

-- Failing calls on a valid handle leave their (empty) step, which undoes to nothing.
assert(H:add("gobo", {}) == nil and H:add("fixture_patch", {fixture_type = "Nope"}) == nil)
assert(H:configure("fixture_patch", "Ghost", {universe = 1}) == false and H:configure("nothing", "Spot", {}) == false)
assert(H:remove("fixture_type", "Ghost") == false and H:remove("", "") == false)
ExpectSteps(Add, Add, Configure, Remove, Remove, Add, Add, Configure, Configure, Remove, Remove)
for _ = 1, 6 do assert(editor.undo()) end
assert(Counts() == "1/0")
ExpectSteps(Add, Add, Configure, Remove, Remove)

-- Invalid handles and argument errors open nothing; every changing call dirtied the library's package.
local Missing = dmx_library("/Game/DMX/Missing")
assert(Missing:add("fixture_type", {}) == nil and Missing:configure("fixture_type", "x", {}) == false)
assert(not pcall(H.add, H, "fixture_type") and not pcall(H.remove, "fixture_type", "Spot"))
ExpectSteps(Add, Add, Configure, Remove, Remove)
assert(table.concat(editor.dirty_packages(), "|"):find("/Game/DMX/Undo", 1, true))

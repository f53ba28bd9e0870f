-- One undo step per changing call, with its title; failing calls leave exactly the steps they opened.

local Add, Configure, Remove = "Vorlith: Add DMX Library Entity", "Vorlith: Configure DMX Library Entity",
	"Vorlith: Remove DMX Library Entity"

assert(editor.create_library("/Game/DMX/Undo"))
local H = dmx_library("/Game/DMX/Undo")

local function History()
	return table.concat(editor.undo_history(), "|")
end
local function ExpectSteps(...)
	local Expected = table.concat({...}, "|")
	assert(History() == Expected, "history " .. History() .. " ~= " .. Expected)
	assert(editor.transaction_depth() == 0, "transaction left open")
end
local function Counts()
	local Info = H:info()
	return Info.fixture_type_count, Info.fixture_patch_count
end

ExpectSteps()
assert(H:add("fixture_type", {name = "Spot", modes = {{functions = {{attribute = "Dimmer"}}}}}))
assert(H:add("fixture_patch", {fixture_type = "Spot", name = "S1", universe = 2}))
ExpectSteps(Add, Add)

-- Undo and redo of add.
assert(editor.undo())
assert(select(2, Counts()) == 0, "patch undone")
assert(editor.undo())
assert(select(1, Counts()) == 0, "type undone")
assert(editor.redo() and editor.redo())
local T, P = Counts()
assert(T == 1 and P == 1 and H:info().fixture_patches[1].fixture_type == "Spot", "both redone")
ExpectSteps(Add, Add)

-- Undo and redo of configure.
assert(H:configure("fixture_patch", "S1", {universe = 9, name = "Renamed", tags = {"a"}}))
assert(H:configure("fixture_type", "Spot", {modes = {}, category = "Strobe"}))
ExpectSteps(Add, Add, Configure, Configure)
assert(editor.undo())
local Type = H:info().fixture_types[1]
assert(Type.mode_count == 1 and Type.category ~= "Strobe", "type configuration undone")
assert(editor.undo())
local Patch = H:info().fixture_patches[1]
assert(Patch.name == "S1" and Patch.universe == 2 and Patch.tag_count == 0, "patch configuration undone")
assert(H:configure("fixture_patch", "s1", {universe = 4}), "the restored name is found again")
ExpectSteps(Add, Add, Configure)
assert(editor.undo() and editor.redo())
assert(H:info().fixture_patches[1].universe == 4)

-- Undo and redo of remove.
assert(H:remove("fixture_type", "Spot"))
ExpectSteps(Add, Add, Configure, Remove)
assert(H:info().fixture_patches[1].fixture_type == "")
assert(editor.undo())
assert(select(1, Counts()) == 1 and H:info().fixture_patches[1].fixture_type == "Spot", "type and its patch link restored")
assert(editor.redo() and select(1, Counts()) == 0)
assert(editor.undo())
assert(H:remove("fixture_patch", "S1"))
ExpectSteps(Add, Add, Configure, Remove)
assert(editor.undo() and select(2, Counts()) == 1)
assert(H:remove("fixture_patch", "S1") and not H:remove("fixture_patch", "S1"))
ExpectSteps(Add, Add, Configure, Remove, Remove)

-- Failing calls on a valid handle still leave their (empty) step.
assert(H:add("gobo", {}) == nil)
assert(H:add("fixture_patch", {fixture_type = "Nope"}) == nil)
assert(H:configure("fixture_patch", "Ghost", {universe = 1}) == false)
assert(H:configure("nothing", "Spot", {}) == false)
assert(H:remove("fixture_type", "Ghost") == false)
assert(H:remove("", "") == false)
ExpectSteps(Add, Add, Configure, Remove, Remove, Add, Add, Configure, Configure, Remove, Remove)
local TypesBefore, PatchesBefore = Counts()
assert(editor.undo() and editor.undo() and editor.undo() and editor.undo() and editor.undo() and editor.undo())
T, P = Counts()
assert(T == TypesBefore and P == PatchesBefore, "undoing the empty steps changes nothing")
ExpectSteps(Add, Add, Configure, Remove, Remove)

-- Invalid handles and argument errors open nothing.
local Missing = dmx_library("/Game/DMX/Missing")
assert(Missing:add("fixture_type", {}) == nil and Missing:configure("fixture_type", "x", {}) == false
	and Missing:remove("fixture_type", "x") == false)
assert(not pcall(H.add, H, "fixture_type"))
assert(not pcall(H.configure, H, "fixture_type", 1, {}))
assert(not pcall(H.remove, "fixture_type", "Spot"))
ExpectSteps(Add, Add, Configure, Remove, Remove)

-- Every changing call dirties the library's package.
local Dirty = table.concat(editor.dirty_packages(), "|")
assert(Dirty:find("/Game/DMX/Undo", 1, true), "package dirty: " .. Dirty)

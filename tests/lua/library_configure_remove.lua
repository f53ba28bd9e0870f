-- configure(): only the keys given are applied; remove(): one entity per call.

assert(editor.create_library("/Game/DMX/Edit"))
local H = dmx_library("/Game/DMX/Edit")
local function Find(List, Name)
	for _, Item in ipairs(List) do
		if Item.name == Name then
			return Item
		end
	end
end
local function PatchInfo(Name) return Find(H:info().fixture_patches, Name) end
local function TypeInfo(Name) return Find(H:info().fixture_types, Name) end
local function Same(A, B)
	for K, V in pairs(A) do
		if type(V) ~= "table" and B[K] ~= V then return false end
	end
	return true
end

assert(H:add("fixture_type", {name = "One", category = "Static", modes = {{name = "M", functions = {{attribute = "Dimmer"}}}}}))
assert(H:add("fixture_type", {name = "Three", modes = {{}, {name = "B"}, {name = "C", functions = {{data_type = "16bit"}}}}}))
assert(H:add("fixture_patch", {fixture_type = "One", name = "P", universe = 3, starting_channel = 10, tags = {"x"},
	receive_dmx_in_editor = true, editor_color = {r = 0.5, g = 0.25, b = 0.125, a = 1}}))

-- Empty params and wrong types change nothing; each absent key is read once, nothing falls back to a default.
local Before = PatchInfo("P")
assert(H:configure("fixture_patch", "p", {}) == true and Same(Before, PatchInfo("P")) and Same(PatchInfo("P"), Before))
assert(H:configure("fixture_patch", "P", {universe = "7", starting_channel = true, tags = "t", editor_color = 1}) == true)
local Reads = {}
assert(H:configure("fixture_patch", "P", setmetatable({}, {__index = function(_, K) Reads[#Reads + 1] = K end})))
assert(table.concat(Reads, " ") == "name fixture_type universe starting_channel active_mode_index tags "
	.. "receive_dmx_in_editor editor_color", table.concat(Reads, " "))
assert(Same(Before, PatchInfo("P")), "nothing changed")

-- Clamps as on creation; a partial colour changes only its components.
assert(H:configure("fixture_patch", "P", {starting_channel = 0, universe = 2^40, editor_color = {a = 0.5}, tags = {}, receive_dmx_in_editor = false}))
local Info = PatchInfo("P")
assert(Info.starting_channel == 1 and Info.universe == 0 and Info.tag_count == 0 and Info.receive_dmx_in_editor == false)
assert(Info.editor_color_r == 0.5 and Info.editor_color_b == 0.125 and Info.editor_color_a == 0.5)

-- "fixture_type" is applied before "active_mode_index"; an unknown type is skipped and the rest applied.
assert(H:configure("fixture_patch", "P", {active_mode_index = 2, fixture_type = "three"}))
Info = PatchInfo("P")
assert(Info.fixture_type == "Three" and Info.active_mode_index == 2 and Info.channel_span == 2)
assert(H:configure("fixture_patch", "P", {fixture_type = "Nobody", active_mode_index = 1, universe = 6}) == true)
Info = PatchInfo("P")
assert(Info.fixture_type == "Three" and Info.active_mode_index == 1 and Info.universe == 6)
assert(H:configure("fixture_patch", "P", {active_mode_index = 9}) and PatchInfo("P").active_mode_index == 1, "the engine refuses a missing mode")

-- Renames are verbatim: duplicates and the empty name included; the first match is renamed.
assert(H:configure("fixture_patch", "P", {name = "Front"}) and PatchInfo("Front"))
assert(H:configure("fixture_type", "ONE", {name = "Three"}))
assert(H:configure("fixture_type", "three", {name = "", category = ""}))
Info = H:info().fixture_types
assert(Info[1].name == "" and Info[1].category == "None" and Info[2].name == "Three")

-- Fixture type: other keys leave the modes alone; "modes" replaces them, skipping non-tables; {} leaves none.
assert(H:configure("fixture_type", "", {name = "One", category = "Strobe"}))
assert(TypeInfo("One").category == "Strobe" and TypeInfo("One").mode_count == 1 and TypeInfo("One").modes[1].name == "M")
assert(H:configure("fixture_type", "Three", {modes = {"skip", {name = "Only"}}}) and TypeInfo("Three").modes[1].name == "Only")
assert(H:configure("fixture_type", "Three", {modes = {}}) and TypeInfo("Three").mode_count == 0)

-- Failures answer false and apply nothing.
assert(H:configure("fixture_type", "Nope", {name = "X"}) == false)
assert(H:configure("fixture_patch", "One", {name = "X"}) == false, "a type's name is not a patch's")
assert(H:configure("entity", "One", {name = "X"}) == false and TypeInfo("One"))

-- Remove: true then false for the same name; wrong kind or name is false.
assert(H:add("fixture_patch", {fixture_type = "One", name = "Back"}))
assert(H:remove("FIXTURE_PATCH", "back") == true and H:remove("fixture_patch", "Back") == false)
assert(H:remove("fixture_type", "Front") == false and H:remove("fixture", "Front") == false and PatchInfo("Front"))

-- Removing a type keeps its patches, now without a type; configure gives them one again.
assert(H:remove("Fixture_Type", "three") == true)
Info = H:info()
assert(Info.fixture_type_count == 1 and Info.fixture_patch_count == 1)
assert(PatchInfo("Front").fixture_type == "" and PatchInfo("Front").channel_span == 0)
assert(H:configure("fixture_patch", "Front", {fixture_type = "One", active_mode_index = 0}))
assert(PatchInfo("Front").fixture_type == "One" and PatchInfo("Front").channel_span == 1)

-- add("fixture_type"): creation defaults, the "modes" list, function and matrix keys.

assert(editor.create_library("/Game/DMX/Types"))
local H = dmx_library("/Game/DMX/Types")

local function TypeInfo(Name)
	for _, Type in ipairs(H:info().fixture_types) do
		if Type.name == Name then
			return Type
		end
	end
	error("no fixture type " .. Name)
end

-- Defaults: one mode "Mode", empty category, engine-made unique names.
local Plain = H:add("fixture_type", {})
assert(Plain.name == "FixtureType" and Plain.mode_count == 1)
local Info = TypeInfo("FixtureType")
assert(Info.category == "None" and Info.modes[1].name == "Mode" and Info.modes[1].function_count == 0)
assert(Info.modes[1].channel_span == 0, "the default mode is left as the engine adds it")
assert(H:add("fixture_type", {name = "Bare", modes = {{}}}).mode_count == 1)
assert(TypeInfo("Bare").modes[1].channel_span == 1, "an empty mode table still updates the span (the disabled matrix counts)")
assert(H:add("fixture_type", {name = 7, category = true}).name == "FixtureType_1", "wrong types fall back")
assert(H:add("fixture_type", {name = "Movers", category = "Moving Head"}))
assert(TypeInfo("Movers").category == "Moving Head")

-- "modes": {} gives none; non-table entries add no mode; a userdata list has no entries.
assert(H:add("fixture_type", {name = "Empty", modes = {}}).mode_count == 0)
assert(H:add("fixture_type", {name = "Skip", modes = {{name = "A"}, "x", 4, {name = "B"}}}).mode_count == 2)
Info = TypeInfo("Skip")
assert(Info.modes[1].name == "A" and Info.modes[2].name == "B" and Info.modes[2].index == 1)
assert(H:add("fixture_type", {name = "Dup", modes = {{name = "A"}, {name = "a"}, {}}}).mode_count == 3)
Info = TypeInfo("Dup")
assert(Info.modes[1].name == "A" and Info.modes[2].name == "a_1" and Info.modes[3].name == "Mode", "engine keeps mode names unique")
assert(H:add("fixture_type", {name = "UserdataModes", modes = io.stdout}).mode_count == 0)
assert(H:add("fixture_type", io.stdout).name == "FixtureType_2", "userdata params read through its metatable")

-- Channel span keys: clamped, and a manual span survives the final update.
H:add("fixture_type", {name = "Spans", modes = {
	{auto_channel_span = false, channel_span = -5},
	{auto_channel_span = false, channel_span = 600.7},
	{auto_channel_span = 1, channel_span = 40},
}})
Info = TypeInfo("Spans")
assert(Info.modes[1].channel_span == 0 and Info.modes[2].channel_span == 512)
assert(Info.modes[3].auto_channel_span == true and Info.modes[3].channel_span == 1, "a number is not a boolean")

-- Functions: skipped entries, text parses, 32-bit truncation, physical range rules.
H:add("fixture_type", {name = "Funcs", modes = {{functions = {
	5,
	{attribute = "Dimmer", name = "Dim", description = "main", data_type = "16BIT", default_value = 255.9, use_lsb = true},
	{attribute = "Pan", name = "Dim", data_type = "E64Bit", default_value = 4294967295},
	{data_type = "24bit"},
	{data_type = "e32bit", default_value = -7.9},
	{},
}}}})
local Mode = TypeInfo("Funcs").modes[1]
local F = Mode.functions
assert(#F == 5 and Mode.function_count == 5, "the number entry is skipped")
assert(F[1].attribute == "Dimmer" and F[1].name == "Dim" and F[1].description == "main")
assert(F[1].data_type == "E16Bit" and F[1].default_value == 255 and F[1].use_lsb == true)
assert(F[2].name == "Dim_1" and F[2].data_type == "E8Bit" and F[2].default_value == -2147483648 and F[2].use_lsb == false)
assert(F[3].attribute == "None" and F[3].name == "Function" and F[3].description == "" and F[3].data_type == "E24Bit")
assert(F[4].data_type == "E32Bit" and F[4].default_value == -7)
assert(F[5].name == "Function_2" and F[5].data_type == "E8Bit")
assert(F[1].channel == 1 and F[2].channel == 3 and F[3].channel == 4 and F[4].channel == 7 and F[5].channel == 11, "functions follow each other")
assert(Mode.channel_span == 11)

H:add("fixture_type", {name = "Physical", modes = {{functions = {
	{default_value = 200},
	{default_value = 200, physical_to = 255},
	{default_value = 200, physical_from = 10},
	{default_value = 200, physical_default_value = "5", physical_from = "0"},
	{physical_default_value = 0.5},
	{physical_default_value = 0.5, physical_to = 100},
	{physical_default_value = 0.5, data_type = "16bit"},
	{physical_default_value = 7},
}}}})
F = TypeInfo("Physical").modes[1].functions
assert(F[1].default_value == 200, "no physical key: default value kept")
assert(F[2].default_value == 0 and F[3].default_value == 0, "either end alone sets the range, which rescales the default")
assert(F[4].default_value == 200, "strings do not count")
assert(F[5].default_value == 127 and F[6].default_value == 127 and F[7].default_value == 32767)
assert(F[8].default_value == 255, "the physical default is clamped into 0..1")

-- "functions" = {} or a userdata empties the list.
assert(H:add("fixture_type", {name = "NoFuncs", modes = {{functions = {}}, {functions = io.stdout}}}).mode_count == 2)
assert(TypeInfo("NoFuncs").modes[1].function_count == 0 and TypeInfo("NoFuncs").modes[2].function_count == 0)

-- Matrix keys: clamps, distribution words, cell attributes.
H:add("fixture_type", {name = "Matrix", modes = {
	{matrix = {}},
	{matrix = {enabled = true, x_cells = 0, y_cells = 600, first_cell_channel = -4, distribution = "TOPLEFTTOBOTTOM"}},
	{matrix = {x_cells = 4.9, y_cells = "3", distribution = "Top Left To Bottom", cell_attributes = {}}},
	{matrix = {distribution = "TopRightToAntiClockwise", cell_attributes = {
		{attribute = "Red"}, 7, {attribute = "Green", description = "g", data_type = "16bit", default_value = 300.5, use_lsb = true}}}},
	{matrix = {distribution = "bottomrighttoclockwise", cell_attributes = io.stdout}},
	{matrix = {enabled = "yes", distribution = "TopLeftToRight"}},
	{matrix = {enabled = true}, functions = {{attribute = "Dimmer"}}},
}})
local Modes = TypeInfo("Matrix").modes
assert(Modes[1].matrix_enabled == false and Modes[1].matrix_x_cells == 1 and Modes[1].cell_attribute_count == 1)
assert(Modes[1].cell_attributes[1].attribute == "Red" and Modes[1].matrix_distribution == "TopLeftToRight")
assert(Modes[2].matrix_enabled == true and Modes[2].matrix_x_cells == 1 and Modes[2].matrix_y_cells == 512)
assert(Modes[2].matrix_first_cell_channel == 1 and Modes[2].matrix_distribution == "TopLeftToBottom")
assert(Modes[2].channel_span == 512)
assert(Modes[3].matrix_x_cells == 4 and Modes[3].matrix_y_cells == 1 and Modes[3].matrix_distribution == "TopLeftToRight")
assert(Modes[3].cell_attribute_count == 0 and #Modes[3].cell_attributes == 0 and Modes[3].channel_span == 0)
local Cells = Modes[4].cell_attributes
assert(Modes[4].matrix_distribution == "TopLeftToRight", "names outside the six change nothing")
assert(#Cells == 2 and Cells[1].attribute == "Red" and Cells[1].data_type == "E8Bit" and Cells[1].description == "")
assert(Cells[2].attribute == "Green" and Cells[2].description == "g" and Cells[2].data_type == "E16Bit")
assert(Cells[2].default_value == 300 and Cells[2].use_lsb == true)
assert(Modes[5].matrix_distribution == "BottomRightToClockwise" and Modes[5].cell_attribute_count == 0)
assert(Modes[6].matrix_enabled == false and Modes[6].matrix_distribution == "TopLeftToRight")
assert(Modes[7].matrix_enabled == true and Modes[7].matrix_first_cell_channel == 1 and Modes[7].functions[1].channel == 2,
	"enabling the matrix moves the functions behind it")

-- A userdata matrix is read through its metatable: nothing given, so the current settings stay.
assert(H:add("fixture_type", {name = "UserdataMatrix", modes = {{matrix = io.stdout}}}))
Modes = TypeInfo("UserdataMatrix").modes
assert(Modes[1].matrix_enabled == false and Modes[1].matrix_x_cells == 1 and Modes[1].cell_attribute_count == 1)

-- A metamethod that rebuilds the very modes being filled does not upset the call.
local Hits = 0
local Meddler = setmetatable({}, {__index = function(_, K)
	if K == "name" then
		Hits = Hits + 1
		for _ = 1, 20 do
			assert(H:configure("fixture_type", "Meddled", {modes = {{}, {}, {}, {}, {}, {}}}))
		end
		assert(H:configure("fixture_type", "Meddled", {modes = {}}))
	end
end})
assert(H:add("fixture_type", {name = "Meddled", modes = {{}}}))
assert(H:configure("fixture_type", "Meddled", {modes = {{functions = {Meddler, Meddler}, matrix = Meddler}, {name = "Last"}}}))
assert(Hits == 2 and TypeInfo("Meddled").mode_count == 1 and TypeInfo("Meddled").modes[1].name == "Last")
assert(editor.transaction_depth() == 0)

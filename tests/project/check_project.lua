-- Runs on the folder that build_project.lua saved: everything must have come back from the files,
-- clean (nothing to save, nothing to undo), and equal to what the build script saw.

assert(#editor.dirty_packages() == 0, "a loaded project has nothing to save: " .. table.concat(editor.dirty_packages(), ", "))
assert(#editor.undo_history() == 0, "loading is not an undoable edit")
assert(not editor.create_library("/Game/DMX/Stage"), "Stage was loaded")

local stage = dmx_library("/Game/DMX/Stage")
local pars = dmx_library("/Game/DMX/Floor/Pars")
assert(stage.valid and pars.valid, "both libraries load")

local info = stage:info()
assert(info.fixture_type_count == 2 and info.fixture_patch_count == 3, "Stage holds 2 types and 3 patches")
assert(info.fixture_types[1].name == "Spot" and info.fixture_types[2].name == "LED Bar", "types in library order")
assert(info.fixture_types[1].category == "Moving Head", "category")
local pan = info.fixture_types[1].modes[1].functions[1]
assert(pan.name == "Pan" and pan.data_type == "E16Bit", "Pan function")
assert(info.fixture_types[1].modes[1].functions[2].use_lsb == true, "Tilt keeps LSB order")
assert(info.fixture_types[1].modes[1].functions[3].description == 'master "dim"', "description")
local bar_mode = info.fixture_types[2].modes[1]
assert(bar_mode.matrix_enabled and bar_mode.matrix_x_cells == 8 and bar_mode.cell_attribute_count == 3, "matrix")
assert(bar_mode.cell_attributes[2].attribute == "Green" and bar_mode.cell_attributes[2].default_value == 9, "cell attribute")

local spot1, spot2, bar1 = info.fixture_patches[1], info.fixture_patches[2], info.fixture_patches[3]
assert(spot1.name == "Spot 1" and spot1.fixture_type == "Spot" and spot1.universe == 1 and spot1.starting_channel == 1, "Spot 1")
assert(spot1.tag_count == 2 and spot1.tags[1] == "truss" and spot1.tags[2] == "stage-left", "tags in order")
assert(spot1.editor_color_a == 0.5 and math.abs(spot1.editor_color_g - 0.4) < 1e-6, "editor colour")
assert(spot2.active_mode_index == 1 and spot2.channel_span == 1, "Spot 2 keeps its mode")
assert(bar1.receive_dmx_in_editor == true and bar1.starting_channel == 100, "Bar 1")
assert(spot1.fixture_id == 1 and spot2.fixture_id == 2 and bar1.fixture_id == 3, "fixture IDs")
assert(spot1.mvr_fixture_uuid ~= spot2.mvr_fixture_uuid, "MVR UUIDs stay distinct")

local truss = dmx_component("Truss"):info()
assert(truss.actor_label == "Truss A" and truss.component_count == 2, "Truss has two components")
assert(truss.components[1].name == "DMXComponent" and truss.components[1].fixture_patch == "Spot 1", "patch by reference")
assert(truss.components[1].receive_dmx_from_patch == false and truss.components[1].registered, "receive state, registered")
assert(truss.components[2].name == "Second" and truss.components[2].fixture_patch == "Par 1", "patch from the other library")
assert(truss.components[2].universe == 5 and truss.components[2].starting_channel == 512, "the patch itself")
local floor = dmx_component("Floor"):info()
assert(floor.component_count == 1 and floor.components[1].fixture_patch == "", "an unpatched component")

-- Everything the build script saw, compared value by value (kinds included).
local function compare(expected, actual, where)
	if type(expected) ~= "table" then
		assert(math.type(expected) == math.type(actual) and expected == actual,
			where .. ": expected " .. tostring(expected) .. ", got " .. tostring(actual))
		return
	end
	assert(type(actual) == "table", where .. ": expected a table")
	for key, value in pairs(expected) do
		compare(value, actual[key], where .. "." .. tostring(key))
	end
	for key in pairs(actual) do
		assert(expected[key] ~= nil, where .. ": unexpected key " .. tostring(key))
	end
end

local snapshot_file = os.getenv("KESTDMX_SNAPSHOT")
if snapshot_file then
	local expected = dofile(snapshot_file)
	compare(expected, {
		stage = info,
		pars = pars:info(),
		truss = truss,
		floor = floor,
	}, "project")
end

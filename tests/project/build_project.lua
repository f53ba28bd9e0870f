-- Builds a small project for `kestdmx run --project DIR`: two libraries, actors with DMX components.
-- check_project.lua, run afterwards on the same folder, expects it back. (Every field's round trip is
-- checked by tests/cpp/ProjectRoundTripTest.cpp; this is the command line's part.)

assert(editor.create_library("/Game/DMX/Stage") and editor.create_library("/Game/DMX/Floor/Pars"))
local stage, pars = dmx_library("/Game/DMX/Stage"), dmx_library("/Game/DMX/Floor/Pars")
assert(stage:add("fixture_type", {name = "Spot", category = "Moving Head", modes = {
	{name = "Standard 16bit", functions = {
		{attribute = "Pan", name = "Pan", data_type = "16bit", physical_from = -270, physical_to = 270},
		{attribute = "Tilt", name = "Tilt", data_type = "16bit", use_lsb = true},
		{attribute = "Dimmer", name = "Dimmer", default_value = 200, description = "master \"dim\""}}},
	{name = "Basic", functions = {{attribute = "Dimmer", name = "Dimmer"}}}}}))
assert(stage:add("fixture_type", {name = "LED Bar", category = "Matrix/Pixel Bar", modes = {{name = "8 Pixel RGB",
	functions = {{attribute = "Dimmer", name = "Master", default_value = 255}},
	matrix = {enabled = true, x_cells = 8, y_cells = 1, first_cell_channel = 2, distribution = "TopLeftToBottom",
		cell_attributes = {{attribute = "Red"}, {attribute = "Green", default_value = 9}, {attribute = "Blue"}}}}}}))
assert(stage:add("fixture_patch", {name = "Spot 1", fixture_type = "Spot", universe = 1, starting_channel = 1,
	tags = {"truss", "stage-left"}, editor_color = {r = 0.2, g = 0.4, b = 1.0, a = 0.5}}))
assert(stage:add("fixture_patch", {name = "Spot 2", fixture_type = "Spot", universe = 1, starting_channel = 17}))
assert(stage:configure("fixture_patch", "Spot 2", {active_mode_index = 1}))
assert(stage:add("fixture_patch", {name = "Bar 1", fixture_type = "LED Bar", universe = 2, starting_channel = 100, receive_dmx_in_editor = true}))
assert(pars:add("fixture_type", {name = "Par", modes = {{name = "1ch", functions = {{attribute = "Dimmer", name = "Dimmer"}}}}}))
assert(pars:add("fixture_patch", {name = "Par 1", fixture_type = "Par", universe = 5, starting_channel = 512}))
assert(editor.spawn_actor("Truss", "Truss A") and editor.spawn_actor("Floor"))
assert(dmx_component("Truss A"):add({library = "/Game/DMX/Stage", fixture_patch = "Spot 1", receive = false}))
assert(dmx_component("Truss A"):add({name = "Second", library = "/Game/DMX/Floor/Pars", fixture_patch = "Par 1"}))
assert(dmx_component("Floor"):add({name = "Spare"}))

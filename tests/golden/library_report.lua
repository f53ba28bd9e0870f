-- A rig whose names are as real fixture data has them: long attribute names, degree signs, wide
-- characters, combining accents, line breaks and tabs, quotes, a right-to-left override. Its text
-- report is compared with library_report.txt.
assert(editor.create_library("/Game/DMX/Names"))
local lib = dmx_library("/Game/DMX/Names")

assert(lib:add("fixture_type", { name = "Mover 「夜」", category = "Moving Head", modes = {
	{ name = "Standard\t16bit", functions = {
		{ attribute = "Pan", name = "Pan", data_type = "16bit" },
		{ attribute = "PanTiltSpeed", name = "Speed" },
		{ attribute = "Gobo", name = "Gobo 360° positioning", data_type = "16bit", use_lsb = true, default_value = 32768 },
		{ attribute = "Effect", name = "Effects Rotate\nCoarse\n" },
		{ attribute = "Dimmer", name = "Dim\u{202E}mer" },
		{ attribute = "Color", name = "Café" .. "\u{301}" .. " \"warm\"" },
	} },
	{ name = "Pixels", functions = {
		{ attribute = "Dimmer", name = "Master", default_value = 255 },
		{ attribute = "Shutter", name = "Strobe" },
	}, matrix = { enabled = true, x_cells = 4, y_cells = 2, first_cell_channel = 2, distribution = "TopLeftToBottom",
		cell_attributes = { { attribute = "Red" }, { attribute = "Green" }, { attribute = "Blue" }, { attribute = "White", data_type = "16bit" } } } },
} }))
assert(lib:add("fixture_type", { name = "Dimmer\r\n", category = "Static", modes = {
	{ name = "1ch", functions = { { attribute = "Dimmer", name = "Intensité" } } },
} }))

for _, p in ipairs({
	{ name = "Mover 夜 1", fixture_type = "Mover 「夜」", universe = 1, starting_channel = 1 },
	{ name = "Mover \"Left\"", fixture_type = "Mover 「夜」", universe = 1, starting_channel = 9 },
	{ name = "Front\nWash", fixture_type = "Mover 「夜」", universe = 1, starting_channel = 12, active_mode_index = 1 },
	{ name = "Ωmega", fixture_type = "Dimmer\r\n", universe = 12, starting_channel = 512 },
	{ name = "Tail", fixture_type = "Mover 「夜」", universe = 12, starting_channel = 508 },
}) do
	assert(lib:add("fixture_patch", p), p.name)
end

-- dmx_library(path):info(): the whole inspection table of libraries built with add.

local function kind(value) return math.type(value) or type(value) end
-- The table has exactly the keys of shape, of those kinds, and the values given in expected.
local function check(t, shape, expected, what)
	for key, k in pairs(shape) do
		assert(kind(t[key]) == k, what .. "." .. key .. ": expected " .. k .. ", got " .. kind(t[key]))
	end
	for key in pairs(t) do assert(shape[key], what .. ": unexpected key " .. tostring(key)) end
	for key, value in pairs(expected or {}) do
		assert(t[key] == value, what .. "." .. key .. ": expected " .. tostring(value) .. ", got " .. tostring(t[key]))
	end
end
-- A list: keys exactly 1..n.
local function check_list(t, n, what)
	local count = 0
	for key in pairs(t) do
		assert(math.type(key) == "integer" and key >= 1 and key <= n, what .. ": stray key " .. tostring(key))
		count = count + 1
	end
	assert(count == n, what .. ": " .. count .. " elements instead of " .. n)
end

local I, S, B, F, T = "integer", "string", "boolean", "float", "table"
local library_shape = { valid = B, path = S, entity_count = I, fixture_type_count = I, fixture_patch_count = I, fixture_types = T, fixture_patches = T }
local type_shape = { name = S, category = S, mode_count = I, modes = T }
local mode_shape = { index = I, name = S, function_count = I, auto_channel_span = B, channel_span = I, matrix_enabled = B, matrix_x_cells = I,
	matrix_y_cells = I, matrix_first_cell_channel = I, matrix_num_channels = I, matrix_last_channel = I, matrix_distribution = S,
	functions = T, cell_attributes = T, cell_attribute_count = I }
local function_shape = { name = S, attribute = S, description = S, default_value = I, channel = I, last_channel = I, data_type = S, num_channels = I, use_lsb = B }
local cell_shape = { attribute = S, description = S, default_value = I, data_type = S, num_channels = I, use_lsb = B }
local patch_shape = { name = S, fixture_type = S, universe = I, starting_channel = I, ending_channel = I, channel_span = I, active_mode_index = I,
	fixture_id = I, mvr_fixture_uuid = S, valid = B, validity_reason = S, receive_dmx_in_editor = B, editor_color_r = F, editor_color_g = F,
	editor_color_b = F, editor_color_a = F, tags = T, tag_count = I, attribute_default_count = I, attribute_defaults = T,
	attribute_channel_count = I, attribute_channels = T, attribute_signal_format_count = I, attribute_signal_formats = T, default_raw_channels = T }

-- Checks a patch and its lists; answers its attribute maps keyed by attribute and its raw bytes in order.
local function check_patch(p, expected)
	check(p, patch_shape, expected, p.name)
	check_list(p.tags, p.tag_count, p.name .. ".tags")
	local maps = { defaults = {}, channels = {}, formats = {}, raw = {} }
	for _, list in ipairs({ { "attribute_defaults", "attribute_default_count", "value", I, maps.defaults },
		{ "attribute_channels", "attribute_channel_count", "channel", I, maps.channels },
		{ "attribute_signal_formats", "attribute_signal_format_count", "data_type", S, maps.formats } }) do
		local key, count_key, value_key, value_kind, map = table.unpack(list)
		check_list(p[key], p[count_key], p.name .. "." .. key)
		for _, e in ipairs(p[key]) do
			check(e, { attribute = S, [value_key] = value_kind }, nil, p.name .. "." .. key)
			map[e.attribute] = e[value_key]
		end
	end
	check_list(p.default_raw_channels, #p.default_raw_channels, p.name .. ".default_raw_channels")
	for i, e in ipairs(p.default_raw_channels) do
		check(e, { channel = I, value = I }, nil, p.name .. " raw")
		assert(i == 1 or e.channel > p.default_raw_channels[i - 1].channel, p.name .. ": raw channels out of order")
		maps.raw[i] = e.value
	end
	return maps
end

-- Handles that did not resolve answer {valid = false} alone; an empty library has every key and empty lists.
for _, path in ipairs({ "/Game/DMX/Nowhere", "/Game/My.Folder/Stage" }) do
	check(dmx_library(path):info(), { valid = B }, { valid = false }, path)
end
assert(editor.create_library("/Game/DMX/Empty"))
local empty = dmx_library("/Game/DMX/Empty.Empty"):info()
check(empty, library_shape, { valid = true, path = "/Game/DMX/Empty.Empty", entity_count = 0, fixture_type_count = 0, fixture_patch_count = 0 }, "empty")
check_list(empty.fixture_types, 0, "empty.fixture_types")
check_list(empty.fixture_patches, 0, "empty.fixture_patches")

assert(editor.create_library("/Game/DMX/Stage"))
local lib = dmx_library("/Game/DMX/Stage")
local long_name = "Scheinwerfer \u{fc}\u{20ac}\u{1F4A1} " .. string.rep("abcdefghij", 20)
assert(lib:add("fixture_type", { name = "Wash", category = "Moving Head", modes = {
	{ name = "Basic", functions = {
		{ attribute = "Dimmer", name = "Dim", description = "Master dimmer", default_value = 255 },
		{ attribute = "Pan", name = "Pan", data_type = "E16Bit", use_lsb = true, default_value = 32768 },
		{ attribute = "Tilt", name = "Tilt", data_type = "16bit", default_value = 4660 },
		{ attribute = "Zoom", name = "Zoom", data_type = "E32Bit", default_value = -1 },
		{ attribute = "Gobo", name = "Gobo", default_value = 300 } } },
	{ name = "Pixels", auto_channel_span = false, channel_span = 40, matrix = { enabled = true, x_cells = 3, y_cells = 2,
		cell_attributes = { { attribute = "Red" }, { attribute = "Green", description = "G", data_type = "24bit", use_lsb = true, default_value = 7 } } } },
	{ name = long_name, matrix = { enabled = false, x_cells = 4, y_cells = 5, distribution = "TopLeftToBottom" } },
} }))
assert(lib:add("fixture_patch", { name = "Front", fixture_type = "wash", universe = 2, starting_channel = 5, tags = { "Front", 5, "Stage Left" },
	receive_dmx_in_editor = true, editor_color = { r = 2.5, g = -1, b = 0.25, a = 1 } }))
assert(lib:add("fixture_type", { name = "Bare", modes = {} }))
assert(lib:add("fixture_type", { name = "Plain" }))
assert(lib:add("fixture_patch", { name = "Pix", fixture_type = "Wash", active_mode_index = 1, universe = 2, starting_channel = 20 }))
assert(lib:add("fixture_patch", { name = "Late", fixture_type = "Wash", universe = 1, starting_channel = 510 }))
assert(lib:add("fixture_patch", { name = "Left", fixture_type = "Plain", universe = 4, starting_channel = 9 }))
assert(lib:remove("fixture_type", "Plain"))
local distributions = { "TopLeftToBottom", "TopLeftToClockwise", "TopLeftToAntiClockwise", "TopRightToLeft", "BottomLeftToTop", "BottomRightToClockwise" }
local modes = {}
for i, name in ipairs(distributions) do modes[i] = { matrix = { distribution = name } } end
assert(lib:add("fixture_type", { name = "Spread", modes = modes }))

local steps = #editor.undo_history()
local info = lib:info()
assert(#editor.undo_history() == steps and editor.transaction_depth() == 0, "info records nothing")

-- Library order, not names or universes; every mode's index counts from 0 and its lists match its counts.
check(info, library_shape, { path = "/Game/DMX/Stage.Stage", entity_count = 7, fixture_type_count = 3, fixture_patch_count = 4 }, "stage")
check_list(info.fixture_types, 3, "fixture_types")
check_list(info.fixture_patches, 4, "fixture_patches")
local wash, bare, spread = table.unpack(info.fixture_types)
check(wash, type_shape, { name = "Wash", category = "Moving Head", mode_count = 3 }, "Wash")
check(bare, type_shape, { name = "Bare", category = "None", mode_count = 0 }, "Bare")
for _, t in ipairs(info.fixture_types) do
	check_list(t.modes, t.mode_count, t.name .. ".modes")
	for i, mode in ipairs(t.modes) do
		check(mode, mode_shape, { index = i - 1 }, t.name .. " mode " .. i)
		check_list(mode.functions, mode.function_count, "functions")
		check_list(mode.cell_attributes, mode.cell_attribute_count, "cell_attributes")
		if t == spread then assert(mode.matrix_distribution == distributions[i], mode.matrix_distribution) end
	end
end

local basic, pixels, dark = table.unpack(wash.modes)
check(basic, mode_shape, { name = "Basic", function_count = 5, channel_span = 10, matrix_enabled = false, matrix_x_cells = 1,
	matrix_first_cell_channel = 1, matrix_num_channels = 1, matrix_last_channel = 1, matrix_distribution = "TopLeftToRight" }, "Basic")
check(basic.functions[1], function_shape, { name = "Dim", description = "Master dimmer", default_value = 255, channel = 1,
	last_channel = 1, data_type = "E8Bit", num_channels = 1, use_lsb = false }, "Dim")
check(basic.functions[2], function_shape, { channel = 2, last_channel = 3, data_type = "E16Bit", num_channels = 2, use_lsb = true }, "Pan")
check(basic.functions[4], function_shape, { channel = 6, last_channel = 9, num_channels = 4, default_value = -1 }, "Zoom")
check(basic.cell_attributes[1], cell_shape, { attribute = "Red", description = "", default_value = 0, data_type = "E8Bit", num_channels = 1 }, "Red")
check(pixels, mode_shape, { auto_channel_span = false, channel_span = 40, matrix_enabled = true, matrix_num_channels = 24,
	matrix_last_channel = 24, cell_attribute_count = 2 }, "Pixels")
check(pixels.cell_attributes[2], cell_shape, { description = "G", default_value = 7, data_type = "E24Bit", num_channels = 3, use_lsb = true }, "Green")
-- A disabled matrix is reported in full; texts past 128 bytes arrive whole.
check(dark, mode_shape, { name = long_name, matrix_enabled = false, matrix_x_cells = 4, matrix_y_cells = 5, matrix_num_channels = 20,
	matrix_distribution = "TopLeftToBottom" }, "third mode")

-- Patches: colours unclamped, string tags only, attribute maps and the raw channels they give.
local front, pix, late, left = table.unpack(info.fixture_patches)
local maps = check_patch(front, { fixture_type = "Wash", universe = 2, starting_channel = 5, ending_channel = 14, channel_span = 10,
	active_mode_index = 0, valid = true, validity_reason = "", receive_dmx_in_editor = true, editor_color_r = 2.5, editor_color_g = -1.0,
	editor_color_b = 0.25, tag_count = 2, attribute_default_count = 5 })
assert(front.tags[1] == "Front" and front.tags[2] == "Stage Left")
assert(maps.defaults.Pan == 32768 and maps.defaults.Zoom == -1 and maps.defaults.Gobo == 300)
assert(maps.channels.Dimmer == 5 and maps.channels.Tilt == 8 and maps.channels.Gobo == 14 and maps.formats.Tilt == "E16Bit")
-- Channels 5..14 in order (10 after 9): Pan in LSB order, Tilt 0x1234 MSB, Zoom's -1 as 0, Gobo clamped.
assert(table.concat(maps.raw, ",") == "255,0,128,18,52,0,0,0,0,255", table.concat(maps.raw, ","))
assert(front.default_raw_channels[10].channel == 14)
maps = check_patch(pix, { active_mode_index = 1, channel_span = 40, ending_channel = 59, valid = true, tag_count = 0, attribute_default_count = 0 })
assert(#maps.raw == 0, "matrix cells are not in the attribute maps")
check_patch(late, { ending_channel = 519, valid = false, validity_reason = "Channels range overflows max channel address (512)" })
check_patch(left, { fixture_type = "", channel_span = 0, valid = false, validity_reason = "Fixture Type is null", attribute_default_count = 0 })
local ids = {}
for _, p in ipairs(info.fixture_patches) do
	assert(#p.mvr_fixture_uuid == 32 and p.mvr_fixture_uuid:match("^[%dA-F]+$"), p.mvr_fixture_uuid)
	ids[#ids + 1] = p.fixture_id
end
assert(table.concat(ids, ",") == "1,2,3,4", table.concat(ids, ","))

-- The same handle reads the library afresh.
assert(lib:configure("fixture_patch", "Late", { starting_channel = 100 }))
late = lib:info().fixture_patches[3]
assert(late.valid and late.validity_reason == "" and late.default_raw_channels[1].channel == 100)

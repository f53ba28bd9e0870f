-- editor.library_report(path): the text report of one library (headless runner only).

assert(editor.library_report("/Game/DMX/Nowhere") == nil)
assert(editor.library_report("") == nil)

assert(editor.create_library("/Game/DMX/Rig"))
local lib = dmx_library("/Game/DMX/Rig")
assert(lib:add("fixture_type", { name = "Wash", category = "Moving Head", modes = {
	{ name = "Basic", functions = { { attribute = "Dimmer", name = "Dim" }, { attribute = "Pan", name = "Pan", data_type = "E16Bit", use_lsb = true } } },
	{ name = "Pixels", matrix = { enabled = true, x_cells = 3, y_cells = 2, distribution = "TopRightToLeft" } },
} }))
assert(lib:add("fixture_type", { name = "Blank", modes = {} }))
assert(lib:add("fixture_patch", { name = "Front", fixture_type = "Wash", universe = 2, starting_channel = 5 }))
assert(lib:add("fixture_patch", { name = "Side", fixture_type = "Wash", universe = 2, starting_channel = 7 }))
assert(lib:add("fixture_patch", { name = "Back", fixture_type = "Wash", universe = 2, starting_channel = 1 }))
assert(lib:add("fixture_patch", { name = "Other", fixture_type = "Wash", universe = 3, starting_channel = 5 }))
assert(lib:add("fixture_patch", { name = "Late", fixture_type = "Wash", universe = 1, starting_channel = 511 }))
assert(lib:add("fixture_patch", { name = "Void", fixture_type = "Blank", universe = 1, starting_channel = 1 }))

local report = editor.library_report("/Game/DMX/Rig")
assert(type(report) == "string")
assert(report == editor.library_report("/Game/DMX/Rig.Rig"), "package and object path give the same report")

local lines = {}
for line in report:gmatch("[^\n]+") do lines[#lines + 1] = line end
local function find_line(pattern, from)
	for i = from or 1, #lines do
		if lines[i]:find(pattern) then
			return i
		end
	end
	error("no line matching " .. pattern .. " in:\n" .. report)
end

assert(lines[1] == "DMX Library /Game/DMX/Rig.Rig", lines[1])
-- Fixture types with their modes and channel layout.
find_line("^  Wash %[Moving Head%]")
find_line("mode 0 \"Basic\"")
find_line("ch 2%-3 +Pan +Pan +16 bit LSB")
find_line("matrix 3x2 TopRightToLeft")
find_line("^  Blank %[None%]: no modes")

-- Patches by universe, then by starting channel.
local u1, u2, u3 = find_line("^  universe 1$"), find_line("^  universe 2$"), find_line("^  universe 3$")
assert(u1 < u2 and u2 < u3)
local back, front, side = find_line("ch 1%-3 +Back"), find_line("ch 5%-7 +Front"), find_line("ch 7%-9 +Side")
assert(u2 < back and back < front and front < side and side < u3)

-- Invalid patches carry the engine's reason.
local late = find_line("Late", u1)
assert(lines[late + 1]:find("INVALID: Channels range overflows max channel address %(512%)"), lines[late + 1])
local void = find_line("Void", u1)
assert(lines[void + 1]:find("INVALID: 'Void' cannot be assigned as its parent Fixture Type 'Blank' does not define any Modes."))

-- Front and Side share channel 7 of universe 2; Back ends at 3 and Other is in another universe.
assert(lines[front + 1]:find("OVERLAPS: Side"), lines[front + 1])
assert(lines[side + 1]:find("OVERLAPS: Front"), lines[side + 1])
assert(not lines[back + 1]:find("OVERLAPS"))
assert(not report:find("OVERLAPS: Other") and not report:find("OVERLAPS: Back"))
assert(lines[#lines] == "6 patches in 3 universes, 2 invalid, 2 overlapping", lines[#lines])

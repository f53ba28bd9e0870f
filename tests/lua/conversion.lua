-- dmx_subsystem(): whole numbers and normalised values to DMX bytes and back.

local function bytes_of(t)
	local count = 0
	for _ in pairs(t) do count = count + 1 end
	assert(count == #t, "keys 1..n only")
	for _, b in ipairs(t) do assert(math.type(b) == "integer", "integer bytes") end
	return table.concat(t, ",")
end
local function expect_error(fn, text)
	local ok, err = pcall(fn)
	assert(not ok and tostring(err):find(text, 1, true), "expected '" .. text .. "', got " .. tostring(err))
end

local h = dmx_subsystem()
assert(h.valid == true and h.path == nil and h.actor == nil, "valid, no identity field")

-- The eight data-type words in any case; anything else (also past a NUL) converts as 8 bit.
for width, words in ipairs({ { "E8Bit", "8bit", "e8BIT" }, { "E16Bit", "16bit", "e16bit", "16BIT" },
	{ "E24Bit", "24bit", "E24BIT", "24bIt" }, { "E32Bit", "32bit", "e32bit", "32Bit" } }) do
	for _, word in ipairs(words) do
		assert(#h:int_to_bytes(0, word, false) == width, word)
	end
end
for _, word in ipairs({ "", "9bit", "E64Bit", "16 bit", "E16", "16", "E8BitSubFunctions" }) do
	assert(bytes_of(h:int_to_bytes(300, word, false)) == "255", "fallback for '" .. word .. "'")
end
assert(bytes_of(h:int_to_bytes(300, "16bit\0junk", false)) == "1,44", "the word ends at a NUL")

-- Byte order, clamps to the width's maximum, negatives as huge unsigned values, low 32 bits only.
assert(bytes_of(h:int_to_bytes(0x123456, "24bit", false)) == "18,52,86")
assert(bytes_of(h:int_to_bytes(0x123456, "24bit", true)) == "86,52,18")
assert(bytes_of(h:int_to_bytes(70000, "16bit", false)) == "255,255")
assert(bytes_of(h:int_to_bytes(-2, "32bit", true)) == "254,255,255,255")
assert(bytes_of(h:int_to_bytes((1 << 32) | 7, "8bit", false)) == "7")

-- Round trips at the ends of each width, both byte orders.
for _, case in ipairs({ { "8bit", { 0, 1, 254, 255 } }, { "16bit", { 0, 256, 65535 } }, { "24bit", { 0, 65536, 16777215 } },
	{ "32bit", { 0, 2147483647, -2147483648, -1 } } }) do
	for _, lsb in ipairs({ false, true }) do
		for _, value in ipairs(case[2]) do
			local back = h:bytes_to_int(h:int_to_bytes(value, case[1], lsb), lsb)
			assert(math.type(back) == "integer" and back == value, case[1] .. " " .. value .. " came back as " .. tostring(back))
		end
	end
end
-- (32 bit at 0.5: 1.0 overflows the engine's single-precision product.)
for _, case in ipairs({ { "E8Bit", 1.0, { 255 } }, { "16bit", 1.0, { 255, 255 } }, { "24BIT", 1.0, { 255, 255, 255 } }, { "e32bit", 0.5, { 128, 0, 0, 0 } } }) do
	for _, lsb in ipairs({ false, true }) do
		local expected = {}
		for i = 1, #case[3] do expected[i] = case[3][lsb and #case[3] + 1 - i or i] end
		local bytes = h:normalized_to_bytes(case[2], case[1], lsb)
		assert(bytes_of(bytes) == table.concat(expected, ","), case[1] .. ": " .. bytes_of(bytes))
		local back = h:bytes_to_normalized(bytes, lsb)
		assert(math.type(back) == "float" and back == case[2], case[1] .. " came back as " .. back)
		assert(h:bytes_to_normalized(h:normalized_to_bytes(0.0, case[1], lsb), lsb) == 0.0)
	end
end

-- Normalised: truncated, clamped to 0..1; reads divide by the width's maximum.
assert(bytes_of(h:normalized_to_bytes(0.5, "16bit", false)) == "127,255")
assert(bytes_of(h:normalized_to_bytes(-0.5, "16bit", false)) == "0,0" and bytes_of(h:normalized_to_bytes(7.0, "8bit", false)) == "255")
assert(math.abs(h:bytes_to_normalized({ 0, 128 }, true) - 32768 / 65535) < 1e-6)
assert(h:bytes_to_normalized({}, false) == 0.0)

-- Byte tables: integers clamp to 0..255 after taking their low 32 bits; non-numbers are skipped; keys and
-- metamethods are ignored; a userdata holds no bytes.
assert(h:bytes_to_int({ 1, 2, 300, -4 }, false) == 0x0102FF00 and h:bytes_to_int({ 1, 2, 300, -4 }, true) == 0x00FF0201)
assert(h:bytes_to_int({ 0xFFFFFFFF }, false) == 0 and h:bytes_to_int({ (1 << 32) | 7 }, false) == 7)
assert(h:bytes_to_int({ 1, "x", 2 }, false) == 0x0102 and h:bytes_to_int({ "7", true, {}, 3 }, false) == 3, "skipped")
assert(h:bytes_to_int({ level = 200 }, false) == 200, "any key")
assert(h:bytes_to_int(setmetatable({}, { __index = function() return 9 end, __len = function() return 2 end }), false) == 0)
assert(h:bytes_to_int(io.stdout, false) == 0 and h:bytes_to_normalized(io.stdout, true) == 0.0)

-- Argument errors: sol2's, including its check that a byte is an integer (also 1.0).
local FLOAT = "not a numeric type that fits exactly an integer (number maybe has significant decimals)"
for _, fn in ipairs({ "bytes_to_int", "bytes_to_normalized" }) do
	expect_error(function() h[fn](h, { 1, 2, 3.0 }, false) end, FLOAT)
	expect_error(function() h[fn](h, { 0.5 }, false) end, FLOAT)
end
expect_error(function() h:int_to_bytes(2.5, "8bit", false) end, "stack index 2")
expect_error(function() h:int_to_bytes(3.0, "8bit", false) end, "bad argument")
expect_error(function() h:int_to_bytes(3, 8, false) end, "stack index 3")
expect_error(function() h:int_to_bytes(3, "8bit") end, "stack index 4")
expect_error(function() h:normalized_to_bytes("0.5", "8bit", false) end, "stack index 2, expected number")
expect_error(function() h:bytes_to_normalized(true, false) end, "stack index 2, expected table")
-- Dot syntax shifts the arguments; the first argument itself is never read.
expect_error(function() h.int_to_bytes(300, "16bit", false) end, "stack index 1")
expect_error(function() h.bytes_to_int({ 1, 2 }, false) end, "stack index 2")
assert(bytes_of(h.int_to_bytes({}, 300, "16bit", false)) == "1,44")

-- The answers depend on nothing in the editor, and conversions record and dirty nothing.
local function snapshot(handle)
	local out = {}
	for _, word in ipairs({ "8bit", "16bit", "24bit", "32bit" }) do
		out[#out + 1] = bytes_of(handle:int_to_bytes(0x01020304, word, true)) .. "/" .. bytes_of(handle:normalized_to_bytes(0.3, word, false))
	end
	return table.concat(out, " ") .. handle:bytes_to_int({ 9, 8, 7 }, true) .. string.format("%.9g", handle:bytes_to_normalized({ 1, 2 }, false))
end
local reference = snapshot(h)
assert(#editor.undo_history() == 0 and #editor.dirty_packages() == 0 and editor.transaction_depth() == 0)
assert(editor.spawn_actor("Truss", "Front Truss") and editor.create_library("/Game/DMX/Stage"))
assert(snapshot(h) == reference and snapshot(dmx_subsystem()) == reference, "same answers after the level changed")

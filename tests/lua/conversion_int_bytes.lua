-- Whole numbers to DMX bytes and back: data-type words, widths, byte order, clamping, argument checks.

local function same_bytes(actual, expected, what)
	assert(type(actual) == "table", what .. ": expected a table, got " .. type(actual))
	local count = 0
	for _ in pairs(actual) do
		count = count + 1
	end
	assert(count == #expected, what .. ": expected " .. #expected .. " bytes, got " .. count)
	for i, byte in ipairs(expected) do
		assert(math.type(actual[i]) == "integer", what .. ": byte " .. i .. " is not an integer")
		assert(actual[i] == byte, what .. ": byte " .. i .. " is " .. tostring(actual[i]) .. ", expected " .. byte)
	end
end

local function expect_error(fn, pattern, what)
	local ok, err = pcall(fn)
	assert(not ok, what .. ": expected an error")
	assert(string.find(tostring(err), pattern, 1, true), what .. ": unexpected message: " .. tostring(err))
	return err
end

local h = dmx_subsystem()
assert(h.valid == true, "the editor has a DMX subsystem")
for _, name in ipairs({ "int_to_bytes", "bytes_to_int", "normalized_to_bytes", "bytes_to_normalized" }) do
	assert(type(h[name]) == "function", name .. " is missing")
end
assert(h.path == nil and h.actor == nil, "the conversion handle has no identity field")
assert(dmx_subsystem() ~= h, "every call makes a new handle")

-- The eight data-type words in any letter case; the width shows in the byte count.
local words = {
	{ "E8Bit", 1 }, { "8bit", 1 }, { "e8bit", 1 }, { "8BIT", 1 },
	{ "E16Bit", 2 }, { "16bit", 2 }, { "e16BIT", 2 }, { "16Bit", 2 },
	{ "E24Bit", 3 }, { "24bit", 3 }, { "E24BIT", 3 }, { "24bIt", 3 },
	{ "E32Bit", 4 }, { "32bit", 4 }, { "e32bit", 4 }, { "32BIT", 4 },
}
for _, case in ipairs(words) do
	local bytes = h:int_to_bytes(0, case[1], false)
	assert(#bytes == case[2], case[1] .. " should give " .. case[2] .. " bytes, got " .. #bytes)
end

-- Anything else converts as 8 bit: 300 is clamped to one byte of 255.
for _, word in ipairs({ "", "9bit", "E64Bit", "16 bit", " 16bit", "E16", "16", "E8BitSubFunctions" }) do
	same_bytes(h:int_to_bytes(300, word, false), { 255 }, "data type '" .. word .. "'")
end
-- The word is read up to its first NUL.
same_bytes(h:int_to_bytes(300, "16bit\0junk", false), { 1, 44 }, "data type with an embedded NUL")

-- Byte order: most significant first, or least significant first with use_lsb.
same_bytes(h:int_to_bytes(300, "e16bit", false), { 1, 44 }, "300 as 16 bit")
same_bytes(h:int_to_bytes(300, "E16Bit", true), { 44, 1 }, "300 as 16 bit, LSB")
same_bytes(h:int_to_bytes(0x123456, "24bit", false), { 0x12, 0x34, 0x56 }, "0x123456 as 24 bit")
same_bytes(h:int_to_bytes(0x123456, "24bit", true), { 0x56, 0x34, 0x12 }, "0x123456 as 24 bit, LSB")
assert(h:bytes_to_int({ 0x12, 0x34, 0x56 }, false) == 0x123456, "24 bit MSB read")
assert(h:bytes_to_int({ 0x56, 0x34, 0x12 }, true) == 0x123456, "24 bit LSB read")

-- Values above the width's maximum clamp to it; negative numbers are huge unsigned values.
same_bytes(h:int_to_bytes(70000, "16bit", false), { 255, 255 }, "70000 as 16 bit")
same_bytes(h:int_to_bytes(-1, "8bit", false), { 255 }, "-1 as 8 bit")
same_bytes(h:int_to_bytes(-2, "32bit", false), { 255, 255, 255, 254 }, "-2 as 32 bit")
same_bytes(h:int_to_bytes(-2, "32bit", true), { 254, 255, 255, 255 }, "-2 as 32 bit, LSB")

-- Only the low 32 bits of a Lua integer are passed on.
same_bytes(h:int_to_bytes((1 << 32) | 7, "8bit", false), { 7 }, "2^32 + 7")
same_bytes(h:int_to_bytes(0x180000000, "32bit", false), { 0x80, 0, 0, 0 }, "low bits 0x80000000")

-- Round trips at the ends of each width, both byte orders.
local ends = {
	{ "8bit", { 0, 1, 254, 255 } },
	{ "16bit", { 0, 1, 256, 65534, 65535 } },
	{ "24bit", { 0, 1, 65536, 16777214, 16777215 } },
	{ "32bit", { 0, 1, 2147483647, -2147483648, -2, -1 } },
}
for _, case in ipairs(ends) do
	for _, lsb in ipairs({ false, true }) do
		for _, value in ipairs(case[2]) do
			local bytes = h:int_to_bytes(value, case[1], lsb)
			local back = h:bytes_to_int(bytes, lsb)
			assert(math.type(back) == "integer", "bytes_to_int answers an integer")
			assert(back == value, string.format("%s %d (lsb %s) came back as %s", case[1], value, tostring(lsb), tostring(back)))
		end
	end
end
assert(h:bytes_to_int({ 255, 255, 255, 255 }, false) == -1, "four bytes of 255 read as -1")
assert(h:bytes_to_int({ 0x80, 0, 0, 0 }, false) == -2147483648, "0x80000000 reads negative")

-- Argument checks: the value must be a Lua integer, the data type a string, use_lsb a boolean.
expect_error(function() h:int_to_bytes(2.5, "8bit", false) end, "stack index 2", "2.5 as the value")
local err = expect_error(function() h:int_to_bytes(3.0, "8bit", false) end, "stack index 2", "3.0 as the value")
assert(string.find(err, "bad argument", 1, true), "the argument error names the bad argument: " .. err)
expect_error(function() h:int_to_bytes(3, 8, false) end, "stack index 3", "a number as the data type")
expect_error(function() h:int_to_bytes(3, "8bit") end, "stack index 4", "no use_lsb")
expect_error(function() h:bytes_to_int({ 1 }, nil) end, "stack index 3", "nil as use_lsb")
expect_error(function() h:bytes_to_int(5, false) end, "stack index 2", "a number as the byte table")

-- Dot syntax shifts the arguments: the handle's place gets a number or a boolean.
expect_error(function() h.int_to_bytes(300, "16bit", false) end, "stack index 1", "int_to_bytes with a dot")
expect_error(function() h.bytes_to_int({ 1, 2 }, false) end, "stack index 2", "bytes_to_int with a dot")

-- The first argument is never read: another table, or a userdata, stands in for the handle.
same_bytes(h.int_to_bytes({}, 300, "16bit", false), { 1, 44 }, "another table as the handle")
if io and type(io.stdout) == "userdata" then
	same_bytes(h.int_to_bytes(io.stdout, 5, "8bit", false), { 5 }, "a userdata as the handle")
end

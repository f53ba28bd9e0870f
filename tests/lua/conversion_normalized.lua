-- Normalized values to DMX bytes and back.

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

local h = dmx_subsystem()
assert(h.valid, "the editor has a DMX subsystem")

-- Range ends per width, both byte orders; 32 bit is checked at 0 and 0.5 only (1.0 overflows
-- the engine's single-precision product).
local cases = {
	{ "E8Bit", 0.0, { 0 } }, { "E8Bit", 1.0, { 255 } },
	{ "16bit", 0.0, { 0, 0 } }, { "16bit", 1.0, { 255, 255 } },
	{ "24BIT", 0.0, { 0, 0, 0 } }, { "24BIT", 1.0, { 255, 255, 255 } },
	{ "e32bit", 0.0, { 0, 0, 0, 0 } }, { "e32bit", 0.5, { 0x80, 0, 0, 0 } },
}
for _, case in ipairs(cases) do
	for _, lsb in ipairs({ false, true }) do
		local bytes = h:normalized_to_bytes(case[2], case[1], lsb)
		local expected = case[3]
		if lsb then
			local reversed = {}
			for i = #expected, 1, -1 do
				reversed[#reversed + 1] = expected[i]
			end
			expected = reversed
		end
		local what = string.format("%s %g (lsb %s)", case[1], case[2], tostring(lsb))
		same_bytes(bytes, expected, what)
		local back = h:bytes_to_normalized(bytes, lsb)
		assert(math.type(back) == "float", what .. ": bytes_to_normalized answers a float")
		assert(back == case[2], what .. ": came back as " .. back)
	end
end

-- The product is truncated, and the value clamped to 0..1; an integer is a valid value.
same_bytes(h:normalized_to_bytes(0.5, "8bit", false), { 127 }, "0.5 as 8 bit")
same_bytes(h:normalized_to_bytes(0.5, "16bit", false), { 0x7F, 0xFF }, "0.5 as 16 bit")
same_bytes(h:normalized_to_bytes(-0.5, "16bit", false), { 0, 0 }, "-0.5 clamps to 0")
same_bytes(h:normalized_to_bytes(7.0, "8bit", false), { 255 }, "7.0 clamps to 1")
same_bytes(h:normalized_to_bytes(1, "24bit", true), { 255, 255, 255 }, "the integer 1")
same_bytes(h:normalized_to_bytes(0.5, "9bit", false), { 127 }, "an unknown word converts as 8 bit")

-- Reading back: the value over the width's maximum, in single precision.
assert(h:bytes_to_normalized({ 0 }, false) == 0.0, "0 reads as 0")
assert(math.abs(h:bytes_to_normalized({ 128 }, false) - 128 / 255) < 1e-6, "128 of 255")
assert(math.abs(h:bytes_to_normalized({ 0, 128 }, true) - 32768 / 65535) < 1e-6, "0x8000 LSB first")
assert(h:bytes_to_normalized({ 255, 255, 255, 255 }, false) == 1.0, "32-bit maximum reads as 1")
local empty = h:bytes_to_normalized({}, false)
assert(empty == 0.0 and math.type(empty) == "float", "no bytes read as 0.0")

-- Argument checks: the binding layer's report names the argument's stack index and expected type.
local function expect_argument_error(fn, pattern, what)
	local ok, err = pcall(fn)
	assert(not ok, what .. ": expected an error")
	assert(string.find(tostring(err), pattern, 1, true), what .. ": unexpected message: " .. tostring(err))
end
expect_argument_error(function() h:normalized_to_bytes("0.5", "8bit", false) end, "stack index 2, expected number", "a string as the value")
expect_argument_error(function() h:normalized_to_bytes(0.5, "8bit", nil) end, "stack index 4, expected boolean", "nil as use_lsb")
expect_argument_error(function() h:bytes_to_normalized(true, false) end, "stack index 2, expected table", "a boolean as the byte table")

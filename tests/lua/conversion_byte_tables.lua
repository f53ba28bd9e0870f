-- How script byte tables are read: clamping, skipped entries, floats, odd keys, userdata.

local h = dmx_subsystem()
assert(h.valid, "the editor has a DMX subsystem")

-- 1, 2, 300, -4 passes the bytes 1, 2, 255, 0.
assert(h:bytes_to_int({ 1, 2, 300, -4 }, false) == 0x0102FF00, "clamped bytes, MSB first")
assert(h:bytes_to_int({ 1, 2, 300, -4 }, true) == 0x00FF0201, "clamped bytes, LSB first")

-- Integers are taken by their signed low 32 bits before the clamp.
assert(h:bytes_to_int({ (1 << 32) | 7 }, false) == 7, "2^32 + 7 is 7")
assert(h:bytes_to_int({ 0x80000000 }, false) == 0, "0x80000000 is negative as 32 bits")
assert(h:bytes_to_int({ 0xFFFFFFFF }, false) == 0, "0xFFFFFFFF is -1 as 32 bits")
assert(h:bytes_to_int({ math.mininteger }, false) == 0, "the smallest integer has low bits 0")

-- Entries that are not numbers are skipped.
assert(h:bytes_to_int({ 1, "x", 2 }, false) == 0x0102, "a string is skipped")
assert(h:bytes_to_int({ "7", 1 }, false) == 1, "a numeric string is not a number")
assert(h:bytes_to_int({ true, {}, 3 }, false) == 3, "a boolean and a table are skipped")

-- A float is refused through the binding layer's type report, even one without a fraction.
for _, bytes in ipairs({ { 1.0 }, { 1, 2, 3.0 }, { 0.5 } }) do
	for _, fn in ipairs({ "bytes_to_int", "bytes_to_normalized" }) do
		local ok, err = pcall(h[fn], h, bytes, false)
		assert(not ok, fn .. " accepted a float byte")
		assert(string.find(tostring(err), "not a numeric type that fits exactly an integer (number maybe has significant decimals)", 1, true),
			fn .. ": unexpected message: " .. tostring(err))
	end
end

-- Keys are ignored: entries under any key are taken, and nothing is looked up by index.
assert(h:bytes_to_int({ [10] = 5 }, false) == 5, "a byte under key 10")
assert(h:bytes_to_int({ level = 200 }, false) == 200, "a byte under a string key")
local indexed = setmetatable({}, { __index = function() return 9 end, __len = function() return 2 end })
assert(h:bytes_to_int(indexed, false) == 0, "__index and __len are not consulted")
local paired = setmetatable({ 4 }, { __pairs = function() return next, { 1, 1 }, nil end })
assert(h:bytes_to_int(paired, false) == 4, "__pairs is not consulted")

-- A userdata passes the argument check and holds no bytes.
if io and type(io.stdout) == "userdata" then
	assert(h:bytes_to_int(io.stdout, false) == 0, "a userdata reads as no bytes")
	local value = h:bytes_to_normalized(io.stdout, true)
	assert(value == 0.0 and math.type(value) == "float", "a userdata normalizes to 0.0")
end

-- Written tables hold exactly the bytes, from index 1, and are new each time.
local a = h:int_to_bytes(0x0A0B0C, "24bit", false)
local b = h:int_to_bytes(0x0A0B0C, "24bit", false)
assert(a ~= b, "a new table each call")
assert(getmetatable(a) == nil, "a plain table")
local keys = {}
for k in pairs(a) do
	keys[#keys + 1] = k
end
table.sort(keys)
assert(#keys == 3 and keys[1] == 1 and keys[2] == 2 and keys[3] == 3, "keys 1 to 3 only")
a[1] = 99
assert(b[1] == 0x0A, "tables do not share storage")

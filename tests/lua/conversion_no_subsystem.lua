-- kestdmx: no-dmx-subsystem
-- Without the engine's DMX subsystem the handle is not valid; only the whole-number conversion works.

local h = dmx_subsystem()
assert(h.valid == false, "no subsystem, no valid handle")
for _, name in ipairs({ "int_to_bytes", "bytes_to_int", "normalized_to_bytes", "bytes_to_normalized" }) do
	assert(type(h[name]) == "function", name .. " exists on an invalid handle")
end

local bytes = h:int_to_bytes(300, "16bit", false)
assert(#bytes == 2 and bytes[1] == 1 and bytes[2] == 44, "int_to_bytes still converts")
bytes = h:int_to_bytes(0x123456, "24bit", true)
assert(#bytes == 3 and bytes[1] == 0x56 and bytes[3] == 0x12, "int_to_bytes honours the byte order")

local empty = h:normalized_to_bytes(1.0, "16bit", false)
assert(type(empty) == "table" and next(empty) == nil, "normalized_to_bytes answers an empty table")

local int = h:bytes_to_int({ 1, 2 }, false)
assert(int == 0 and math.type(int) == "integer", "bytes_to_int answers 0")
local normalized = h:bytes_to_normalized({ 255 }, false)
assert(normalized == 0.0 and math.type(normalized) == "float", "bytes_to_normalized answers 0.0")

-- The byte table is not read at all, so a float in it goes unnoticed.
assert(h:bytes_to_int({ 1.5 }, false) == 0, "bytes are not read without the subsystem")

-- Argument checks still apply.
assert(not pcall(h.int_to_bytes, h, 2.5, "8bit", false), "int_to_bytes still refuses a float")
assert(not pcall(h.bytes_to_int, h, 5, false), "bytes_to_int still refuses a number")
assert(not pcall(h.normalized_to_bytes, h, 0.5, "8bit"), "normalized_to_bytes still needs use_lsb")
assert(not pcall(h.bytes_to_normalized, h, {}, nil), "bytes_to_normalized still needs use_lsb")

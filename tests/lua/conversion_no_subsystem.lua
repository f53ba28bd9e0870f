-- kestdmx: no-dmx-subsystem
-- Without the engine's DMX subsystem the handle is not valid; only the whole-number conversion works.

local h = dmx_subsystem()
assert(h.valid == false, "no subsystem, no valid handle")
local bytes = h:int_to_bytes(0x123456, "24bit", true)
assert(#bytes == 3 and bytes[1] == 0x56 and bytes[3] == 0x12, "int_to_bytes still converts")
assert(next(h:normalized_to_bytes(1.0, "16bit", false)) == nil, "normalized_to_bytes answers an empty table")
local int, normalized = h:bytes_to_int({ 1, 2 }, false), h:bytes_to_normalized({ 255 }, false)
assert(int == 0 and math.type(int) == "integer" and normalized == 0.0 and math.type(normalized) == "float")
assert(h:bytes_to_int({ 1.5 }, false) == 0, "the bytes are not read, so a float goes unnoticed")
assert(not pcall(h.int_to_bytes, h, 2.5, "8bit", false) and not pcall(h.bytes_to_normalized, h, {}, nil), "argument checks apply")

-- Conversions depend on nothing in the editor: the same answers before and after the scene and
-- assets change, from old and new handles alike, and they leave no undo entry or dirty package.

local function snapshot(h)
	local out = {}
	local function add(value)
		if type(value) == "table" then
			out[#out + 1] = "{" .. table.concat(value, ",") .. "}"
		else
			out[#out + 1] = string.format("%s:%.9g", math.type(value), value)
		end
	end
	for _, word in ipairs({ "8bit", "16bit", "24bit", "32bit" }) do
		for _, lsb in ipairs({ false, true }) do
			add(h:int_to_bytes(0x01020304, word, lsb))
			add(h:normalized_to_bytes(0.3, word, lsb))
		end
	end
	add(h:bytes_to_int({ 9, 8, 7 }, true))
	add(h:bytes_to_normalized({ 1, 2 }, false))
	return table.concat(out, " ")
end

local before_history = #editor.undo_history()
local before_dirty = table.concat(editor.dirty_packages(), ",")

local early = dmx_subsystem()
local reference = snapshot(early)
assert(#editor.undo_history() == before_history, "conversions record no undo entry")
assert(table.concat(editor.dirty_packages(), ",") == before_dirty, "conversions dirty no package")
assert(editor.transaction_depth() == 0, "no transaction left open")

assert(editor.spawn_actor("Truss", "Front Truss"), "spawn an actor")
assert(editor.spawn_actor("Spot"), "spawn a second actor")
assert(editor.create_library("/Game/DMX/Stage"), "create a library")

assert(snapshot(early) == reference, "a handle made before the scene changed answers the same")
local late = dmx_subsystem()
assert(late.valid, "a new handle is valid")
assert(snapshot(late) == reference, "a handle made afterwards answers the same")

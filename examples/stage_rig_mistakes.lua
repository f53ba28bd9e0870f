-- Run after stage_rig.lua: two mistakes of the kind the channel map and the report point out. A late
-- spot is patched over Spot 2's channels, and a fifth bar is patched past the end of universe 2.
--   kestdmx run examples/stage_rig.lua examples/stage_rig_mistakes.lua --html stage.html

local stage = dmx_library("/Game/DMX/Stage")
assert(stage.valid, "run examples/stage_rig.lua first, in the same session")

assert(stage:add("fixture_patch", {
  name = "Spot 5", fixture_type = "Spot", active_mode_index = 0, universe = 1, starting_channel = 18,
  tags = {"truss", "late"}, editor_color = {r = 1.0, g = 0.12, b = 0.05},
}))
assert(stage:add("fixture_patch", {
  name = "Bar 5", fixture_type = "LED Bar", universe = 2, starting_channel = 500,
  tags = {"floor"}, editor_color = {r = 0.1, g = 0.75, b = 0.3},
}))

local report = editor.library_report("/Game/DMX/Stage")
assert(report:find("OVERLAPS: Spot 5"), "Spot 2 and Spot 5 share channels")
assert(report:find("INVALID: Channels range overflows max channel address %(512%)"), "Bar 5 ends past channel 512")
print(report)

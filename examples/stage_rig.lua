-- A small, realistic rig: a moving head, an LED bar with a pixel matrix, a dimmer, and a dozen
-- patches across two universes. Then a few changes, as a lighting designer would make them.

assert(editor.create_library("/Game/DMX/Stage"), "the demo starts from an empty project")
local stage = dmx_library("/Game/DMX/Stage")
assert(stage.valid, "library did not load")

local function show(what, result)
  if type(result) ~= "table" then
    print(string.format("%-34s -> %s", what, tostring(result)))
    return result
  end
  local parts = {}
  for _, key in ipairs({"name", "mode_count", "channel_span", "ending_channel"}) do
    if result[key] ~= nil then parts[#parts + 1] = key .. "=" .. tostring(result[key]) end
  end
  print(string.format("%-34s -> %s", what, table.concat(parts, " ")))
  return result
end

show("add fixture type Spot", stage:add("fixture_type", {
  name = "Spot",
  category = "Moving Head",
  modes = {
    {
      name = "Standard 16bit",
      -- The physical default is applied before the range, as a place in it: 0.5 is its middle, 0 degrees.
      functions = {
        {attribute = "Pan", name = "Pan", data_type = "16bit", physical_from = -270, physical_to = 270, physical_default_value = 0.5},
        {attribute = "Tilt", name = "Tilt", data_type = "16bit", physical_from = -135, physical_to = 135, physical_default_value = 0.5},
        {attribute = "Dimmer", name = "Dimmer", default_value = 0},
        {attribute = "Shutter", name = "Shutter", default_value = 32},
        {attribute = "Zoom", name = "Zoom", default_value = 128},
      },
    },
    {
      name = "Basic 8bit",
      functions = {
        {attribute = "Pan", name = "Pan"},
        {attribute = "Tilt", name = "Tilt"},
        {attribute = "Dimmer", name = "Dimmer"},
      },
    },
  },
}))

show("add fixture type LED Bar", stage:add("fixture_type", {
  name = "LED Bar",
  category = "Matrix/Pixel Bar",
  modes = {
    {
      name = "8 Pixel RGB",
      functions = {{attribute = "Dimmer", name = "Master", default_value = 255}},
      matrix = {
        enabled = true, x_cells = 8, y_cells = 1, first_cell_channel = 2, distribution = "TopLeftToBottom",
        cell_attributes = {{attribute = "Red"}, {attribute = "Green"}, {attribute = "Blue"}},
      },
    },
  },
}))

show("add fixture type Dimmer", stage:add("fixture_type", {
  name = "Dimmer",
  category = "Static",
  modes = {{name = "1ch", functions = {{attribute = "Dimmer", name = "Intensity"}}}},
}))

local warm = {r = 1.0, g = 0.6, b = 0.2, a = 1.0}
for i = 1, 4 do
  show("patch Spot " .. i, stage:add("fixture_patch", {
    name = "Spot " .. i, fixture_type = "Spot", universe = 1, starting_channel = 1 + (i - 1) * 16,
    tags = {"truss", i <= 2 and "stage-left" or "stage-right"}, editor_color = {r = 0.2, g = 0.4, b = 1.0},
  }))
end
for i = 1, 4 do
  show("patch Bar " .. i, stage:add("fixture_patch", {
    name = "Bar " .. i, fixture_type = "led bar", universe = 2, starting_channel = 1 + (i - 1) * 25,
    tags = {"floor"}, receive_dmx_in_editor = true,
  }))
end
for i = 1, 4 do
  show("patch Dimmer " .. i, stage:add("fixture_patch", {
    name = "House " .. i, fixture_type = "Dimmer", universe = 2, starting_channel = 200 + i,
    tags = {"house"}, editor_color = warm,
  }))
end

-- Changes: the spots move to the 8-bit mode, one bar moves up, a house light goes away.
for i = 1, 4 do
  show("spot " .. i .. " to Basic 8bit", stage:configure("fixture_patch", "Spot " .. i, {active_mode_index = 1}))
end
show("move Bar 4", stage:configure("fixture_patch", "bar 4", {starting_channel = 150}))
show("remove House 4", stage:remove("fixture_patch", "House 4"))

-- Place the spots in the level and point their DMX components at their patches.
for i = 1, 4 do
  local name = "SpotActor_" .. i
  assert(editor.spawn_actor(name, "Spot " .. i .. " (truss)"))
  local actor = dmx_component(name)
  local info = actor:add({library = "/Game/DMX/Stage", fixture_patch = "Spot " .. i, receive = true})
  local c = info.components[1]
  print(string.format("%-34s -> %s on %s: patch %s, universe %d, channel %d", "component on " .. info.actor_label,
    c.name, info.actor_name, c.fixture_patch, c.universe, c.starting_channel))
end
-- Found by its label this time; the house lights stop listening.
local house = dmx_component("Spot 4 (truss)")
show("stop Spot 4 receiving", house:configure("", {receive = false}).components[1].receive_dmx_from_patch)

print()
print("undo history:")
for i, title in ipairs(editor.undo_history()) do
  print(string.format("  %2d  %s", i, title))
end
print("dirty packages: " .. table.concat(editor.dirty_packages(), ", "))
if editor.library_report then
  print()
  print(editor.library_report("/Game/DMX/Stage"))
end

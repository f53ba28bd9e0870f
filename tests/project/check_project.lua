-- Runs on the folder build_project.lua saved: everything comes back, clean (nothing to save, nothing
-- to undo).

assert(#editor.dirty_packages() == 0, "a loaded project has nothing to save: " .. table.concat(editor.dirty_packages(), ", "))
assert(#editor.undo_history() == 0, "loading is not an undoable edit")
assert(not editor.create_library("/Game/DMX/Stage"), "Stage was loaded")
local info = dmx_library("/Game/DMX/Stage"):info()
assert(info.fixture_type_count == 2 and info.fixture_patch_count == 3 and info.fixture_types[2].modes[1].cell_attributes[2].default_value == 9)
local spot1, spot2 = info.fixture_patches[1], info.fixture_patches[2]
assert(spot1.tags[2] == "stage-left" and spot1.editor_color_a == 0.5 and spot2.active_mode_index == 1, "patches")
assert(dmx_library("/Game/DMX/Floor/Pars"):info().fixture_patches[1].starting_channel == 512, "the other library")
local truss = dmx_component("Truss"):info()
assert(truss.actor_label == "Truss A" and truss.components[1].fixture_patch == "Spot 1" and truss.components[1].receive_dmx_from_patch == false)
assert(truss.components[2].fixture_patch == "Par 1" and dmx_component("Floor"):info().components[1].fixture_patch == "", "components")

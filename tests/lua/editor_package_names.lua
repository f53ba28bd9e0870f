-- editor.create_library takes only a package path the editor could create an asset at: under a
-- mounted root, no empty folder, no trailing slash, none of the characters the editor refuses.
local refused = {
	"/Game/DMX/American DJ", "/Game/DMX/Clay.Paky", "/Game/DMX/R&D", "/Game/DMX/Hi!", "/Game/DMX/a~b", "/Game/DMX/at@home",
	"/Game/DMX/No#1", "/Game/DMX/a,b", "/Game/DMX/it's", "/Game/DMX/tab\there", "/Game/DMX/line\nbreak", "/Game/DMX/a:b",
	"/Game/DMX/a*b", "/Game/DMX/a?b", "/Game/DMX/\"q\"", "/Game/DMX/a<b>", "/Game/DMX/a|b", "/Game/DMX/back\\slash",
	"/Game//DMX", "/Game/DMX/", "/Game", "/", "", "Game/DMX/Stage", "/Temp/DMX/Stage", "/Nowhere/DMX/Stage",
}
for _, path in ipairs(refused) do
	assert(editor.create_library(path) == false, path)
end
assert(#editor.dirty_packages() == 0, "nothing was made")

for _, path in ipairs({ "/Game/DMX/American_DJ", "/Game/DMX/Clay-Paky", "/Game/DMX/Caf\u{e9}", "/Engine/DMX/Stock" }) do
	assert(editor.create_library(path) == true, path)
	assert(dmx_library(path).valid, path)
end

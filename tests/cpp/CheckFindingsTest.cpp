// kestdmx check's findings, kind by kind: what each says, where (file, line, key) and the values
// given and used, for mistakes scripts really make.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>
#include "KestDMXCheck.h"
#include "KestDMXRunner.h"

namespace
{
	// One line (line 1): library /Game/DMX/Stage with fixture type Spot (mode Std: Dimmer, 16-bit
	// Pan) and its patch Spot1 at universe 1, channel 1; actor Truss. The test's own code starts at line 2.
	const std::string Scene = "assert(editor.create_library('/Game/DMX/Stage') and editor.spawn_actor('Truss')) L = dmx_library('/Game/DMX/Stage') "
		"assert(L:add('fixture_type', {name = 'Spot', modes = {{name = 'Std', functions = {{attribute = 'Dimmer', name = 'Dim'}, {attribute = 'Pan', name = 'Pan', data_type = '16bit'}}}}})) "
		"assert(L:add('fixture_patch', {name = 'Spot1', fixture_type = 'Spot'}))\n";

	// Code starts with a line break (a raw string's), so its first line is line 2.
	std::vector<FKestCheckFinding> RunChecked(const std::string& Code)
	{
		FKestCheckLog Log;
		{
			FKestDMXSession Session;
			InstallKestDMXCheck(Session, Log);
			std::string Error;
			EXPECT_TRUE(Session.RunScript(Scene + Code.substr(1), "script.lua", Error)) << Error;
			CheckKestDMXFinalState(Log, std::string());
			Log.bActive = false;
		}
		return Log.Findings;
	}

	// The first finding of that code and key (on that line, unless Line is 0).
	const FKestCheckFinding* Find(const std::vector<FKestCheckFinding>& Findings, const std::string& Code, const std::string& Key, int Line = 0)
	{
		for (const FKestCheckFinding& Finding : Findings)
		{
			if (Finding.Code == Code && Finding.Key == Key && (Line == 0 || Finding.Line == Line))
			{
				return &Finding;
			}
		}
		return nullptr;
	}

	std::string Describe(const std::vector<FKestCheckFinding>& Findings)
	{
		return FormatKestCheckFindings(Findings);
	}

	// The finding exists, on that line, and its message holds the text.
	void ExpectFinding(const std::vector<FKestCheckFinding>& Findings, const std::string& Code, const std::string& Key, int Line, const std::string& Text)
	{
		const FKestCheckFinding* Finding = Find(Findings, Code, Key, Line);
		ASSERT_NE(Finding, nullptr) << Code << " " << Key << " on line " << Line << " in\n" << Describe(Findings);
		EXPECT_EQ(Finding->File, "script.lua");
		EXPECT_NE(Finding->Message.find(Text), std::string::npos) << Finding->Message;
	}
}

// The script new users write: four findings, each on its line, with the values given and used.
TEST(FCheckFindingsTest, TheMisspeltParScriptGetsFourFindings)
{
	FKestCheckLog Log;
	{
		FKestDMXSession Session;
		InstallKestDMXCheck(Session, Log);
		std::string Error;
		ASSERT_TRUE(Session.RunScript(R"(editor.create_library("/Game/DMX/Show")
local L = dmx_library("/Game/DMX/Show")
L:add("fixture_type", {name = "Par", modes = {{name = "3ch", functions = {{attribute = "Red"}, {attribute = "Green"}, {attribute = "Blue", data_type = "16-bit"}}}}})
L:add("fixture_patch", {name = "Par 1", fixture_type = "Par", universe = "2", startingchannel = 10})
)", "show.lua", Error)) << Error;
		CheckKestDMXFinalState(Log, std::string());
	}
	const std::vector<FKestCheckFinding>& Findings = Log.Findings;
	ASSERT_EQ(Findings.size(), 4u) << Describe(Findings);
	EXPECT_EQ(Findings[0].Code, "unknown-text");
	EXPECT_EQ(Findings[0].Line, 3);
	EXPECT_EQ(Findings[0].Key, "modes[1].functions[3].data_type");
	EXPECT_EQ(Findings[0].Given, "16-bit");
	EXPECT_EQ(Findings[0].Used, "E8Bit");
	EXPECT_NE(Findings[0].Message.find("did you mean 16bit?"), std::string::npos) << Findings[0].Message;
	EXPECT_EQ(Findings[1].Code, "wrong-type");
	EXPECT_EQ(Findings[1].Key, "universe");
	EXPECT_EQ(Findings[1].Given, "2");
	EXPECT_EQ(Findings[1].Used, 1);
	EXPECT_EQ(Findings[2].Code, "unknown-key");
	EXPECT_EQ(Findings[2].Key, "startingchannel");
	EXPECT_NE(Findings[2].Message.find("did you mean starting_channel?"), std::string::npos) << Findings[2].Message;
	EXPECT_EQ(Findings[3].Code, "patch-position");
	EXPECT_EQ(Findings[3].Used["universe"], 1);
	EXPECT_EQ(Findings[3].Used["starting_channel"], 1);
	EXPECT_EQ(Findings[3].Used["ending_channel"], 3);
	for (size_t Index = 1; Index < 4; ++Index)
	{
		EXPECT_EQ(Findings[Index].Line, 4);
		EXPECT_EQ(Findings[Index].Call, "dmx_library(\"/Game/DMX/Show\"):add(\"fixture_patch\", {...})");
	}
}

TEST(FCheckFindingsTest, CorrectScriptsHaveNoFindings)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
assert(L:add("fixture_type", {name = "Bar", category = "Matrix/Pixel Bar", modes = {{name = "RGB", auto_channel_span = true,
	functions = {{attribute = "Dimmer", name = "Master", default_value = 255, data_type = "8BIT", use_lsb = false}},
	matrix = {enabled = true, x_cells = 4, y_cells = 1, first_cell_channel = 2, distribution = "toplefttobottom",
		cell_attributes = {{attribute = "Red"}, {attribute = "Green", data_type = "E16Bit"}}}}}}))
assert(L:add("fixture_patch", {name = "Bar1", fixture_type = "bar", universe = 2, starting_channel = 10, active_mode_index = 0,
	tags = {"floor"}, receive_dmx_in_editor = true, editor_color = {r = 1, g = 0.5, b = 0, a = 1}}))
assert(L:configure("fixture_patch", "BAR1", {starting_channel = 100}))
assert(dmx_component("Truss"):add({library = "/Game/DMX/Stage", fixture_patch = "Bar1", receive = true}))
assert(dmx_component("Truss"):configure("", {receive = false}))
local S = dmx_subsystem()
assert(#S:int_to_bytes(300, "16bit", false) == 2 and S:bytes_to_int({1, 44}, false) == 300)
assert(L:remove("fixture_patch", "Bar1") and L:info().valid)
)lua");
	EXPECT_TRUE(Findings.empty()) << Describe(Findings);
}

// Unknown keys at every depth, with the closest key (also one that belongs a level down), and keys
// that are no names; a table with many is summed up.
TEST(FCheckFindingsTest, UnknownKeysAtAnyDepth)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
L:add("fixture_type", {nmae = "A", functions = {}, modes = {{matrix_enabled = true, functoins = {{atribute = "Red"}},
	matrix = {x_cell = 2, cell_attributes = {{data_typ = "8bit"}}}}}})
L:configure("fixture_patch", "Spot1", {editor_color = {red = 1}, {"stray"}})
dmx_component("Truss"):configure("", {name = "DMX"})
local Many = {} for Index = 1, 15 do Many["junk" .. Index] = Index end
L:configure("fixture_patch", "Spot1", Many)
)lua");
	ExpectFinding(Findings, "unknown-key", "nmae", 2, "did you mean name?");
	ExpectFinding(Findings, "unknown-key", "functions", 2, "did you mean modes[n].functions?");
	ExpectFinding(Findings, "unknown-key", "modes[1].matrix_enabled", 2, "did you mean matrix.enabled?");
	ExpectFinding(Findings, "unknown-key", "modes[1].functoins", 2, "did you mean functions?");
	ExpectFinding(Findings, "unknown-key", "modes[1].matrix.x_cell", 2, "did you mean x_cells?");
	ExpectFinding(Findings, "unknown-key", "modes[1].matrix.cell_attributes[1].data_typ", 2, "did you mean data_type?");
	ExpectFinding(Findings, "unknown-key", "editor_color.red", 4, "did you mean r?");
	ExpectFinding(Findings, "unknown-key", "[1]", 4, "not a name");
	ExpectFinding(Findings, "unknown-key", "name", 5, "keys read here: library, fixture_patch, receive");
	int Line7 = 0;
	for (const FKestCheckFinding& Finding : Findings)
	{
		Line7 += Finding.Line == 7 ? 1 : 0;
	}
	EXPECT_EQ(Line7, 11) << "ten findings and one that counts the rest\n" << Describe(Findings);
	// functoins was never read, so the function inside it is not looked at either.
	EXPECT_EQ(Find(Findings, "unknown-key", "modes[1].functoins[1].atribute"), nullptr);
}

// A key of another Lua type counts as absent: the finding names the value given and what was used.
TEST(FCheckFindingsTest, WrongTypesSayWhatWasUsedInstead)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
L:add("fixture_type", {name = 7, modes = {"x", {auto_channel_span = 1, functions = {{attribute = "Red", use_lsb = "yes"}}}}})
L:configure("fixture_patch", "Spot1", {universe = "3", tags = {"front", 5}, receive_dmx_in_editor = 1, editor_color = {r = "1"}})
L:add("fixture_type", {name = "U", modes = io.stdout})
dmx_subsystem():bytes_to_int({1, "x"}, false)
)lua");
	ExpectFinding(Findings, "wrong-type", "name", 2, "the number 7 is not a string, so \"FixtureType\" was used");
	ExpectFinding(Findings, "wrong-type", "modes[1]", 2, "the string \"x\" is not a table, so it was skipped");
	ExpectFinding(Findings, "wrong-type", "modes[2].auto_channel_span", 2, "so true was used");
	ExpectFinding(Findings, "wrong-type", "modes[2].functions[1].use_lsb", 2, "so false was used");
	ExpectFinding(Findings, "wrong-type", "universe", 3, "so the current value was kept");
	ExpectFinding(Findings, "wrong-type", "tags[2]", 3, "the number 5 is not a string, so it was skipped");
	ExpectFinding(Findings, "wrong-type", "receive_dmx_in_editor", 3, "not a boolean");
	ExpectFinding(Findings, "wrong-type", "editor_color.r", 3, "not a number");
	ExpectFinding(Findings, "wrong-type", "modes", 4, "a userdata is taken as an empty list");
	ExpectFinding(Findings, "wrong-type", "bytes[2]", 5, "skipped");
	EXPECT_EQ(Find(Findings, "wrong-type", "name")->Used, "FixtureType");
	// The patch was asked to move through a key it did not take, so where it is now is reported.
	ExpectFinding(Findings, "patch-position", "", 3, "\"Spot1\" is in universe 1 at channels 1-3");
}

TEST(FCheckFindingsTest, TextsThatChangeNothing)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
L:add("fixture_type", {name = "M", modes = {{functions = {{attribute = "Red", data_type = "16 bits"}},
	matrix = {enabled = true, distribution = "TopLeftToRight", cell_attributes = {{attribute = "Red", data_type = "E64Bit"}}}},
	{matrix = {distribution = "BottomRightToTop"}}, {matrix = {distribution = "top left to bottom"}}}})
dmx_subsystem():int_to_bytes(1, "9bit", false)
)lua");
	ExpectFinding(Findings, "unknown-text", "modes[1].functions[1].data_type", 2, "did you mean 16bit?");
	ExpectFinding(Findings, "unknown-text", "modes[1].matrix.distribution", 2, "\"TopLeftToRight\" can never be set from a script");
	ExpectFinding(Findings, "unknown-text", "modes[1].matrix.cell_attributes[1].data_type", 2, "so \"E8Bit\" was used");
	ExpectFinding(Findings, "unknown-text", "modes[2].matrix.distribution", 2, "can never be set from a script");
	ExpectFinding(Findings, "unknown-text", "modes[3].matrix.distribution", 2, "did you mean TopLeftToBottom?");
	ExpectFinding(Findings, "unknown-text", "data_type", 5, "Accepted: 8bit, 16bit, 24bit, 32bit");
}

TEST(FCheckFindingsTest, NumbersClampedOrTruncated)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
L:add("fixture_type", {name = "C", modes = {{auto_channel_span = false, channel_span = 600, functions = {{attribute = "Red", default_value = 4294967295}},
	matrix = {x_cells = 0, y_cells = 2.5}}}})
L:configure("fixture_patch", "Spot1", {starting_channel = 600, universe = -1, active_mode_index = 1e12})
)lua");
	ExpectFinding(Findings, "clamped", "modes[1].channel_span", 2, "600 is outside 0..512, so 512 was used");
	ExpectFinding(Findings, "clamped", "modes[1].functions[1].default_value", 2, "does not fit in a 32-bit integer, so -2147483648 was used");
	ExpectFinding(Findings, "clamped", "modes[1].matrix.x_cells", 2, "so 1 was used");
	ExpectFinding(Findings, "clamped", "modes[1].matrix.y_cells", 2, "2.5 is not a whole number, so 2 was used");
	ExpectFinding(Findings, "clamped", "starting_channel", 4, "so 512 was used");
	ExpectFinding(Findings, "clamped", "universe", 4, "so 0 was used");
	ExpectFinding(Findings, "clamped", "active_mode_index", 4, "does not fit in a 32-bit integer, so 0 was used");
	const FKestCheckFinding* Channel = Find(Findings, "clamped", "starting_channel");
	ASSERT_NE(Channel, nullptr);
	EXPECT_EQ(Channel->Given, 600);
	EXPECT_EQ(Channel->Used, 512);
	ExpectFinding(Findings, "patch-position", "", 4, "universe 0 at channels 512-514");
}

// Names the engine made unique (types, patches, modes, functions), and names configure duplicated.
TEST(FCheckFindingsTest, NamesMadeUnique)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
L:add("fixture_type", {name = "Spot", modes = {{name = "A", functions = {{attribute = "Red", name = "Dim"}, {attribute = "Green", name = "dim"}}}, {name = "a"}}})
L:add("fixture_patch", {name = "Spot1", fixture_type = "Spot"})
L:configure("fixture_type", "Spot_1", {name = "SPOT"})
)lua");
	ExpectFinding(Findings, "renamed", "name", 2, "the library already has a fixture type named \"Spot\", so the engine named this one \"Spot_1\"");
	ExpectFinding(Findings, "renamed", "modes[2].name", 2, "named this one \"a_1\"");
	ExpectFinding(Findings, "renamed", "modes[1].functions[2].name", 2, "named this one \"dim_1\"");
	ExpectFinding(Findings, "renamed", "name", 3, "fixture patch named \"Spot1\", so the engine named this one \"Spot_1\"");
	ExpectFinding(Findings, "duplicate-name", "name", 4, "another fixture type of the library is also named \"SPOT\"");
}

// Look-ups that found nothing, with the closest name there is and what the call did then.
TEST(FCheckFindingsTest, LookupsThatFoundNothing)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
L:add("fixture_patch", {name = "P", fixture_type = "Spott"})
L:add("fixture_patch", {name = "P"})
L:configure("fixture_patch", "Spot 1", {})
L:configure("fixture_patch", "Spot1", {fixture_type = "Wash"})
L:remove("fixture_type", "Spto")
L:add("fixture", {})
local Missing = dmx_library("/Game/DMX/Stag")
Missing:configure("fixture_type", "Spot", {})
local Nobody = dmx_component("Trus")
Nobody:add({})
dmx_component("Truss"):add({library = "/Game/DMX/Nowhere", fixture_patch = "Spot1"})
dmx_component("Truss"):add({library = "/Game/DMX/Stage", fixture_patch = "Spot2"})
dmx_component("Truss"):add({fixture_patch = "Spot1"})
dmx_component("Truss"):configure("Light", {})
)lua");
	ExpectFinding(Findings, "not-found", "fixture_type", 2, "no fixture type named \"Spott\", so add answered nil and made no patch; did you mean \"Spot\"?");
	EXPECT_EQ(std::count_if(Findings.begin(), Findings.end(), [](const FKestCheckFinding& Finding) { return Finding.Line == 3 && Finding.Code == "not-found"; }), 1)
		<< Describe(Findings);
	ExpectFinding(Findings, "not-found", "name", 4, "no fixture patch named \"Spot 1\", so configure answered false and changed nothing; did you mean \"Spot1\"?");
	ExpectFinding(Findings, "not-found", "fixture_type", 5, "so the key was skipped and the patch keeps fixture type \"Spot\"");
	ExpectFinding(Findings, "not-found", "name", 6, "so remove answered false");
	ExpectFinding(Findings, "unknown-kind", "kind", 7, "\"fixture\" is neither \"fixture_type\" nor \"fixture_patch\", so add answered nil");
	ExpectFinding(Findings, "not-found", "path", 8, "no DMX Library at \"/Game/DMX/Stag\"");
	ExpectFinding(Findings, "not-found", "path", 8, "did you mean \"/Game/DMX/Stage\"?");
	ExpectFinding(Findings, "invalid-handle", "", 9, "configure answered false");
	ExpectFinding(Findings, "not-found", "actor", 10, "did you mean \"Truss\"?");
	ExpectFinding(Findings, "invalid-handle", "", 11, "add answered nil");
	ExpectFinding(Findings, "not-found", "library", 12, "so the component's fixture patch was cleared");
	ExpectFinding(Findings, "not-found", "fixture_patch", 13, "no fixture patch named \"Spot2\", so the component's fixture patch was cleared; did you mean \"Spot1\"?");
	ExpectFinding(Findings, "ignored", "fixture_patch", 14, "read only together with library");
	ExpectFinding(Findings, "not-found", "component", 15, "has no DMX component named \"Light\", so configure answered nil");
}

// What the engine replaced: defaults through the physical range, channels lined up, modes refused.
TEST(FCheckFindingsTest, ValuesTheEngineReplaced)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
L:add("fixture_type", {name = "Head", modes = {{functions = {
	{attribute = "Pan", default_value = 100, physical_from = -270, physical_to = 270, physical_default_value = 90},
	{attribute = "Tilt", channel = 7}}, matrix = {enabled = true, first_cell_channel = 40, cell_attributes = {{attribute = "Red"}}}}}})
L:configure("fixture_patch", "Spot1", {active_mode_index = 3})
)lua");
	ExpectFinding(Findings, "default-replaced", "modes[1].functions[1].default_value", 2, "100 was replaced by 255");
	ExpectFinding(Findings, "physical-default", "modes[1].functions[1].physical_default_value", 2, "for 90 give its place 0.66666666666667");
	ExpectFinding(Findings, "channel-moved", "modes[1].functions[2].channel", 2, "asked for channel 7");
	ExpectFinding(Findings, "ignored", "active_mode_index", 5, "fixture type \"Spot\" has no mode 3 (it has 1, counted from 0), so the patch uses mode 0");
	ExpectFinding(Findings, "patch-position", "", 5, "mode 0 \"Std\" of \"Spot\"");
	// A matrix behind all functions stays where it was asked to be.
	EXPECT_EQ(Find(Findings, "channel-moved", "modes[1].matrix.first_cell_channel"), nullptr) << Describe(Findings);
}

// At the end: invalid patches with the engine's reason and overlapping pairs, at the call that last
// changed them (or removed their fixture type).
TEST(FCheckFindingsTest, InvalidAndOverlappingPatchesAtTheEnd)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
L:add("fixture_type", {name = "Gone", modes = {{functions = {{attribute = "Red"}}}}})
L:add("fixture_patch", {name = "Orphan", fixture_type = "Gone", universe = 5})
L:add("fixture_patch", {name = "Late", fixture_type = "Spot", starting_channel = 2})
L:add("fixture_patch", {name = "Edge", fixture_type = "Spot", starting_channel = 511, universe = 2})
L:remove("fixture_type", "Gone")
)lua");
	ExpectFinding(Findings, "invalid-patch", "", 6, "fixture patch \"Orphan\" (universe 5, channel 1) of /Game/DMX/Stage.Stage is not valid");
	ExpectFinding(Findings, "overlap", "", 4, "\"Spot1\" (channels 1-3) and \"Late\" (channels 2-4) of /Game/DMX/Stage.Stage share channels in universe 1");
	const FKestCheckFinding* Edge = nullptr;
	for (const FKestCheckFinding& Finding : Findings)
	{
		Edge = Finding.Code == "invalid-patch" && Finding.Message.find("Edge") != std::string::npos ? &Finding : Edge;
	}
	ASSERT_NE(Edge, nullptr) << Describe(Findings);
	EXPECT_EQ(Edge->Line, 5);
	EXPECT_NE(Edge->Message.find("512"), std::string::npos) << Edge->Message;
	EXPECT_EQ(Findings.back().Code == "invalid-patch" || Findings.back().Code == "overlap", true);
}

TEST(FCheckFindingsTest, ConversionsClampedByTheEngine)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
local S = dmx_subsystem()
S:int_to_bytes(300, "8bit", false)
S:int_to_bytes(-1, "16bit", false)
S:normalized_to_bytes(1.5, "16bit", false)
S:bytes_to_int({1, 2, 300, -4, 5}, false)
S:int_to_bytes(-1, "32bit", false)
)lua");
	ExpectFinding(Findings, "clamped", "value", 3, "300 does not fit in 8 bits, so the bytes hold 255");
	ExpectFinding(Findings, "clamped", "value", 4, "-1 is negative and does not fit in 16 bits, so the bytes hold 65535");
	ExpectFinding(Findings, "clamped", "value", 5, "1.5 is outside 0..1, so 1 was converted");
	ExpectFinding(Findings, "clamped", "bytes[3]", 6, "300 is outside 0..255, so 255 was used");
	ExpectFinding(Findings, "clamped", "bytes[4]", 6, "so 0 was used");
	ExpectFinding(Findings, "ignored", "bytes", 6, "only the first 4 were used");
	for (const FKestCheckFinding& Finding : Findings)
	{
		EXPECT_NE(Finding.Line, 7) << "-1 in 32 bit keeps its pattern: " << Finding.Message;
	}
}

// Calls made through pcall, inside a coroutine, from a metamethod the module runs or from a loaded
// chunk are reported at the script line that led to them; a key a table's __index serves is not
// taken for an absent one.
TEST(FCheckFindingsTest, CallsFromAnywhereKeepTheirScriptLine)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
pcall(L.add, L, "fixture_patch", {fixture_type = "Spot", universe = "2"})
coroutine.wrap(function() L:add("fixture_patch", {fixture_type = "Spot", starting_channel = 0}) end)()
local Params = setmetatable({}, {__index = function(_, Key)
	if Key == "fixture_type" then L:remove("fixture_type", "Nope") return "Spot" end end})
assert(L:add("fixture_patch", Params))
load("L:add('fixture_patch', {fixture_type = 'Spot', universe = true})")()
)lua");
	ExpectFinding(Findings, "wrong-type", "universe", 2, "the string \"2\"");
	ExpectFinding(Findings, "clamped", "starting_channel", 3, "so 1 was used");
	ExpectFinding(Findings, "not-found", "name", 5, "\"Nope\"");
	ExpectFinding(Findings, "wrong-type", "universe", 7, "true is not a number");
	for (const FKestCheckFinding& Finding : Findings)
	{
		EXPECT_FALSE(Finding.Line == 6 && Finding.Code == "not-found") << "fixture_type came from __index: " << Finding.Message;
	}
}

// What the engine refused to make, and a subsystem that is not there.
TEST(FCheckFindingsTest, EngineRefusalsAndAMissingSubsystem)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
editor.fail_next("DMXEntityFixturePatch")
L:add("fixture_patch", {name = "P", fixture_type = "Spot"})
editor.fail_next("DMXComponent")
dmx_component("Truss"):add({})
)lua");
	ExpectFinding(Findings, "not-created", "", 3, "the engine made no fixture patch, so add answered nil");
	ExpectFinding(Findings, "not-created", "", 5, "the engine made no DMX component, so add answered nil");

	FKestCheckLog Log;
	{
		FHeadlessEditorOptions Options;
		Options.bWithDMXSubsystem = false;
		FKestDMXSession Session(Options);
		InstallKestDMXCheck(Session, Log);
		std::string Error;
		ASSERT_TRUE(Session.RunScript("local S = dmx_subsystem()\nS:bytes_to_int({1, 300}, false)\nS:int_to_bytes(300, '8bit', false)\n", "script.lua", Error)) << Error;
		Log.bActive = false;
	}
	ExpectFinding(Log.Findings, "not-found", "", 1, "the engine has no DMX subsystem");
	ExpectFinding(Log.Findings, "invalid-handle", "", 2, "bytes_to_int answered 0 without converting");
	EXPECT_EQ(Find(Log.Findings, "clamped", "bytes[2]"), nullptr) << "the bytes were never read";
	ExpectFinding(Log.Findings, "clamped", "value", 3, "the bytes hold 255");
}

// Keys a params table inherits through __index tables are read as the module reads them; behind an
// __index function nothing is judged.
TEST(FCheckFindingsTest, KeysInheritedThroughIndexTables)
{
	const std::vector<FKestCheckFinding> Findings = RunChecked(R"lua(
local Defaults = setmetatable({universe = "3"}, {__index = {fixture_type = "Spot", starting_channel = 900}})
assert(L:add("fixture_patch", setmetatable({name = "Inherited"}, {__index = Defaults})))
assert(L:add("fixture_patch", setmetatable({name = "Computed"}, {__index = function(_, Key) return Key == "fixture_type" and "Spot" or nil end})))
)lua");
	ExpectFinding(Findings, "wrong-type", "universe", 3, "the string \"3\" is not a number");
	ExpectFinding(Findings, "clamped", "starting_channel", 3, "900 is outside 1..512");
	for (const FKestCheckFinding& Finding : Findings)
	{
		EXPECT_FALSE(Finding.Code == "not-found") << Finding.Message;
		EXPECT_FALSE(Finding.Line == 4 && Finding.Code != "overlap") << Finding.Message;
	}
}

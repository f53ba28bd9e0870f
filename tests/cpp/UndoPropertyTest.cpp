// Random changing calls through Lua, alone or in sequences, undone back to the start and redone to the
// end, every state compared with the digest (DMXStateDigest.h) taken when it was first reached. A
// creating component add sets patch and receive after its step, on the new component only, which
// undo takes away: exact too. A call without a step changes nothing, but a reusing add (by design).
// A fixture type configure that replaces the modes of a type patches use leaves their caches behind;
// undo and redo of the type refresh them outside the step (pulling an active mode beyond the new
// modes back into range). So the first undo of such a call is exact, later comparisons leave out the
// cache-derived lines of that type's patches, and a second redo must repeat the first exactly.
// Removing a fixture type clears its patches' reference to it without recording them, so undo brings
// the type back but not their reference: from that call's undo on, the comparisons of its sequence
// leave out those patches' reference and cache-derived line.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <random>
#include "KestSessionTest.h"
#include "component/DMXComponentLookup.h"
#include "library/DMXLibraryLookup.h"
#include "module/DMXLuaParams.h"

namespace
{
	using namespace DMXStateDigest;
	using FPool = std::vector<const char*>;

	// The engine's algorithm is fixed by the standard: the same calls everywhere.
	struct FRandom
	{
		std::mt19937_64 Engine;

		int Below(int Count) { return static_cast<int>(Engine() % static_cast<uint64>(Count)); }
		bool Chance(int Percent) { return Below(100) < Percent; }
		const char* Pick(const FPool& Pool) { return Pool[static_cast<size_t>(Below(static_cast<int>(Pool.size())))]; }
	};

	const FPool LibraryPaths = {"/Game/DMX/Stage", "/Game/DMX/Tour"};
	const char* const MissingLibraryPath = "/Game/DMX/Missing";
	// Every actor has a label, so looking one up makes none.
	const FPool ActorNames = {"Truss", "Left Stand", "Pole", "stand"};
	const FPool TypeNames = {"Spot", "Wash", "Bar", "spot", "Par", "", "Moving Head"};
	const FPool PatchNames = {"P1", "P2", "Front", "front", "Back", "", "Side_1"};
	const FPool ComponentNames = {"DMXComponent", "Rig", "rig", "Head", ""};
	// Values as Lua source. A number is not a boolean, nor a string a number: both count as absent.
	const FPool Bools = {"true", "true", "false", "false", "1"};
	const FPool Channels = {"1", "2", "5", "17", "256", "511", "512", "513", "0", "-4", "2.9", "1e12", "0/0"};
	const FPool DefaultValues = {"0", "1", "255", "256", "65535", "4294967295", "-1", "127.9"};
	const FPool Physical = {"0", "1", "100", "-50", "25.5", "1e9"};
	const FPool Colors = {"0", "1", "0.5", "2.5", "-1"};
	const FPool Attributes = {"'Dimmer'", "'Pan'", "'Tilt'", "'Color'", "'Red'", "''", "'dimmer'", "'Zoom'"};
	const FPool Tags = {"'front'", "'Back'", "''", "5", "true", "'front'"};
	const FPool DataTypes = {"'E8Bit'", "'16bit'", "'E24BIT'", "'32bit'", "'E64Bit'", "''"};

	// A table field given with a chance (without a key: a list entry), its value picked from Pool or made by Make.
	struct FField
	{
		int Percent;
		const char* Key;
		FPool Pool;
		std::string (*Make)(FRandom&) = nullptr;
	};

	std::string Quoted(const std::string& Text) { return "\"" + Text + "\""; }

	std::string MakeTable(FRandom& R, const std::vector<FField>& Fields)
	{
		std::string Text = "{";
		for (const FField& Field : Fields)
		{
			if (R.Chance(Field.Percent))
			{
				Text += (*Field.Key ? std::string(Field.Key) + " = " : std::string()) + (Field.Make ? Field.Make(R) : std::string(R.Pick(Field.Pool))) + ", ";
			}
		}
		return Text + "}";
	}

	// Up to Max tables; now and then an entry that is not a table, which is skipped.
	std::string MakeList(FRandom& R, int Max, const std::vector<FField>& Fields)
	{
		std::string List = "{";
		for (int Count = R.Below(Max + 1); Count > 0; --Count)
		{
			List += (R.Chance(8) ? std::string("'skip'") : MakeTable(R, Fields)) + ", ";
		}
		return List + "}";
	}

	const std::vector<FField> FunctionFields = {{80, "attribute", Attributes}, {60, "name", {"'Dim'", "'Pan'", "'Function'", "''", "'Fine'"}},
		{30, "description", {"'about'"}}, {40, "default_value", DefaultValues}, {40, "channel", Channels}, {60, "data_type", DataTypes},
		{30, "use_lsb", Bools}, {25, "physical_default_value", Physical}, {25, "physical_from", Physical}, {25, "physical_to", Physical}};
	const std::vector<FField> CellFields = {{80, "attribute", Attributes}, {30, "description", {"'cell'"}}, {40, "default_value", DefaultValues},
		{50, "data_type", DataTypes}, {30, "use_lsb", Bools}};
	const std::vector<FField> MatrixFields = {{70, "enabled", Bools}, {50, "x_cells", Channels}, {50, "y_cells", Channels},
		{40, "first_cell_channel", Channels},
		{50, "distribution", {"'TopLeftToBottom'", "'TopLeftToRight'", "'BottomRightToClockwise'", "'topleftToclockwise'", "'Top Left'"}},
		{60, "cell_attributes", {}, [](FRandom& R) { return MakeList(R, 3, CellFields); }}};
	const std::vector<FField> ModeFields = {{70, "name", {"'Basic'", "'Extended'", "'Mode'", "''", "'basic'"}}, {30, "auto_channel_span", Bools},
		{30, "channel_span", Channels}, {75, "functions", {}, [](FRandom& R) { return MakeList(R, 4, FunctionFields); }},
		{35, "matrix", {}, [](FRandom& R) { return MakeTable(R, MatrixFields); }}};
	const FPool TypeNameValues = {"'Spot'", "'Wash'", "'Bar'", "'spot'", "'Par'", "''", "'Moving Head'"};
	const FPool CategoryValues = {"'Static'", "'Moving Head'", "'Strobe'", "''"};
	const std::vector<FField> TypeAddFields = {{75, "name", TypeNameValues}, {40, "category", CategoryValues},
		{85, "modes", {}, [](FRandom& R) { return MakeList(R, 3, ModeFields); }}};
	const std::vector<FField> TypeChangeFields = {{30, "name", TypeNameValues}, {30, "category", CategoryValues},
		{60, "modes", {}, [](FRandom& R) { return MakeList(R, 3, ModeFields); }}};
	// The patch's "fixture_type" and "name" are picked apart, from the library's own names.
	const std::vector<FField> PatchFields = {{35, "active_mode_index", {"0", "1", "2", "5", "-1", "1.5"}},
		{40, "universe", {"0", "1", "2", "7", "-1", "100000", "2.5", "math.huge"}}, {50, "starting_channel", Channels},
		{35, "tags", {}, [](FRandom& R) { return MakeTable(R, {{50, "", Tags}, {50, "", Tags}, {50, "", Tags}}); }},
		{30, "receive_dmx_in_editor", Bools},
		{35, "editor_color", {}, [](FRandom& R) { return MakeTable(R, {{50, "r", Colors}, {50, "g", Colors}, {50, "b", Colors}, {50, "a", Colors}, {10, "r", {"'1'"}}}); }}};

	const char* const ConfigureTitle = "Vorlith: Configure DMX Library Entity";

	// The same text with the letter case of some letters turned around.
	std::string ShuffleCase(FRandom& R, std::string Text)
	{
		for (char& Letter : Text)
		{
			Letter = static_cast<char>(std::isalpha(Letter) && R.Chance(30) ? (std::isupper(Letter) ? std::tolower(Letter) : std::toupper(Letter)) : Letter);
		}
		return Text;
	}

	// A changing call and what it must do to the undo history (a reusing component add changes without
	// a step). StaleTypes: the fixture types whose modes the call replaces while patches use them.
	// UnlinkedPatches: the patches of the fixture type the call removes.
	struct FCall
	{
		std::string Lua;
		const char* Title = ConfigureTitle;
		bool bRecordsStep = true, bChangesWithoutStep = false, bCreatesComponent = false;
		std::set<std::string> StaleTypes = {}, UnlinkedPatches = {};
	};

	std::set<std::string> Join(std::set<std::string> Tags, const std::set<std::string>& More)
	{
		Tags.insert(More.begin(), More.end());
		return Tags;
	}

	class FUndoPropertyTest : public FKestSessionTest
	{
	protected:
		void SetUp() override { StartSession(); }
		void TearDown() override
		{
			std::printf("[ undo     ] %d steps undone and redone (%d sequences, %d leaving patches behind; %d creating a component; %d removing a type"
				" from its patches), %d calls without a step\n", RoundTrips, Sequences, StaleSequences, CreatingComponentAdds, UnlinkingRemovals, CallsWithoutStep);
			FKestSessionTest::TearDown();
		}

		// Two empty libraries and three labelled actors. Removed entities and undone creations stay in
		// memory until the editor stops, so long runs start over now and then.
		void StartSession()
		{
			Session.reset();
			FKestSessionTest::SetUp();
			Run(R"(assert(editor.create_library("/Game/DMX/Stage") and editor.create_library("/Game/DMX/Tour"))
				assert(editor.spawn_actor("Truss", "Truss") and editor.spawn_actor("Stand", "Left Stand") and editor.spawn_actor("Pole", "Pole")))");
		}

		// Mostly a name the library holds, in another letter case; now and then any name.
		static std::string PickEntityName(FRandom& R, UDMXLibrary* Library, bool bFixtureType)
		{
			std::vector<std::string> Names;
			for (UDMXEntity* Entity : Library->GetEntities())
			{
				Names.insert(Names.end(), bFixtureType == Entity->IsA<UDMXEntityFixtureType>() ? 1 : 0, ToUTF8(Entity->Name));
			}
			return Names.empty() || R.Chance(12) ? std::string(R.Pick(bFixtureType ? TypeNames : PatchNames))
				: ShuffleCase(R, Names[static_cast<size_t>(R.Below(static_cast<int>(Names.size())))]);
		}

		static std::string MakePatchParams(FRandom& R, UDMXLibrary* Library, bool bAdd)
		{
			std::string Params = "{";
			Params += R.Chance(bAdd ? 92 : 25) ? "fixture_type = " + Quoted(PickEntityName(R, Library, true)) + ", " : "";
			Params += R.Chance(bAdd ? 70 : 20) ? "name = " + Quoted(R.Pick(PatchNames)) + ", " : "";
			return Params + MakeTable(R, PatchFields).substr(1);
		}

		static FCall MakeLibraryCall(FRandom& R)
		{
			const std::string Path = R.Chance(3) ? MissingLibraryPath : R.Pick(LibraryPaths);
			UDMXLibrary* Library = LoadDMXLibrary(ConvertLuaText(Path));
			UDMXLibrary* Target = Library ? Library : LoadDMXLibrary(ConvertLuaText(LibraryPaths[0]));
			const std::string Handle = "dmx_library(" + Quoted(Path) + ")";
			const std::string TypeKind = Quoted(ShuffleCase(R, "fixture_type"));
			// An unknown kind, now and then, answers the failure value but records the step all the same.
			const std::string PatchKind = Quoted(R.Chance(3) ? "fixture" : ShuffleCase(R, "fixture_patch"));
			FCall Call{.bRecordsStep = Library != nullptr};
			// Removal gets likelier as the library fills up, so libraries stay a few dozen entities big.
			const int Roll = R.Below(100) - (Target->GetEntities().Num() > 30 ? 45 : 12);
			if (Roll < 0)
			{
				const bool bType = R.Chance(35);
				const std::string Name = PickEntityName(R, Target, bType);
				Call.Lua = Handle + ":remove(" + (bType ? TypeKind : PatchKind) + ", " + Quoted(Name) + ")";
				Call.Title = "Vorlith: Remove DMX Library Entity";
				const UDMXEntityFixtureType* FixtureType = bType ? FindFixtureTypeByName(Library, ConvertLuaText(Name)) : nullptr;
				for (const UDMXEntityFixturePatch* Patch : FixtureType ? Library->GetEntitiesTypeCast<UDMXEntityFixturePatch>() : TArray<UDMXEntityFixturePatch*>())
				{
					if (Patch->GetFixtureType() == FixtureType)
					{
						Call.UnlinkedPatches.insert(PatchTag(Patch));
					}
				}
			}
			else if (Roll < 50)
			{
				const bool bType = Roll < 20;
				Call.Lua = Handle + ":add(" + (bType ? TypeKind + ", " + MakeTable(R, TypeAddFields) : PatchKind + ", " + MakePatchParams(R, Target, true)) + ")";
				Call.Title = "Vorlith: Add DMX Library Entity";
			}
			else if (Roll < 67)
			{
				const std::string Name = PickEntityName(R, Target, true);
				const std::string Params = MakeTable(R, TypeChangeFields);
				Call.Lua = Handle + ":configure(" + TypeKind + ", " + Quoted(Name) + ", " + Params + ")";
				const UDMXEntityFixtureType* FixtureType = FindFixtureTypeByName(Library, ConvertLuaText(Name));
				const bool bUsed = FixtureType != nullptr && !FindLiveObjects<UDMXEntityFixturePatch>([FixtureType](UDMXEntityFixturePatch* Patch)
					{ return Patch->GetFixtureType() == FixtureType; }).empty();
				if (bUsed && Params.find("modes =") != std::string::npos)
				{
					Call.StaleTypes.insert(TypeTag(FixtureType));
				}
			}
			else
			{
				const std::string Name = PickEntityName(R, Target, false);
				Call.Lua = Handle + ":configure(" + PatchKind + ", " + Quoted(Name) + ", " + MakePatchParams(R, Target, false) + ")";
			}
			return Call;
		}

		static FCall MakeComponentCall(FRandom& R, bool bOnlyCreating)
		{
			const std::string ActorName = R.Chance(3) ? "Ghost" : R.Pick(ActorNames);
			AActor* Actor = FindEditorActorByNameOrLabel(ConvertLuaText(ActorName));
			std::string Params;
			if (R.Chance(70))
			{
				const char* Path = R.Chance(10) ? MissingLibraryPath : R.Pick(LibraryPaths);
				UDMXLibrary* Library = LoadDMXLibrary(ConvertLuaText(Path));
				const std::string Patch = Library != nullptr && R.Chance(80) ? PickEntityName(R, Library, false) : std::string(R.Pick(PatchNames));
				// A "library" that is not a string counts as absent.
				Params += "library = " + (R.Chance(5) ? std::string("5") : Quoted(Path)) + ", ";
				Params += R.Chance(90) ? "fixture_patch = " + Quoted(Patch) + ", " : "";
			}
			Params += R.Chance(50) ? std::string("receive = ") + R.Pick(Bools) + ", " : "";
			const std::string Handle = "dmx_component(" + Quoted(ActorName) + ")";
			if (bOnlyCreating || R.Chance(55))
			{
				// A name the actor may or may not have yet: a new one creates a component.
				const std::string Name = bOnlyCreating ? "Head" + std::to_string(R.Below(1000000)) : R.Pick(ComponentNames);
				const bool bNamed = bOnlyCreating || R.Chance(85);
				const bool bReuses = Actor != nullptr && FindDMXComponentByName(Actor, ConvertLuaText(bNamed ? Name : "DMXComponent")) != nullptr;
				const bool bCreates = Actor != nullptr && !bReuses;
				return {.Lua = Handle + ":add({" + (bNamed ? "name = " + Quoted(Name) + ", " : "") + Params + "})", .Title = "Vorlith: Add DMX Component",
					.bRecordsStep = bCreates, .bChangesWithoutStep = bReuses, .bCreatesComponent = bCreates};
			}
			const std::string Name = R.Pick(ComponentNames);
			return {.Lua = Handle + ":configure(" + Quoted(Name) + ", {" + Params + "})", .Title = "Vorlith: Configure DMX Component",
				.bRecordsStep = Actor != nullptr && FindDMXComponentByName(Actor, ConvertLuaText(Name)) != nullptr};
		}

		// In a sequence of several calls, only calls that record a step and change nothing outside it.
		static FCall MakeRandomCall(FRandom& R, bool bOnlyRecordingSteps)
		{
			FCall Call = R.Chance(20) ? MakeComponentCall(R, bOnlyRecordingSteps && R.Chance(50)) : MakeLibraryCall(R);
			return !bOnlyRecordingSteps || (Call.bRecordsStep && !Call.bChangesWithoutStep) ? Call : MakeRandomCall(R, true);
		}

		// Count sequences of 1 to MaxCalls calls (MaxCalls 1: every call alone, stepless ones included).
		void CheckSequences(uint64 Seed, int Count, int MaxCalls)
		{
			FRandom R{std::mt19937_64(Seed)};
			bool bPreviousLeftStale = false;
			FDigest Current = Digest();
			for (int Sequence = 0, CallsInSession = 0; Sequence < Count; ++Sequence)
			{
				if (CallsInSession >= 100)
				{
					StartSession();
					Current = Digest();
					CallsInSession = 0, bPreviousLeftStale = false;
				}
				// Before several calls, every type tells its patches about its modes as its panel would; only
				// patches left behind by a type's configure catch up (a lone call's redo has done it).
				for (UDMXEntityFixtureType* FixtureType : FindLiveObjects<UDMXEntityFixtureType>([MaxCalls](UDMXEntityFixtureType*) { return MaxCalls > 1; }))
				{
					FixtureType->PostEditUndo();
				}
				std::vector<FDigest> States{MaxCalls > 1 ? Digest() : Current};
				ASSERT_TRUE(bPreviousLeftStale || DigestsMatch(Current, States[0])) << "patches behind their type without a reason";

				std::set<std::string> Stale, StaleBeforeLast; // types whose patches the calls (all but the last) left behind
				std::vector<std::set<std::string>> Unlinked(1); // per step, the patches whose type its call removed
				std::string Script;
				for (int Index = 1 + R.Below(MaxCalls); Index > 0; --Index, ++CallsInSession)
				{
					const FCall Call = MakeRandomCall(R, MaxCalls > 1);
					Script += Call.Lua + "\n";
					// No transaction left open, and exactly the step the call should record, under its title.
					const int32 StepsBefore = UndoableSteps();
					ASSERT_NO_FATAL_FAILURE(Run("local Result = " + Call.Lua)) << Script;
					ASSERT_EQ(GEditor->Trans->GetActiveCount(), 0) << Script;
					ASSERT_EQ(UndoableSteps() - StepsBefore, Call.bRecordsStep ? 1 : 0) << Script;
					ASSERT_TRUE(!Call.bRecordsStep || LastStepTitle() == Call.Title) << Script;
					if (!Call.bRecordsStep)
					{
						ASSERT_TRUE(Call.bChangesWithoutStep || DigestsMatch(States.back(), Digest())) << Script << "changed without a step";
						States.back() = Digest();
						++CallsWithoutStep;
						continue;
					}
					CreatingComponentAdds += Call.bCreatesComponent ? 1 : 0;
					UnlinkingRemovals += Call.UnlinkedPatches.empty() ? 0 : 1;
					Unlinked.push_back(Call.UnlinkedPatches);
					StaleBeforeLast = Stale;
					Stale.insert(Call.StaleTypes.begin(), Call.StaleTypes.end());
					States.push_back(Digest());
				}
				SCOPED_TRACE(Script);
				const size_t Steps = States.size() - 1;
				std::vector<FDigest> Redone(1);
				std::set<std::string> Undone; // the patches of the removed types whose removal has been undone
				// Only the first undo is exact for the patches left behind: every refresh after it changes
				// them outside any step. For a lone call, a second redo must repeat the first exactly.
				for (int Pass = 0; Pass < (Steps == 1 && !Stale.empty() ? 2 : 1); ++Pass)
				{
					for (size_t Index = Steps; Index > 0; --Index)
					{
						ASSERT_TRUE(GEditor->UndoTransaction());
						Undone.insert(Unlinked[Index].begin(), Unlinked[Index].end());
						ASSERT_TRUE(DigestsMatch(States[Index - 1], Digest(), Join(Pass == 0 && Index == Steps ? StaleBeforeLast : Stale, Undone)))
							<< "undo " << Pass << " to state " << Index - 1;
					}
					for (size_t Index = 1; Index <= Steps; ++Index)
					{
						ASSERT_TRUE(GEditor->RedoTransaction());
						FDigest Now = Digest();
						ASSERT_TRUE(DigestsMatch(Pass == 0 ? States[Index] : Redone[Index], Now, Pass == 0 ? Join(Stale, Undone) : Undone))
							<< "redo " << Pass << " to state " << Index;
						Redone.push_back(std::move(Now));
					}
				}
				RoundTrips += static_cast<int>(Steps);
				Current = Steps > 0 ? std::move(Redone[Steps]) : States[0];
				bPreviousLeftStale = !Stale.empty();
				StaleSequences += bPreviousLeftStale ? 1 : 0;
				++Sequences;
			}
		}

		int RoundTrips = 0, Sequences = 0, StaleSequences = 0, CallsWithoutStep = 0, CreatingComponentAdds = 0, UnlinkingRemovals = 0;
	};
}

TEST_F(FUndoPropertyTest, EveryCallUndoesAndRedoesExactly)
{
	CheckSequences(0x5EED0001, 2000, 1);
}

TEST_F(FUndoPropertyTest, SequencesUndoToTheStartAndRedoToTheEnd)
{
	CheckSequences(0x5EED0003, 75, 12);
}

TEST_F(FUndoPropertyTest, TheDigestSeesWhatUndoMustRestore)
{
	const FDigest Empty = Digest();
	Run(R"(assert(dmx_library("/Game/DMX/Stage"):add("fixture_type", {name = "Spot", modes = {{functions = {{attribute = "Dimmer"}}}}}))
		assert(dmx_library("/Game/DMX/Stage"):add("fixture_patch", {name = "P", fixture_type = "Spot"}))
		assert(dmx_component("Truss"):add({library = "/Game/DMX/Stage", fixture_patch = "P"})))");
	const FDigest Full = Digest();
	EXPECT_FALSE(DigestsMatch(Empty, Full));
	UDMXEntityFixturePatch* Patch = FindFixturePatchByName(LoadDMXLibrary(ConvertLuaText(LibraryPaths[0])), ConvertLuaText("P"));
	const FString ObjectName = Patch->GetName();
	Patch->Rename(TEXT("Renamed"));
	EXPECT_FALSE(DigestsMatch(Full, Digest())) << "object names";
	Patch->Rename(*ObjectName);
	// A patch's link to its type shows on the lines tagged with the patch.
	UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
	Patch->SetFixtureType(nullptr);
	EXPECT_FALSE(DigestsMatch(Full, Digest())) << "fixture type reference";
	EXPECT_TRUE(DigestsMatch(Full, Digest(), {PatchTag(Patch)}));
	Patch->SetFixtureType(FixtureType);
	// A type changed behind its patches' back shows at once; the patch's cache-derived line, the
	// only one tagged with the type, once the cache is rebuilt.
	FixtureType->Modes[0].Functions[0].Attribute = FDMXAttributeName(FName(TEXT("Pan")));
	const FDigest Stale = Digest();
	EXPECT_FALSE(DigestsMatch(Full, Stale)) << "fixture type";
	Patch->RebuildCache();
	EXPECT_FALSE(DigestsMatch(Stale, Digest())) << "cache-derived values";
	EXPECT_TRUE(DigestsMatch(Stale, Digest(), {TypeTag(FixtureType)}));
	UDMXComponent* Component = FindDMXComponentByName(FindEditorActorByNameOrLabel(ConvertLuaText("Truss")), FString());
	const FDigest WithComponent = Digest();
	Component->SetReceiveDMXFromPatch(false);
	EXPECT_FALSE(DigestsMatch(WithComponent, Digest())) << "receive state";
	Component->SetReceiveDMXFromPatch(true);
	Component->SetFixturePatch(nullptr);
	EXPECT_FALSE(DigestsMatch(WithComponent, Digest())) << "patch reference";
}

// Random changing calls through Lua, each checked against editor undo and redo: undo must give back
// exactly the state before the call, redo exactly the state after it. The state is the digest of
// every DMX Library and of the level (DMXStateDigest.h).
//
// What is compared:
// - A call that records a step: after undo the whole digest equals the one taken before the call;
//   after redo it equals the one taken after the call.
// - dmx_component(actor):add that creates a component: the same. The patch and receive changes it
//   makes after its step has closed are on the new component only; undo takes that component out
//   of the actor (it is garbage, so the digest no longer lists it), which makes the whole digest
//   equal to the one before. Redo brings the component back with the state it had when it was
//   undone, which is the state after the call.
// - A call that records no step (a reusing component add, a component configure that finds no
//   component, a handle without a target) must not change the digest, except the reusing add,
//   whose changes are deliberately outside any step and are not undone.
// - A fixture type configure that replaces the modes of a type patches use leaves those patches'
//   caches (and a now out-of-range active mode) as they were: the module does not tell the
//   patches, as the editor's property panel would. Undo and redo of the type do tell them, and the
//   engine then refreshes them outside the step (it pulls an active mode beyond the new modes back
//   into range). For such calls the first undo must still match exactly; the redo, and a second
//   undo, leave out the active mode and the cache-derived values of that type's patches; a second
//   redo must reproduce the first exactly.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>
#include "DMXStateDigest.h"
#include "Editor.h"
#include "Editor/TransBuffer.h"
#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "KestDMXRunner.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "component/DMXComponentLookup.h"
#include "library/DMXLibraryLookup.h"

namespace
{
	using namespace DMXStateDigest;

	// A small deterministic generator (splitmix64), the same on every platform.
	struct FRandom
	{
		uint64 State;

		uint64 Next()
		{
			uint64 Z = (State += 0x9E3779B97F4A7C15ull);
			Z = (Z ^ (Z >> 30)) * 0xBF58476D1CE4E5B9ull;
			Z = (Z ^ (Z >> 27)) * 0x94D049BB133111EBull;
			return Z ^ (Z >> 31);
		}
		int Below(int Count) { return static_cast<int>(Next() % static_cast<uint64>(Count)); }
		bool Chance(int Percent) { return Below(100) < Percent; }
		template <size_t Count>
		const char* Pick(const char* const (&Items)[Count]) { return Items[Below(static_cast<int>(Count))]; }
	};

	const char* const LibraryPaths[] = {"/Game/DMX/Stage", "/Game/DMX/Tour"};
	const char* const MissingLibraryPath = "/Game/DMX/Missing";
	// Actors are found by name or by label; every actor has a label, so looking one up makes none.
	const char* const ActorNames[] = {"Truss", "Left Stand", "Pole", "stand"};
	const char* const TypeNames[] = {"Spot", "Wash", "Bar", "spot", "Par", "", "Moving Head"};
	const char* const PatchNames[] = {"P1", "P2", "Front", "front", "Back", "", "Side_1"};
	const char* const ComponentNames[] = {"DMXComponent", "Rig", "rig", "Head", ""};
	const char* const ModeNames[] = {"Basic", "Extended", "Mode", "", "basic"};
	const char* const Categories[] = {"Static", "Moving Head", "Strobe", ""};
	const char* const Attributes[] = {"Dimmer", "Pan", "Tilt", "Color", "Red", "", "dimmer", "Zoom"};
	const char* const FunctionNames[] = {"Dim", "Pan", "Function", "", "Fine"};
	const char* const DataTypes[] = {"E8Bit", "16bit", "E24BIT", "32bit", "E64Bit", ""};
	const char* const Distributions[] = {"TopLeftToBottom", "TopLeftToRight", "BottomRightToClockwise", "topleftToclockwise", "Top Left"};
	const char* const Channels[] = {"1", "2", "5", "17", "256", "511", "512", "513", "0", "-4", "2.9", "1e12", "0/0"};
	const char* const Universes[] = {"0", "1", "2", "7", "-1", "100000", "2.5", "math.huge"};
	const char* const DefaultValues[] = {"0", "1", "255", "256", "65535", "4294967295", "-1", "127.9"};
	const char* const Physical[] = {"0", "1", "100", "-50", "25.5", "1e9"};
	const char* const ModeIndices[] = {"0", "1", "2", "5", "-1", "1.5"};
	const char* const Colors[] = {"0", "1", "0.5", "2.5", "-1"};
	const char* const Tags[] = {"\"front\"", "\"Back\"", "\"\"", "5", "true", "\"front\""};

	std::string Quoted(const std::string& Text)
	{
		return "\"" + Text + "\"";
	}

	// The same text with the letter case of some letters turned around.
	std::string ShuffleCase(FRandom& R, std::string Text)
	{
		for (char& Letter : Text)
		{
			if (std::isalpha(static_cast<unsigned char>(Letter)) && R.Chance(30))
			{
				Letter = std::isupper(static_cast<unsigned char>(Letter)) ? static_cast<char>(std::tolower(Letter)) : static_cast<char>(std::toupper(Letter));
			}
		}
		return Text;
	}

	// A Lua table constructor built one field at a time. Each field is given with a chance and a
	// function that makes its value only when it is given, so the random choices come in the
	// order of the statements, whatever the compiler.
	struct FTableText
	{
		FRandom& R;
		std::string Text = "{";

		template <typename ValueFn>
		void Maybe(int Percent, const char* Key, ValueFn&& MakeValue)
		{
			if (R.Chance(Percent))
			{
				Text += std::string(Key) + " = " + MakeValue() + ", ";
			}
		}
		std::string Close() const { return Text + "}"; }
	};

	std::string RandomBool(FRandom& R)
	{
		// A number is not a boolean and counts as absent.
		const int Choice = R.Below(5);
		return Choice < 2 ? "true" : Choice < 4 ? "false" : "1";
	}

	std::string MakeFunctionParams(FRandom& R)
	{
		FTableText Table{R};
		Table.Maybe(80, "attribute", [&R] { return Quoted(R.Pick(Attributes)); });
		Table.Maybe(60, "name", [&R] { return Quoted(R.Pick(FunctionNames)); });
		Table.Maybe(30, "description", [] { return Quoted("about"); });
		Table.Maybe(40, "default_value", [&R] { return std::string(R.Pick(DefaultValues)); });
		Table.Maybe(40, "channel", [&R] { return std::string(R.Pick(Channels)); });
		Table.Maybe(60, "data_type", [&R] { return Quoted(R.Pick(DataTypes)); });
		Table.Maybe(30, "use_lsb", [&R] { return RandomBool(R); });
		Table.Maybe(25, "physical_default_value", [&R] { return std::string(R.Pick(Physical)); });
		Table.Maybe(25, "physical_from", [&R] { return std::string(R.Pick(Physical)); });
		Table.Maybe(25, "physical_to", [&R] { return std::string(R.Pick(Physical)); });
		return Table.Close();
	}

	std::string MakeCellAttributeParams(FRandom& R)
	{
		FTableText Table{R};
		Table.Maybe(80, "attribute", [&R] { return Quoted(R.Pick(Attributes)); });
		Table.Maybe(30, "description", [] { return Quoted("cell"); });
		Table.Maybe(40, "default_value", [&R] { return std::string(R.Pick(DefaultValues)); });
		Table.Maybe(50, "data_type", [&R] { return Quoted(R.Pick(DataTypes)); });
		Table.Maybe(30, "use_lsb", [&R] { return RandomBool(R); });
		return Table.Close();
	}

	// A list of 0..Max entries made by Make; now and then a value that is not a table, which is skipped.
	template <typename MakeFn>
	std::string MakeList(FRandom& R, int Max, MakeFn&& Make)
	{
		std::string List = "{";
		const int Count = R.Below(Max + 1);
		for (int Index = 0; Index < Count; ++Index)
		{
			List += (R.Chance(8) ? std::string("\"skip\"") : Make(R)) + ", ";
		}
		return List + "}";
	}

	std::string MakeMatrixParams(FRandom& R)
	{
		FTableText Table{R};
		Table.Maybe(70, "enabled", [&R] { return RandomBool(R); });
		Table.Maybe(50, "x_cells", [&R] { return std::string(R.Pick(Channels)); });
		Table.Maybe(50, "y_cells", [&R] { return std::string(R.Pick(Channels)); });
		Table.Maybe(40, "first_cell_channel", [&R] { return std::string(R.Pick(Channels)); });
		Table.Maybe(50, "distribution", [&R] { return Quoted(R.Pick(Distributions)); });
		Table.Maybe(60, "cell_attributes", [&R] { return MakeList(R, 3, MakeCellAttributeParams); });
		return Table.Close();
	}

	std::string MakeModeParams(FRandom& R)
	{
		FTableText Table{R};
		Table.Maybe(70, "name", [&R] { return Quoted(R.Pick(ModeNames)); });
		Table.Maybe(30, "auto_channel_span", [&R] { return RandomBool(R); });
		Table.Maybe(30, "channel_span", [&R] { return std::string(R.Pick(Channels)); });
		Table.Maybe(75, "functions", [&R] { return MakeList(R, 4, MakeFunctionParams); });
		Table.Maybe(35, "matrix", [&R] { return MakeMatrixParams(R); });
		return Table.Close();
	}

	std::string MakeColorParams(FRandom& R)
	{
		FTableText Table{R};
		Table.Maybe(50, "r", [&R] { return std::string(R.Pick(Colors)); });
		Table.Maybe(50, "g", [&R] { return std::string(R.Pick(Colors)); });
		Table.Maybe(50, "b", [&R] { return std::string(R.Pick(Colors)); });
		Table.Maybe(50, "a", [&R] { return std::string(R.Pick(Colors)); });
		// A string is not a number: this red counts as absent.
		Table.Maybe(10, "r", [] { return Quoted("1"); });
		return Table.Close();
	}

	std::string MakeTagList(FRandom& R)
	{
		std::string List = "{";
		const int Count = R.Below(4);
		for (int Index = 0; Index < Count; ++Index)
		{
			List += std::string(R.Pick(Tags)) + ", ";
		}
		return List + "}";
	}

	// One randomly chosen changing call, with what it must do to the undo history.
	struct FCall
	{
		std::string Lua;
		// Title of the step the call records.
		const char* Title = "";
		// The call opens an undo step.
		bool bRecordsStep = true;
		// The call may change the state without a step (a reusing component add).
		bool bChangesWithoutStep = false;
		// The call creates a DMX component (and then sets its patch and receive state outside the step).
		bool bCreatesComponent = false;
		// Ids of fixture types whose modes the call replaces while patches use them.
		std::set<std::string> StaleTypes;
	};

	class FUndoPropertyTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			StartSession();
		}

		// A fresh editor with two empty libraries and three labelled actors. Removed entities and
		// undone creations stay in memory until the editor stops, so long runs start over now and
		// then to keep every state small.
		void StartSession()
		{
			Session.reset();
			Session = std::make_unique<FKestDMXSession>();
			std::string Error;
			ASSERT_TRUE(Session->RunScript(R"(
				assert(editor.create_library("/Game/DMX/Stage") and editor.create_library("/Game/DMX/Tour"))
				assert(editor.spawn_actor("Truss", "Truss") and editor.spawn_actor("Stand", "Left Stand") and editor.spawn_actor("Pole", "Pole"))
			)", "setup", Error)) << Error;
		}
		void TearDown() override
		{
			std::printf("[ undo     ] %d round trips checked (%d with refreshed patches, %d creating a component), %d calls without a step, "
				"%d sequences (%d with refreshed patches)\n", RoundTrips, StaleRoundTrips, CreatingComponentAdds, CallsWithoutStep, Sequences, StaleSequences);
			Session.reset();
		}

		FDigest Digest() { return TakeDigest(Session->GetEditor().GetEditorWorld()); }
		int32 UndoableSteps() const { return GEditor->Trans->GetQueueLength() - GEditor->Trans->GetUndoCount(); }

		std::string PickEntityName(FRandom& R, UDMXLibrary* Library, bool bFixtureType)
		{
			std::vector<std::string> Names;
			for (UDMXEntity* Entity : Library->GetEntities())
			{
				if (Entity != nullptr && (bFixtureType ? Entity->IsA<UDMXEntityFixtureType>() : Entity->IsA<UDMXEntityFixturePatch>()))
				{
					Names.push_back(ToUTF8(Entity->Name));
				}
			}
			if (Names.empty() || R.Chance(12))
			{
				return bFixtureType ? R.Pick(TypeNames) : R.Pick(PatchNames);
			}
			return ShuffleCase(R, Names[static_cast<size_t>(R.Below(static_cast<int>(Names.size())))]);
		}

		// Whether any live patch uses the type, removed ones included: the engine refreshes them all.
		static bool IsTypeUsed(const UDMXEntityFixtureType* FixtureType)
		{
			bool bUsed = false;
			FHeadlessObjectRegistry::Get().ForEachObject([FixtureType, &bUsed](UObject* Object)
			{
				const UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Object);
				bUsed = bUsed || (Patch != nullptr && !Patch->IsGarbage() && Patch->GetFixtureType() == FixtureType);
			});
			return bUsed;
		}

		std::string MakePatchParams(FRandom& R, UDMXLibrary* Library, bool bAdd)
		{
			FTableText Table{R};
			Table.Maybe(bAdd ? 92 : 25, "fixture_type", [&] { return Quoted(PickEntityName(R, Library, true)); });
			Table.Maybe(35, "active_mode_index", [&R] { return std::string(R.Pick(ModeIndices)); });
			Table.Maybe(40, "universe", [&R] { return std::string(R.Pick(Universes)); });
			Table.Maybe(50, "starting_channel", [&R] { return std::string(R.Pick(Channels)); });
			Table.Maybe(bAdd ? 70 : 20, "name", [&R] { return Quoted(R.Pick(PatchNames)); });
			Table.Maybe(35, "tags", [&R] { return MakeTagList(R); });
			Table.Maybe(30, "receive_dmx_in_editor", [&R] { return RandomBool(R); });
			Table.Maybe(35, "editor_color", [&R] { return MakeColorParams(R); });
			return Table.Close();
		}

		FCall MakeLibraryCall(FRandom& R)
		{
			FCall Call;
			const std::string Path = R.Chance(3) ? MissingLibraryPath : R.Pick(LibraryPaths);
			UDMXLibrary* Library = LoadDMXLibrary(ToEngine(Path));
			Call.bRecordsStep = Library != nullptr;
			const std::string Handle = "dmx_library(" + Quoted(Path) + ")";
			UDMXLibrary* Target = Library ? Library : LoadDMXLibrary(ToEngine(LibraryPaths[0]));
			const int Entities = Target->GetEntities().Num();

			// Removal gets more likely as the library fills up, so the libraries stay a few dozen entities big.
			const int Roll = R.Below(100);
			const int RemoveShare = Entities > 30 ? 45 : 12;
			const std::string TypeKind = ShuffleCase(R, "fixture_type");
			const std::string PatchKind = ShuffleCase(R, "fixture_patch");
			if (Roll < RemoveShare)
			{
				const bool bType = R.Chance(35);
				Call.Lua = Handle + ":remove(" + Quoted(bType ? TypeKind : PatchKind) + ", " + Quoted(PickEntityName(R, Target, bType)) + ")";
				Call.Title = "Vorlith: Remove DMX Library Entity";
			}
			else if (Roll < RemoveShare + 2)
			{
				Call.Lua = Handle + ":configure(\"fixture\", \"Spot\", {name = \"X\"})";
				Call.Title = "Vorlith: Configure DMX Library Entity";
			}
			else if (Roll < RemoveShare + 20)
			{
				FTableText Params{R};
				Params.Maybe(75, "name", [&R] { return Quoted(R.Pick(TypeNames)); });
				Params.Maybe(40, "category", [&R] { return Quoted(R.Pick(Categories)); });
				Params.Maybe(85, "modes", [&R] { return MakeList(R, 3, MakeModeParams); });
				Call.Lua = Handle + ":add(" + Quoted(TypeKind) + ", " + Params.Close() + ")";
				Call.Title = "Vorlith: Add DMX Library Entity";
			}
			else if (Roll < RemoveShare + 50)
			{
				Call.Lua = Handle + ":add(" + Quoted(PatchKind) + ", " + MakePatchParams(R, Target, true) + ")";
				Call.Title = "Vorlith: Add DMX Library Entity";
			}
			else if (Roll < RemoveShare + 67)
			{
				const std::string Name = PickEntityName(R, Target, true);
				FTableText Params{R};
				Params.Maybe(30, "name", [&R] { return Quoted(R.Pick(TypeNames)); });
				Params.Maybe(30, "category", [&R] { return Quoted(R.Pick(Categories)); });
				bool bModes = false;
				Params.Maybe(60, "modes", [&R, &bModes] { bModes = true; return MakeList(R, 3, MakeModeParams); });
				Call.Lua = Handle + ":configure(" + Quoted(TypeKind) + ", " + Quoted(Name) + ", " + Params.Close() + ")";
				Call.Title = "Vorlith: Configure DMX Library Entity";
				const UDMXEntityFixtureType* FixtureType = FindFixtureTypeByName(Library, ToEngine(Name));
				if (bModes && FixtureType != nullptr && IsTypeUsed(FixtureType))
				{
					Call.StaleTypes.insert(GuidText(FixtureType->GetID()));
				}
			}
			else
			{
				const std::string Name = PickEntityName(R, Target, false);
				Call.Lua = Handle + ":configure(" + Quoted(PatchKind) + ", " + Quoted(Name) + ", " + MakePatchParams(R, Target, false) + ")";
				Call.Title = "Vorlith: Configure DMX Library Entity";
			}
			return Call;
		}

		FCall MakeComponentCall(FRandom& R, bool bOnlyCreating)
		{
			FCall Call;
			const std::string ActorName = R.Chance(3) ? "Ghost" : R.Pick(ActorNames);
			AActor* Actor = FindEditorActorByNameOrLabel(ToEngine(ActorName));
			std::string Params;
			if (R.Chance(70))
			{
				const char* Path = R.Chance(10) ? MissingLibraryPath : R.Pick(LibraryPaths);
				std::string PatchName = R.Pick(PatchNames);
				if (UDMXLibrary* Library = LoadDMXLibrary(ToEngine(Path)); Library != nullptr && R.Chance(80))
				{
					PatchName = PickEntityName(R, Library, false);
				}
				// A "library" that is not a string counts as absent.
				Params += "library = " + (R.Chance(5) ? std::string("5") : Quoted(Path)) + ", ";
				if (R.Chance(90))
				{
					Params += "fixture_patch = " + Quoted(PatchName) + ", ";
				}
			}
			if (R.Chance(50))
			{
				Params += "receive = " + RandomBool(R) + ", ";
			}
			const std::string Handle = "dmx_component(" + Quoted(ActorName) + ")";
			if (bOnlyCreating || R.Chance(55))
			{
				// A name the actor may or may not have yet: a new one creates a component.
				const std::string Name = bOnlyCreating ? "Head" + std::to_string(R.Below(1000000)) : R.Pick(ComponentNames);
				const bool bNamed = R.Chance(85) || bOnlyCreating;
				const FString LookupName = bNamed ? ToEngine(Name) : FString(TEXT("DMXComponent"));
				const bool bReuses = Actor != nullptr && FindDMXComponentByName(Actor, LookupName) != nullptr;
				Call.Lua = Handle + ":add({" + (bNamed ? "name = " + Quoted(Name) + ", " : std::string()) + Params + "})";
				Call.Title = "Vorlith: Add DMX Component";
				Call.bRecordsStep = Actor != nullptr && !bReuses;
				Call.bChangesWithoutStep = bReuses;
				Call.bCreatesComponent = Call.bRecordsStep;
			}
			else
			{
				const std::string Name = R.Pick(ComponentNames);
				Call.Lua = Handle + ":configure(" + Quoted(Name) + ", {" + Params + "})";
				Call.Title = "Vorlith: Configure DMX Component";
				Call.bRecordsStep = Actor != nullptr && FindDMXComponentByName(Actor, ToEngine(Name)) != nullptr;
			}
			return Call;
		}

		FCall MakeRandomCall(FRandom& R, bool bOnlyRecordingSteps)
		{
			for (;;)
			{
				FCall Call = R.Chance(20) ? MakeComponentCall(R, bOnlyRecordingSteps && R.Chance(50)) : MakeLibraryCall(R);
				// Sequences undo several steps back; a change made outside every step would be
				// carried along by the steps around it, as designed, so they leave it out.
				if (!bOnlyRecordingSteps || (Call.bRecordsStep && !Call.bChangesWithoutStep))
				{
					return Call;
				}
			}
		}

		// Runs the call; answers whether it recorded a step and checks that nothing is left open.
		::testing::AssertionResult RunCall(const FCall& Call)
		{
			const int32 StepsBefore = UndoableSteps();
			std::string Error;
			if (!Session->RunScript("local Result = " + Call.Lua, "call", Error))
			{
				return ::testing::AssertionFailure() << Call.Lua << "\n" << Error;
			}
			if (GEditor->Trans->GetActiveCount() != 0)
			{
				return ::testing::AssertionFailure() << "transaction left open by " << Call.Lua;
			}
			const int32 NewSteps = UndoableSteps() - StepsBefore;
			if (NewSteps != (Call.bRecordsStep ? 1 : 0))
			{
				return ::testing::AssertionFailure() << NewSteps << " new steps after " << Call.Lua;
			}
			if (NewSteps == 1 && ToUTF8(GEditor->Trans->GetUndoTitles().Last().ToString()) != Call.Title)
			{
				return ::testing::AssertionFailure() << "step titled " << ToUTF8(GEditor->Trans->GetUndoTitles().Last().ToString()) << " after " << Call.Lua;
			}
			return ::testing::AssertionSuccess();
		}

		void CheckRoundTrips(uint64 Seed, int Calls)
		{
			FRandom R{Seed};
			FDigest Before = Digest();
			for (int Index = 0; Index < Calls; ++Index)
			{
				if (Index > 0 && Index % CallsPerSession == 0)
				{
					StartSession();
					Before = Digest();
				}
				const FCall Call = MakeRandomCall(R, false);
				SCOPED_TRACE(Call.Lua);
				ASSERT_TRUE(RunCall(Call));
				FDigest After = Digest();
				if (!Call.bRecordsStep)
				{
					++CallsWithoutStep;
					if (!Call.bChangesWithoutStep)
					{
						ASSERT_TRUE(DigestsMatch(Before, After)) << "a call without a step changed the state";
					}
					Before = std::move(After);
					continue;
				}
				ASSERT_TRUE(GEditor->UndoTransaction());
				ASSERT_TRUE(DigestsMatch(Before, Digest())) << "undo";
				ASSERT_TRUE(GEditor->RedoTransaction());
				FDigest Redone = Digest();
				ASSERT_TRUE(DigestsMatch(After, Redone, Call.StaleTypes)) << "redo";
				if (!Call.StaleTypes.empty())
				{
					ASSERT_TRUE(GEditor->UndoTransaction());
					// The first redo refreshed the patches outside the step (an active mode beyond
					// the new modes was pulled back), so only the rest is back as before.
					ASSERT_TRUE(DigestsMatch(Before, Digest(), Call.StaleTypes)) << "second undo";
					ASSERT_TRUE(GEditor->RedoTransaction());
					ASSERT_TRUE(DigestsMatch(Redone, Digest())) << "second redo";
					++StaleRoundTrips;
				}
				++RoundTrips;
				CreatingComponentAdds += Call.bCreatesComponent ? 1 : 0;
				Before = std::move(Redone);
			}
		}

		// Lets every fixture type tell its patches about its current modes, as the editor does when
		// a type is edited in its panel: patches left behind by a type's configure catch up.
		static void RefreshAllFixtureTypes()
		{
			std::vector<UDMXEntityFixtureType*> FixtureTypes;
			FHeadlessObjectRegistry::Get().ForEachObject([&FixtureTypes](UObject* Object)
			{
				if (UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Object); FixtureType != nullptr && !FixtureType->IsGarbage())
				{
					FixtureTypes.push_back(FixtureType);
				}
			});
			for (UDMXEntityFixtureType* FixtureType : FixtureTypes)
			{
				FixtureType->PostEditUndo();
			}
		}

		// Runs a few calls, then undoes them all back to the start and redoes them all to the end,
		// checking every state on the way. Each sequence starts from refreshed patches: within a
		// sequence the types whose modes were replaced under their patches are compared loosely,
		// and the next sequence must not inherit patches that are behind their type.
		void CheckSequences(uint64 Seed, int Count)
		{
			FRandom R{Seed};
			bool bPreviousLeftStalePatches = false;
			for (int Sequence = 0; Sequence < Count; ++Sequence)
			{
				if (Sequence > 0 && Sequence % SequencesPerSession == 0)
				{
					StartSession();
					bPreviousLeftStalePatches = false;
				}
				const FDigest Unrefreshed = Digest();
				RefreshAllFixtureTypes();
				std::vector<FDigest> States{Digest()};
				if (!bPreviousLeftStalePatches)
				{
					ASSERT_TRUE(DigestsMatch(Unrefreshed, States[0])) << "patches behind their type without a reason";
				}

				const int Calls = 2 + R.Below(11);
				std::vector<std::string> Script;
				std::set<std::string> StaleTypes;
				for (int Index = 0; Index < Calls; ++Index)
				{
					const FCall Call = MakeRandomCall(R, true);
					Script.push_back(Call.Lua);
					ASSERT_TRUE(RunCall(Call)) << Sequence;
					StaleTypes.insert(Call.StaleTypes.begin(), Call.StaleTypes.end());
					States.push_back(Digest());
				}
				std::string Listing;
				for (const std::string& Line : Script)
				{
					Listing += Line + "\n";
				}
				SCOPED_TRACE(Listing);
				for (int Index = Calls; Index > 0; --Index)
				{
					ASSERT_TRUE(GEditor->UndoTransaction());
					ASSERT_TRUE(DigestsMatch(States[static_cast<size_t>(Index - 1)], Digest(), StaleTypes)) << "undo back to state " << Index - 1;
					++RoundTrips;
				}
				for (int Index = 1; Index <= Calls; ++Index)
				{
					ASSERT_TRUE(GEditor->RedoTransaction());
					ASSERT_TRUE(DigestsMatch(States[static_cast<size_t>(Index)], Digest(), StaleTypes)) << "redo to state " << Index;
					++RoundTrips;
				}
				ASSERT_EQ(GEditor->Trans->GetActiveCount(), 0);
				bPreviousLeftStalePatches = !StaleTypes.empty();
				StaleSequences += bPreviousLeftStalePatches ? 1 : 0;
				++Sequences;
			}
		}

		static constexpr int CallsPerSession = 100;
		static constexpr int SequencesPerSession = 25;

		std::unique_ptr<FKestDMXSession> Session;
		int RoundTrips = 0;
		int StaleRoundTrips = 0;
		int CallsWithoutStep = 0;
		int Sequences = 0;
		int StaleSequences = 0;
		int CreatingComponentAdds = 0;
	};
}

TEST_F(FUndoPropertyTest, EveryCallUndoesAndRedoesExactly)
{
	CheckRoundTrips(0x5EED0001, 1000);
}

TEST_F(FUndoPropertyTest, EveryCallUndoesAndRedoesExactlyFromAnotherSeed)
{
	CheckRoundTrips(0x5EED0002, 1000);
}

TEST_F(FUndoPropertyTest, SequencesUndoToTheStartAndRedoToTheEnd)
{
	CheckSequences(0x5EED0003, 75);
}

TEST_F(FUndoPropertyTest, TheDigestSeesWhatUndoMustRestore)
{
	// The digest itself must notice the changes the round trips rely on it to notice.
	const FDigest Empty = Digest();
	std::string Error;
	ASSERT_TRUE(Session->RunScript(R"(
		local h = dmx_library("/Game/DMX/Stage")
		assert(h:add("fixture_type", {name = "Spot", modes = {{functions = {{attribute = "Dimmer"}}}}}))
		assert(h:add("fixture_patch", {name = "P", fixture_type = "Spot"}))
		assert(dmx_component("Truss"):add({library = "/Game/DMX/Stage", fixture_patch = "P"}))
	)", "digest", Error)) << Error;
	const FDigest Full = Digest();
	EXPECT_FALSE(DigestsMatch(Empty, Full));

	UDMXLibrary* Library = LoadDMXLibrary(FString(TEXT("/Game/DMX/Stage")));
	UDMXEntityFixturePatch* Patch = FindFixturePatchByName(Library, FString(TEXT("P")));
	ASSERT_NE(Patch, nullptr);
	const FString ObjectName = Patch->GetName();
	Patch->Rename(TEXT("Renamed"));
	EXPECT_FALSE(DigestsMatch(Full, Digest())) << "object names";
	Patch->Rename(*ObjectName);
	ASSERT_TRUE(DigestsMatch(Full, Digest()));

	// A fixture type changed behind its patches' back: the type's line shows it at once, the
	// patch's cache-derived line only once the cache is rebuilt, and that line alone carries the tag.
	UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
	FixtureType->Modes[0].Functions[0].Attribute = FDMXAttributeName(FName(TEXT("Pan")));
	const FDigest Stale = Digest();
	EXPECT_FALSE(DigestsMatch(Full, Stale)) << "fixture type";
	Patch->RebuildCache();
	EXPECT_FALSE(DigestsMatch(Stale, Digest())) << "cache-derived values";
	EXPECT_TRUE(DigestsMatch(Stale, Digest(), {GuidText(FixtureType->GetID())}));

	UDMXComponent* Component = FindDMXComponentByName(FindEditorActorByNameOrLabel(FString(TEXT("Truss"))), FString());
	ASSERT_NE(Component, nullptr);
	const FDigest WithComponent = Digest();
	Component->SetReceiveDMXFromPatch(false);
	EXPECT_FALSE(DigestsMatch(WithComponent, Digest())) << "receive state";
	Component->SetReceiveDMXFromPatch(true);
	Component->SetFixturePatch(nullptr);
	EXPECT_FALSE(DigestsMatch(WithComponent, Digest())) << "patch reference";
}

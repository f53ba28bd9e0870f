// What dmx_library and its methods did with a script's arguments: libraries and entities that were
// not found, names the engine made unique, defaults and channels the engine replaced, and where a
// patch ended up when its place was not taken as written.
#include "KestDMXCheckCall.h"
#include "KestDMXCheckLookup.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/VorlithLua.h"

struct FKestLibraryCallState
{
	// Every entity of the library before the call, sorted.
	std::vector<std::array<uint32, 4>> EntityIds;
	// The entity configure or remove found by its name; zero when none.
	FGuid Target;
	// The patches that used the fixture type configure or remove found.
	std::vector<std::string> PatchesOfType;
};

namespace
{
	const char* const PositionKeys[] = {"universe", "starting_channel", "active_mode_index"};

	std::array<uint32, 4> GetIdKey(const FGuid& Id)
	{
		return {Id.A, Id.B, Id.C, Id.D};
	}

	std::string ReadResultText(const FKestCallResults& Results, const char* Key)
	{
		if (Results.Count < 1 || lua_type(Results.L, Results.First) != LUA_TTABLE)
		{
			return std::string();
		}
		lua_pushstring(Results.L, Key);
		lua_rawget(Results.L, Results.First);
		size_t Length = 0;
		const char* Text = lua_type(Results.L, -1) == LUA_TSTRING ? lua_tolstring(Results.L, -1, &Length) : nullptr;
		std::string Value = Text != nullptr ? std::string(Text, Length) : std::string();
		lua_pop(Results.L, 1);
		return Value;
	}

	bool HasTableResult(const FKestCallResults& Results)
	{
		return Results.Count >= 1 && lua_type(Results.L, Results.First) == LUA_TTABLE;
	}

	bool GetBooleanResult(const FKestCallResults& Results)
	{
		return Results.Count >= 1 && lua_toboolean(Results.L, Results.First) != 0;
	}

	std::string DidYouMean(const std::string& Text, const std::vector<std::string>& Candidates)
	{
		const std::string Suggestion = SuggestClosest(Text, Candidates);
		return Suggestion.empty() ? std::string() : "; did you mean " + QuoteText(Suggestion) + "?";
	}

	std::string GetKind(const std::vector<FKestAsked>& Arguments)
	{
		return Arguments.empty() ? std::string() : ToLowerASCII(Arguments[0].GetString().value_or(std::string()));
	}

	std::string GetName(const std::vector<FKestAsked>& Arguments)
	{
		return Arguments.size() < 2 ? std::string() : Arguments[1].GetString().value_or(std::string());
	}

	const char* DescribeFailure(const std::string& Method)
	{
		if (Method == "add")
		{
			return "nil";
		}
		return Method == "info" ? "a table with valid false" : "false";
	}

	// The new entity of the class among those the library did not hold before the call, preferring
	// the one with the name the call answered.
	template <typename EntityType>
	EntityType* FindNewEntity(UDMXLibrary* Library, const FKestLibraryCallState* Before, const std::string& Name)
	{
		const FString EngineName = ToEngine(Name);
		EntityType* Found = nullptr;
		for (EntityType* Entity : Library->GetEntitiesTypeCast<EntityType>())
		{
			if (Entity == nullptr)
			{
				continue;
			}
			const bool bNew = Before == nullptr || !std::binary_search(Before->EntityIds.begin(), Before->EntityIds.end(), GetIdKey(Entity->GetID()));
			if (bNew && Entity->Name.Equals(EngineName, ESearchCase::CaseSensitive))
			{
				Found = Entity;
			}
		}
		return Found != nullptr ? Found : FindEntityNamed<EntityType>(Library, EngineName);
	}

	void ReportRenamed(FKestCheckCall& Call, const FKestAsked& Asked, const FString& Actual, const char* What, const char* Where)
	{
		const std::optional<std::string> Wanted = Asked.GetString();
		if (!Wanted || ToEngine(*Wanted).Equals(Actual, ESearchCase::CaseSensitive))
		{
			return;
		}
		Call.Report("renamed", Asked.Path, Asked.Path + ": " + Where + " already has " + What + " named " + QuoteText(*Wanted) + ", so the engine named this one "
			+ QuoteText(ToUTF8(Actual)), Asked.Given, ToUTF8(Actual));
	}

	void ReportChannelMoved(FKestCheckCall& Call, const FKestAsked& Asked, int32 Actual, const char* Why)
	{
		const std::optional<double> Wanted = Asked.GetNumber();
		if (!Wanted || static_cast<int32>(*Wanted) == Actual)
		{
			return;
		}
		Call.Report("channel-moved", Asked.Path, Asked.Path + ": asked for channel " + FormatCheckNumber(Asked.Given.get<double>()) + ", but " + Why
			+ ", so the engine put it at channel " + std::to_string(Actual), Asked.Given, Actual);
	}

	// The physical default is applied before the range, as a place within the new function's range
	// 0..1 (a range given as well keeps that place, not the value), so a value outside 0..1 cannot
	// have been meant as a place: it was clamped.
	void CheckPhysicalDefault(FKestCheckCall& Call, const FKestAsked& Asked, const FDMXFixtureFunction& Function)
	{
		const FKestAsked& Value = Asked["physical_default_value"];
		const std::optional<double> Wanted = Value.GetNumber();
		if (!Wanted || std::isnan(*Wanted) || (*Wanted >= 0.0 && *Wanted <= 1.0))
		{
			return;
		}
		const double From = Function.GetPhysicalFrom();
		const double To = Function.GetPhysicalTo();
		const double Actual = Function.GetPhysicalDefaultValue();
		std::string Message = Value.Path + ": " + FormatCheckNumber(*Wanted) + " is applied before the physical range, as a place within 0..1, so it was clamped to "
			+ (*Wanted < 0.0 ? "0" : "1");
		if (Asked["physical_from"].bCounts || Asked["physical_to"].bCounts)
		{
			Message += " and the range " + FormatCheckNumber(From) + ".." + FormatCheckNumber(To) + " made the physical default " + FormatCheckNumber(Actual);
			const double Place = To != From ? (*Wanted - From) / (To - From) : -1.0;
			if (Place >= 0.0 && Place <= 1.0)
			{
				Message += "; for " + FormatCheckNumber(*Wanted) + " give its place " + FormatCheckNumber(Place);
			}
		}
		Call.Report("physical-default", Value.Path, Message, Value.Given, Actual);
	}

	void CheckFunction(FKestCheckCall& Call, const FKestAsked& Asked, const FDMXFixtureFunction& Function)
	{
		ReportRenamed(Call, Asked["name"], Function.FunctionName, "a function", "the mode");
		ReportChannelMoved(Call, Asked["channel"], Function.Channel, "the functions of a mode follow one another");
		CheckPhysicalDefault(Call, Asked, Function);
		const FKestAsked& DefaultValue = Asked["default_value"];
		const std::optional<double> Wanted = DefaultValue.GetNumber();
		if (Wanted && static_cast<int64>(*Wanted) != Function.DefaultValue)
		{
			std::string From;
			for (const char* Key : {"physical_default_value", "physical_from", "physical_to"})
			{
				if (Asked[Key].bCounts)
				{
					From += (From.empty() ? "" : ", ") + std::string(Key);
				}
			}
			Call.Report("default-replaced", DefaultValue.Path, DefaultValue.Path + ": " + std::to_string(static_cast<int64>(*Wanted)) + " was replaced by "
				+ std::to_string(Function.DefaultValue) + ", which the engine computes from the physical default " + FormatCheckNumber(Function.GetPhysicalDefaultValue())
				+ " in the physical range " + FormatCheckNumber(Function.GetPhysicalFrom()) + ".." + FormatCheckNumber(Function.GetPhysicalTo())
				+ (From.empty() ? std::string() : " (given: " + From + ")") + "; give either default_value or the physical keys",
				DefaultValue.Given, static_cast<long long>(Function.DefaultValue));
		}
	}

	void CheckModes(FKestCheckCall& Call, const FKestAsked& AskedModes, const UDMXEntityFixtureType* FixtureType)
	{
		for (size_t ModeIndex = 0; ModeIndex < AskedModes.Entries.size() && static_cast<int32>(ModeIndex) < FixtureType->Modes.Num(); ++ModeIndex)
		{
			const FKestAsked& AskedMode = AskedModes.Entries[ModeIndex];
			const FDMXFixtureMode& Mode = FixtureType->Modes[static_cast<int32>(ModeIndex)];
			ReportRenamed(Call, AskedMode["name"], Mode.ModeName, "a mode", "the fixture type");
			const FKestAsked& AskedFunctions = AskedMode["functions"];
			for (size_t FunctionIndex = 0; FunctionIndex < AskedFunctions.Entries.size() && static_cast<int32>(FunctionIndex) < Mode.Functions.Num(); ++FunctionIndex)
			{
				CheckFunction(Call, AskedFunctions.Entries[FunctionIndex], Mode.Functions[static_cast<int32>(FunctionIndex)]);
			}
			const FKestAsked& AskedMatrix = AskedMode["matrix"];
			if (Mode.bFixtureMatrixEnabled)
			{
				ReportChannelMoved(Call, AskedMatrix["first_cell_channel"], Mode.FixtureMatrixConfig.FirstCellChannel, "the matrix and the functions of a mode follow one another");
			}
		}
	}

	// Where the patch is, when any of the keys that place it was not taken as written.
	void ReportPatchPlace(FKestCheckCall& Call, const UDMXEntityFixturePatch* Patch)
	{
		const auto IsPositionKey = [](const std::string& Key)
		{
			return std::find(std::begin(PositionKeys), std::end(PositionKeys), Key) != std::end(PositionKeys);
		};
		const bool bMisplaced = Call.HasFinding([&IsPositionKey](const FKestCheckFinding& Finding) { return IsPositionKey(Finding.Key); })
			|| std::any_of(Call.SuggestedKeys.begin(), Call.SuggestedKeys.end(), IsPositionKey);
		if (!bMisplaced)
		{
			return;
		}
		nlohmann::json Place;
		Place["universe"] = Patch->GetUniverseID();
		Place["starting_channel"] = Patch->GetStartingChannel();
		Place["ending_channel"] = Patch->GetEndingChannel();
		Place["active_mode_index"] = Patch->GetActiveModeIndex();
		Call.Report("patch-position", "", "fixture patch " + QuoteText(ToUTF8(Patch->Name)) + " is in " + DescribePatchPlace(Patch), nullptr, Place);
	}

	void CheckActiveMode(FKestCheckCall& Call, const FKestAsked& Asked, const UDMXEntityFixturePatch* Patch)
	{
		const std::optional<double> Wanted = Asked.GetNumber();
		if (!Wanted || static_cast<int32>(*Wanted) == Patch->GetActiveModeIndex())
		{
			return;
		}
		const UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
		const int32 ModeCount = FixtureType != nullptr ? FixtureType->Modes.Num() : 0;
		Call.Report("ignored", Asked.Path, Asked.Path + ": " + (FixtureType != nullptr ? "fixture type " + QuoteText(ToUTF8(FixtureType->Name)) : std::string("the patch's fixture type"))
			+ " has no mode " + std::to_string(static_cast<int32>(*Wanted)) + " (it has " + std::to_string(ModeCount) + ", counted from 0), so the patch uses mode "
			+ std::to_string(Patch->GetActiveModeIndex()), Asked.Given, Patch->GetActiveModeIndex());
	}

	void RememberPatch(FKestCheckCall& Call, const std::string& PatchKey)
	{
		FKestCheckSite Site = Call.Site;
		Site.Order = ++Call.Log.SiteCount;
		Call.Log.PatchSites[PatchKey] = Site;
	}

	void CheckAddedFixtureType(FKestCheckCall& Call, UDMXLibrary* Library, const FKestAsked& Params, const FKestLibraryCallState* Before, const FKestCallResults& Results)
	{
		if (!HasTableResult(Results))
		{
			Call.Report("not-created", "", "the engine made no fixture type, so add answered nil");
			return;
		}
		const UDMXEntityFixtureType* FixtureType = FindNewEntity<UDMXEntityFixtureType>(Library, Before, ReadResultText(Results, "name"));
		if (FixtureType == nullptr)
		{
			return;
		}
		ReportRenamed(Call, Params["name"], FixtureType->Name, "a fixture type", "the library");
		CheckModes(Call, Params["modes"], FixtureType);
	}

	void CheckAddedFixturePatch(FKestCheckCall& Call, UDMXLibrary* Library, const FKestAsked& Params, const FKestLibraryCallState* Before, const FKestCallResults& Results)
	{
		const FKestAsked& TypeName = Params["fixture_type"];
		if (!HasTableResult(Results))
		{
			const std::string Name = TypeName.GetString().value_or(std::string());
			if (FindEntityNamed<UDMXEntityFixtureType>(Library, ToEngine(Name)) != nullptr)
			{
				Call.Report("not-created", "", "the engine made no fixture patch, so add answered nil");
			}
			else if (TypeName.bCounts)
			{
				Call.Report("not-found", TypeName.Path, "fixture_type: " + ToUTF8(Library->GetPathName()) + " has no fixture type named " + QuoteText(Name)
					+ ", so add answered nil and made no patch" + DidYouMean(Name, GetEntityNames<UDMXEntityFixtureType>(Library)), TypeName.Given, nullptr);
			}
			else if (!TypeName.bUncertain)
			{
				Call.Report("not-found", "fixture_type", "fixture_type: no fixture type is named (a string naming one of the library's), so add answered nil and made no patch");
			}
			return;
		}
		const UDMXEntityFixturePatch* Patch = FindNewEntity<UDMXEntityFixturePatch>(Library, Before, ReadResultText(Results, "name"));
		if (Patch == nullptr)
		{
			return;
		}
		ReportRenamed(Call, Params["name"], Patch->Name, "a fixture patch", "the library");
		CheckActiveMode(Call, Params["active_mode_index"], Patch);
		ReportPatchPlace(Call, Patch);
		RememberPatch(Call, GetEntityKey(Patch));
	}

	void ReportNotFound(FKestCheckCall& Call, UDMXLibrary* Library, const std::string& Kind, const std::string& Name, const std::string& Method)
	{
		const bool bType = Kind == "fixture_type";
		const std::vector<std::string> Names = bType ? GetEntityNames<UDMXEntityFixtureType>(Library) : GetEntityNames<UDMXEntityFixturePatch>(Library);
		Call.Report("not-found", "name", ToUTF8(Library->GetPathName()) + " has no " + (bType ? "fixture type" : "fixture patch") + " named " + QuoteText(Name)
			+ ", so " + Method + " answered false and changed nothing" + DidYouMean(Name, Names), MakeJsonText(Name), nullptr);
	}

	void ReportDuplicateName(FKestCheckCall& Call, const FKestAsked& Asked, int32 Count, const char* What)
	{
		if (Asked.bCounts && Count > 1)
		{
			const std::string Others = Count == 2 ? std::string("another ") + What + " of the library is" : std::to_string(Count - 1) + " other " + What + "s of the library are";
			Call.Report("duplicate-name", Asked.Path, Asked.Path + ": " + Others + " also named " + QuoteText(Asked.GetString().value_or(std::string()))
				+ " (letter case aside); look-ups by name find the first in the library", Asked.Given);
		}
	}

	void CheckConfiguredFixtureType(FKestCheckCall& Call, UDMXLibrary* Library, const FKestAsked& Params, const FKestLibraryCallState& Before)
	{
		const UDMXEntityFixtureType* FixtureType = FindEntityWithId<UDMXEntityFixtureType>(Library, Before.Target);
		if (FixtureType == nullptr)
		{
			return;
		}
		if (Params["name"].bCounts)
		{
			ReportDuplicateName(Call, Params["name"], CountEntitiesNamed<UDMXEntityFixtureType>(Library, FixtureType->Name), "fixture type");
		}
		CheckModes(Call, Params["modes"], FixtureType);
		for (const std::string& PatchKey : Before.PatchesOfType)
		{
			RememberPatch(Call, PatchKey);
		}
	}

	void CheckConfiguredFixturePatch(FKestCheckCall& Call, UDMXLibrary* Library, const FKestAsked& Params, const FKestLibraryCallState& Before)
	{
		const UDMXEntityFixturePatch* Patch = FindEntityWithId<UDMXEntityFixturePatch>(Library, Before.Target);
		if (Patch == nullptr)
		{
			return;
		}
		if (Params["name"].bCounts)
		{
			ReportDuplicateName(Call, Params["name"], CountEntitiesNamed<UDMXEntityFixturePatch>(Library, Patch->Name), "fixture patch");
		}
		const FKestAsked& TypeName = Params["fixture_type"];
		if (const std::optional<std::string> Name = TypeName.GetString())
		{
			if (FindEntityNamed<UDMXEntityFixtureType>(Library, ToEngine(*Name)) == nullptr)
			{
				const UDMXEntityFixtureType* Kept = Patch->GetFixtureType();
				Call.Report("not-found", TypeName.Path, "fixture_type: " + ToUTF8(Library->GetPathName()) + " has no fixture type named " + QuoteText(*Name)
					+ ", so the key was skipped and the patch keeps " + (Kept != nullptr ? "fixture type " + QuoteText(ToUTF8(Kept->Name)) : std::string("no fixture type"))
					+ DidYouMean(*Name, GetEntityNames<UDMXEntityFixtureType>(Library)), TypeName.Given, nullptr);
			}
		}
		CheckActiveMode(Call, Params["active_mode_index"], Patch);
		ReportPatchPlace(Call, Patch);
		RememberPatch(Call, GetEntityKey(Patch));
	}
}

void CheckLibraryOpened(FKestCheckCall& Call, const FKestAsked& Path, FKestCheckHandle& Handle)
{
	if (Handle.bValid)
	{
		Handle.Library = FindLoadedLibrary(Handle.Argument);
		return;
	}
	if (Path.LuaType != LUA_TSTRING)
	{
		return;
	}
	const std::string Text = Handle.Argument;
	std::string Message = Text.empty() ? std::string("an empty path names no DMX Library")
		: "no DMX Library at " + QuoteText(Text) + " (the object path " + QuoteText(MakeCheckedObjectPath(Text)) + ")";
	Message += ", so the handle is not valid: add answers nil, configure and remove false" + DidYouMean(Text, GetLoadedLibraryPaths());
	Call.Report("not-found", "path", Message, Path.Given, nullptr);
}

std::shared_ptr<FKestLibraryCallState> PrepareLibraryMethodCheck(FKestCheckCall& Call, const FKestCheckHandle& Handle, const std::string& Method,
	const std::vector<FKestAsked>& Arguments)
{
	UDMXLibrary* Library = Handle.Library.Get();
	if (Library == nullptr)
	{
		return nullptr;
	}
	auto State = std::make_shared<FKestLibraryCallState>();
	if (Method == "add")
	{
		for (const UDMXEntity* Entity : Library->GetEntities())
		{
			if (Entity != nullptr)
			{
				State->EntityIds.push_back(GetIdKey(Entity->GetID()));
			}
		}
		std::sort(State->EntityIds.begin(), State->EntityIds.end());
		return State;
	}
	if (Method != "configure" && Method != "remove")
	{
		return State;
	}
	const FString Name = ToEngine(GetName(Arguments));
	const std::string Kind = GetKind(Arguments);
	if (Kind == "fixture_type")
	{
		if (const UDMXEntityFixtureType* FixtureType = FindEntityNamed<UDMXEntityFixtureType>(Library, Name))
		{
			State->Target = FixtureType->GetID();
			for (const UDMXEntityFixturePatch* Patch : Library->GetEntitiesTypeCast<UDMXEntityFixturePatch>())
			{
				if (Patch != nullptr && Patch->GetFixtureType() == FixtureType)
				{
					State->PatchesOfType.push_back(GetEntityKey(Patch));
				}
			}
		}
	}
	else if (Kind == "fixture_patch")
	{
		if (const UDMXEntityFixturePatch* Patch = FindEntityNamed<UDMXEntityFixturePatch>(Library, Name))
		{
			State->Target = Patch->GetID();
		}
	}
	return State;
}

void CheckLibraryMethod(FKestCheckCall& Call, const FKestCheckHandle& Handle, const std::string& Method, const std::vector<FKestAsked>& Arguments,
	const FKestLibraryCallState* Before, const FKestCallResults& Results)
{
	if (!Handle.bValid)
	{
		Call.Report("invalid-handle", "", "dmx_library(" + QuoteText(Handle.Argument) + ") found no DMX Library, so " + Method + " answered " + DescribeFailure(Method));
		return;
	}
	UDMXLibrary* Library = Handle.Library.Get();
	if (Library == nullptr || Method == "info" || Arguments.empty() || Arguments[0].LuaType != LUA_TSTRING)
	{
		return;
	}
	const std::string Kind = GetKind(Arguments);
	if (Kind != "fixture_type" && Kind != "fixture_patch")
	{
		const std::string Given = Arguments[0].GetString().value_or(std::string());
		Call.Report("unknown-kind", "kind", "kind: " + QuoteText(Given) + " is neither \"fixture_type\" nor \"fixture_patch\", so " + Method + " answered "
			+ DescribeFailure(Method) + DidYouMean(Given, {"fixture_type", "fixture_patch"}), Arguments[0].Given, nullptr);
		return;
	}
	const FKestAsked NoParams;
	if (Method == "add")
	{
		const FKestAsked& Params = Arguments.size() > 1 ? Arguments[1] : NoParams;
		if (Kind == "fixture_type")
		{
			CheckAddedFixtureType(Call, Library, Params, Before, Results);
		}
		else
		{
			CheckAddedFixturePatch(Call, Library, Params, Before, Results);
		}
		return;
	}
	const std::string Name = GetName(Arguments);
	if (!GetBooleanResult(Results))
	{
		ReportNotFound(Call, Library, Kind, Name, Method);
		return;
	}
	if (Before == nullptr)
	{
		return;
	}
	if (Method == "remove")
	{
		for (const std::string& PatchKey : Before->PatchesOfType)
		{
			RememberPatch(Call, PatchKey);
		}
		return;
	}
	const FKestAsked& Params = Arguments.size() > 2 ? Arguments[2] : NoParams;
	if (Kind == "fixture_type")
	{
		CheckConfiguredFixtureType(Call, Library, Params, *Before);
	}
	else
	{
		CheckConfiguredFixturePatch(Call, Library, Params, *Before);
	}
}

#include "library/DMXLibraryAdd.h"

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXEntityReference.h"
#include "Library/DMXLibrary.h"
#include "ScopedTransaction.h"
#include "library/DMXFixtureModeParams.h"
#include "library/DMXFixturePatchParams.h"
#include "library/DMXLibraryLookup.h"
#include "module/DMXEngineTransactions.h"
#include "module/DMXLuaParams.h"

namespace
{
	sol::object AddFixtureType(UDMXLibrary* Library, sol::table& Params, sol::this_state S)
	{
		FDMXEntityFixtureTypeConstructionParams ConstructionParams;
		ConstructionParams.ParentDMXLibrary = Library;
		ConstructionParams.DMXCategory = FDMXFixtureCategory(FName(*GetStringParam(Params, "category", TEXT(""))));

		const FString DesiredName = GetStringParam(Params, "name", TEXT("FixtureType"));
		UDMXEntityFixtureType* FixtureType = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(ConstructionParams, DesiredName, true);
		if (FixtureType == nullptr)
		{
			return sol::object();
		}
		FixtureType->Modify(true);

		if (FixtureType->Modes.Num() == 0)
		{
			FixtureType->AddMode(TEXT("Mode"));
		}
		const sol::object ModeList = GetNestedParam(Params, "modes");
		if (ModeList.valid())
		{
			ReplaceFixtureModes(FixtureType, ModeList);
		}

		Library->MarkPackageDirty();

		sol::state_view Lua(S);
		sol::table Result = Lua.create_table();
		Result.set("name", ConvertEngineText(FixtureType->Name));
		Result.set("mode_count", FixtureType->Modes.Num());
		return Result;
	}

	sol::object AddFixturePatch(UDMXLibrary* Library, sol::table& Params, sol::this_state S)
	{
		UDMXEntityFixtureType* FixtureType = FindFixtureTypeByName(Library, GetStringParam(Params, "fixture_type", TEXT("")));
		if (FixtureType == nullptr)
		{
			return sol::object();
		}

		FDMXEntityFixturePatchConstructionParams ConstructionParams;
		ConstructionParams.FixtureTypeRef = FDMXEntityFixtureTypeRef(FixtureType);
		ConstructionParams.ActiveMode = GetIntParam(Params, "active_mode_index", 0, 0, INT32_MAX);
		ConstructionParams.UniverseID = GetIntParam(Params, "universe", 1, 0, INT32_MAX);
		ConstructionParams.StartingAddress = GetIntParam(Params, "starting_channel", 1, 1, 512);

		const FString DesiredName = GetStringParam(Params, "name", TEXT("FixturePatch"));
		UDMXEntityFixturePatch* FixturePatch = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(ConstructionParams, DesiredName, true);
		if (FixturePatch == nullptr)
		{
			return sol::object();
		}
		FixturePatch->Modify(true);

		ApplyFixturePatchTagsReceiveAndColor(FixturePatch, Params);

		FixturePatch->RebuildCache();
		Library->MarkPackageDirty();

		sol::state_view Lua(S);
		sol::table Result = Lua.create_table();
		Result.set("name", ConvertEngineText(FixturePatch->Name));
		Result.set("channel_span", FixturePatch->GetChannelSpan());
		Result.set("ending_channel", FixturePatch->GetEndingChannel());
		return Result;
	}
}

sol::object AddDMXLibraryEntity(UDMXLibrary* Library, const std::string& Kind, sol::table Params, sol::this_state S)
{
	if (Library == nullptr)
	{
		return sol::object();
	}
	const FString KindText = ConvertLuaText(Kind);

	const FScopedTransaction Transaction(GetDMXEngineTransactionTitle(EDMXEngineTransaction::AddDMXEntity));
	Library->Modify(true);

	if (KindText.Equals(TEXT("fixture_type"), ESearchCase::IgnoreCase))
	{
		return AddFixtureType(Library, Params, S);
	}
	if (KindText.Equals(TEXT("fixture_patch"), ESearchCase::IgnoreCase))
	{
		return AddFixturePatch(Library, Params, S);
	}
	return sol::object();
}

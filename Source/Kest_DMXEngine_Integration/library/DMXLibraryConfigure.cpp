#include "library/DMXLibraryConfigure.h"

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "ScopedTransaction.h"
#include "library/DMXFixtureModeParams.h"
#include "library/DMXFixturePatchParams.h"
#include "library/DMXLibraryLookup.h"
#include "module/DMXEngineTransactions.h"
#include "module/DMXLuaParams.h"

namespace
{
	bool IsParamOfType(sol::table& Params, const char* Key, int LuaType)
	{
		return GetParamType(Params, Key) == LuaType;
	}

	bool ConfigureFixtureType(UDMXLibrary* Library, const FString& Name, sol::table& Params)
	{
		UDMXEntityFixtureType* FixtureType = FindFixtureTypeByName(Library, Name);
		if (FixtureType == nullptr)
		{
			return false;
		}
		FixtureType->Modify(true);

		if (IsParamOfType(Params, "name", LUA_TSTRING))
		{
			FixtureType->SetName(GetStringParam(Params, "name", TEXT("")));
		}
		if (IsParamOfType(Params, "category", LUA_TSTRING))
		{
			FixtureType->DMXCategory = FDMXFixtureCategory(FName(*GetStringParam(Params, "category", TEXT(""))));
		}
		const sol::object ModeList = GetNestedParam(Params, "modes");
		if (ModeList.valid())
		{
			ReplaceFixtureModes(FixtureType, ModeList);
		}

		Library->MarkPackageDirty();
		return true;
	}

	bool ConfigureFixturePatch(UDMXLibrary* Library, const FString& Name, sol::table& Params)
	{
		UDMXEntityFixturePatch* FixturePatch = FindFixturePatchByName(Library, Name);
		if (FixturePatch == nullptr)
		{
			return false;
		}
		FixturePatch->Modify(true);

		if (IsParamOfType(Params, "name", LUA_TSTRING))
		{
			FixturePatch->SetName(GetStringParam(Params, "name", TEXT("")));
		}
		// The fixture type goes first, so that an active mode given in the same call is one of the
		// new type's modes. A name that matches no fixture type is ignored.
		if (IsParamOfType(Params, "fixture_type", LUA_TSTRING))
		{
			if (UDMXEntityFixtureType* FixtureType = FindFixtureTypeByName(Library, GetStringParam(Params, "fixture_type", TEXT(""))))
			{
				FixturePatch->SetFixtureType(FixtureType);
			}
		}
		if (IsParamOfType(Params, "universe", LUA_TNUMBER))
		{
			const int32 Current = FixturePatch->GetUniverseID();
			FixturePatch->SetUniverseID(GetIntParam(Params, "universe", Current, 0, INT32_MAX));
		}
		if (IsParamOfType(Params, "starting_channel", LUA_TNUMBER))
		{
			const int32 Current = FixturePatch->GetStartingChannel();
			FixturePatch->SetStartingChannel(GetIntParam(Params, "starting_channel", Current, 1, 512));
		}
		if (IsParamOfType(Params, "active_mode_index", LUA_TNUMBER))
		{
			// The engine refuses an index the fixture type has no mode for; the patch keeps its mode then.
			const int32 Current = FixturePatch->GetActiveModeIndex();
			FixturePatch->SetActiveModeIndex(GetIntParam(Params, "active_mode_index", Current, 0, INT32_MAX));
		}
		ApplyFixturePatchTagsReceiveAndColor(FixturePatch, Params);

		FixturePatch->RebuildCache();
		Library->MarkPackageDirty();
		return true;
	}
}

bool ConfigureDMXLibraryEntity(UDMXLibrary* Library, const std::string& Kind, const std::string& Name, sol::table Params)
{
	if (Library == nullptr)
	{
		return false;
	}
	const FString KindText = ConvertLuaText(Kind);
	const FString NameText = ConvertLuaText(Name);

	const FScopedTransaction Transaction(GetDMXEngineTransactionTitle(EDMXEngineTransaction::ConfigureDMXEntity));
	Library->Modify(true);

	if (KindText.Equals(TEXT("fixture_type"), ESearchCase::IgnoreCase))
	{
		return ConfigureFixtureType(Library, NameText, Params);
	}
	if (KindText.Equals(TEXT("fixture_patch"), ESearchCase::IgnoreCase))
	{
		return ConfigureFixturePatch(Library, NameText, Params);
	}
	return false;
}

#include "library/DMXLibraryRemove.h"

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXEntityReference.h"
#include "Library/DMXLibrary.h"
#include "ScopedTransaction.h"
#include "library/DMXLibraryLookup.h"
#include "module/DMXEngineTransactions.h"
#include "module/DMXLuaParams.h"

bool RemoveDMXLibraryEntity(UDMXLibrary* Library, const std::string& Kind, const std::string& Name)
{
	if (Library == nullptr)
	{
		return false;
	}
	const FString KindText = ConvertLuaText(Kind);
	const FString NameText = ConvertLuaText(Name);

	const FScopedTransaction Transaction(GetDMXEngineTransactionTitle(EDMXEngineTransaction::RemoveDMXEntity));
	Library->Modify(true);

	if (KindText.Equals(TEXT("fixture_patch"), ESearchCase::IgnoreCase))
	{
		UDMXEntityFixturePatch* FixturePatch = FindFixturePatchByName(Library, NameText);
		if (FixturePatch == nullptr)
		{
			return false;
		}
		UDMXEntityFixturePatch::RemoveFixturePatchFromLibrary(FDMXEntityFixturePatchRef(FixturePatch));
		Library->MarkPackageDirty();
		return true;
	}
	if (KindText.Equals(TEXT("fixture_type"), ESearchCase::IgnoreCase))
	{
		UDMXEntityFixtureType* FixtureType = FindFixtureTypeByName(Library, NameText);
		if (FixtureType == nullptr)
		{
			return false;
		}
		// Patches of the type stay in the library; the engine clears their fixture type.
		UDMXEntityFixtureType::RemoveFixtureTypeFromLibrary(FDMXEntityFixtureTypeRef(FixtureType));
		Library->MarkPackageDirty();
		return true;
	}
	return false;
}

// The library's entity list and the unique naming of entities, modes and functions.
#include "DMXRuntimeUtils.h"
#include "DMXTestUtils.h"

using namespace DMXRuntimeTests;

using DMXRuntimeLibrary = FDMXTestBase;

TEST(DMXRuntimeUniqueNames, GenerateUniqueNameFromExistingFollowsTheNamingTable)
{
	const struct
	{
		TArray<FString> Existing;
		const TCHAR* Base;
		const TCHAR* Expected;
	} Cases[] = {
		{{}, TEXT("Free"), TEXT("Free")},
		{{TEXT("Mode"), TEXT("Mode_1")}, TEXT("Mode"), TEXT("Mode_2")},
		{{TEXT("Mode 2")}, TEXT("Mode 2"), TEXT("Mode_2")},
		{{TEXT("Dimmer_5"), TEXT("Dimmer_6")}, TEXT("Dimmer_5"), TEXT("Dimmer_7")},
		{{TEXT("Mode0")}, TEXT("Mode0"), TEXT("Mode_1")},
		{{TEXT("123")}, TEXT("123"), TEXT("_123")},
		{{TEXT("spot")}, TEXT("SPOT"), TEXT("SPOT_1")},
		{{TEXT("Par.-3")}, TEXT("Par.-3"), TEXT("Par_3")},
		{{}, TEXT(""), TEXT("Default name_1")},
		{{TEXT("Default name_1")}, TEXT(""), TEXT("Default name_2")},
	};
	for (int32 Index = 0; Index < static_cast<int32>(std::size(Cases)); ++Index)
	{
		TSet<FString> Existing;
		for (const FString& Name : Cases[Index].Existing)
		{
			Existing.Add(Name);
		}
		// Case-sensitive comparison: the spelling of the result matters.
		EXPECT_TRUE(FDMXRuntimeUtils::GenerateUniqueNameFromExisting(Existing, Cases[Index].Base).Equals(Cases[Index].Expected)) << "case " << Index;
	}
}

TEST_F(DMXRuntimeLibrary, EntitiesKeepRegistrationOrderAndEachClassItsOwnNames)
{
	UDMXEntityFixtureType* First = CreateFixtureType(TEXT(""), {MakeFunction(TEXT("Dimmer"), 1)});
	UDMXEntityFixturePatch* Spot = CreatePatch(First, TEXT("Spot"));
	UDMXEntityFixtureType* Second = CreateFixtureType(TEXT("Spot"));
	EXPECT_TRUE(First->Name.Equals(TEXT("DMXEntityFixtureType")));
	EXPECT_TRUE(Second->Name.Equals(TEXT("Spot")));
	EXPECT_TRUE(CreatePatch(First)->Name.Equals(TEXT("DMXEntityFixturePatch")));
	EXPECT_TRUE(CreatePatch(First, TEXT("SPOT"))->Name.Equals(TEXT("SPOT_1")));
	EXPECT_EQ(Library->GetEntities().Num(), 5);
	EXPECT_EQ(Library->GetEntitiesTypeCast<UDMXEntityFixtureType>(), (TArray<UDMXEntityFixtureType*>{First, Second}));

	// A removed entity frees its name.
	UDMXEntityFixturePatch::RemoveFixturePatchFromLibrary(Spot);
	EXPECT_TRUE(FDMXRuntimeUtils::FindUniqueEntityName(Library, UDMXEntityFixturePatch::StaticClass(), TEXT("Spot")).Equals(TEXT("Spot")));
}

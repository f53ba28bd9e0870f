// Unique naming, attribute names, categories and signal format helpers.
#include "DMXAttribute.h"
#include "DMXProtocolTypes.h"
#include "DMXRuntimeUtils.h"
#include "DMXTestUtils.h"

using namespace DMXRuntimeTests;

namespace
{
	struct FUniqueNameCase
	{
		TArray<FString> Existing;
		FString Base;
		FString Expected;
	};

	TSet<FString> MakeSet(const TArray<FString>& Names)
	{
		TSet<FString> Result;
		for (const FString& Name : Names)
		{
			Result.Add(Name);
		}
		return Result;
	}
}

TEST(DMXRuntimeUniqueNames, GenerateUniqueNameFromExistingFollowsTheNamingTable)
{
	const FUniqueNameCase Cases[] = {
		{{}, TEXT("Free"), TEXT("Free")},
		{{TEXT("Mode")}, TEXT("Mode"), TEXT("Mode_1")},
		{{TEXT("Mode"), TEXT("Mode_1")}, TEXT("Mode"), TEXT("Mode_2")},
		{{TEXT("Mode 2")}, TEXT("Mode 2"), TEXT("Mode_2")},
		{{TEXT("Dimmer_5")}, TEXT("Dimmer_5"), TEXT("Dimmer_6")},
		{{TEXT("Dimmer_5"), TEXT("Dimmer_6")}, TEXT("Dimmer_5"), TEXT("Dimmer_7")},
		{{TEXT("Mode0")}, TEXT("Mode0"), TEXT("Mode_1")},
		{{TEXT("123")}, TEXT("123"), TEXT("_123")},
		{{TEXT("Mode")}, TEXT("mode"), TEXT("mode_1")},
		{{TEXT("spot")}, TEXT("SPOT"), TEXT("SPOT_1")},
		{{TEXT("Par.-3")}, TEXT("Par.-3"), TEXT("Par_3")},
		{{}, TEXT(""), TEXT("Default name_1")},
		{{TEXT("Default name_1")}, TEXT(""), TEXT("Default name_2")},
	};
	int32 CaseIndex = 0;
	for (const FUniqueNameCase& Case : Cases)
	{
		const FString Result = FDMXRuntimeUtils::GenerateUniqueNameFromExisting(MakeSet(Case.Existing), Case.Base);
		// Case-sensitive comparison: the spelling of the result matters.
		EXPECT_TRUE(Result.Equals(Case.Expected)) << "case " << CaseIndex;
		++CaseIndex;
	}
}

class DMXRuntimeEntityNames : public FDMXTestBase
{
};

TEST_F(DMXRuntimeEntityNames, FixtureTypesAndPatchesHaveSeparateNamespaces)
{
	UDMXEntityFixtureType* First = CreateFixtureType(TEXT(""), {MakeFunction(TEXT("Dimmer"), 1)});
	UDMXEntityFixtureType* Second = CreateFixtureType(TEXT(""));
	ASSERT_TRUE(First && Second);
	EXPECT_TRUE(First->Name.Equals(TEXT("DMXEntityFixtureType")));
	EXPECT_TRUE(Second->Name.Equals(TEXT("DMXEntityFixtureType_1")));

	UDMXEntityFixtureType* Spot = CreateFixtureType(TEXT("Spot"));
	UDMXEntityFixturePatch* SpotPatch = CreatePatch(First, TEXT("Spot"));
	UDMXEntityFixturePatch* DefaultPatch = CreatePatch(First);
	ASSERT_TRUE(Spot && SpotPatch && DefaultPatch);
	EXPECT_TRUE(SpotPatch->Name.Equals(TEXT("Spot")));
	EXPECT_TRUE(DefaultPatch->Name.Equals(TEXT("DMXEntityFixturePatch")));

	// Membership ignores case.
	UDMXEntityFixturePatch* Upper = CreatePatch(First, TEXT("SPOT"));
	EXPECT_TRUE(Upper->Name.Equals(TEXT("SPOT_1")));

	// A destroyed entity leaves the library and frees its name.
	UDMXEntityFixturePatch::RemoveFixturePatchFromLibrary(SpotPatch);
	EXPECT_TRUE(FDMXRuntimeUtils::FindUniqueEntityName(Library, UDMXEntityFixturePatch::StaticClass(), TEXT("Spot")).Equals(TEXT("Spot")));
}

TEST(DMXProtocolAttributeName, DefaultsToColorAndComparesIgnoringCaseButHashesCase)
{
	EXPECT_TRUE(FDMXAttributeName().Name.ToString().Equals(TEXT("Color")));

	const FDMXAttributeName Upper(FName(TEXT("Dimmer")));
	const FDMXAttributeName Lower(FName(TEXT("dimmer")));
	EXPECT_TRUE(Upper == Lower);
	EXPECT_FALSE(Upper != Lower);
	EXPECT_NE(GetTypeHash(Upper), GetTypeHash(Lower));

	// Keys differing only in case do not find each other in a map.
	TMap<FDMXAttributeName, int32> Map;
	Map.Add(Upper, 1);
	Map.Add(Lower, 2);
	EXPECT_EQ(Map.Num(), 2);

	// Any name is stored verbatim; the empty text is None.
	EXPECT_TRUE(FDMXAttributeName(FName(TEXT("NotAnAttribute"))).IsValid());
	EXPECT_FALSE(FDMXAttributeName(FName(TEXT(""))).IsValid());
}

TEST(DMXProtocolFixtureCategory, DefaultsToTheFirstStockCategoryAndStoresAnyName)
{
	EXPECT_TRUE(FDMXFixtureCategory().Name.ToString().Equals(TEXT("Static")));
	const FDMXFixtureCategory Custom(FName(TEXT("Fog Machine")));
	EXPECT_TRUE(Custom.Name.ToString().Equals(TEXT("Fog Machine")));
	EXPECT_TRUE(Custom == FName(TEXT("FOG MACHINE")));
}

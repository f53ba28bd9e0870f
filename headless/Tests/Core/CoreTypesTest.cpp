// Engine core types: string and name case rules, UTF-8 conversion, map order.
#include <gtest/gtest.h>

#include "CoreMinimal.h"

TEST(CoreTypesTest, FStringAndFNameCaseRules)
{
	const FString Upper(TEXT("FixturePatch"));
	const FString Lower(TEXT("fixturepatch"));
	EXPECT_TRUE(Upper == Lower);
	EXPECT_FALSE(Upper.Equals(Lower));
	EXPECT_EQ(GetTypeHash(Upper), GetTypeHash(Lower));
	TSet<FString> Names{Upper};
	EXPECT_TRUE(Names.Contains(Lower));

	// Names ignore case, keep the first spelling's text, and split off a number suffix.
	const FName Light(TEXT("Light_1"));
	EXPECT_EQ(Light.GetNumber(), 2);
	EXPECT_EQ(Light.GetPlainNameString(), FString(TEXT("Light")));
	EXPECT_TRUE(Light == FName(TEXT("LIGHT_1")));
	EXPECT_TRUE(FName(TEXT("LIGHT_1")).ToString().Equals(FString(TEXT("LIGHT_1"))));
	EXPECT_EQ(FName(TEXT("Light_01")).GetNumber(), NAME_NO_NUMBER_INTERNAL);
	EXPECT_TRUE(FName(TEXT("nOnE")).IsNone());
	EXPECT_EQ(FName(TEXT("")).ToString(), FString(TEXT("None")));
}

TEST(CoreTypesTest, UTF8RoundTripAndMalformedInput)
{
	const char* Text = "Sp\xC3\xB6t \xF0\x9F\x92\xA1";
	FUTF8ToTCHAR Wide(Text);
	EXPECT_EQ(Wide.Length(), 7);
	EXPECT_STREQ(FTCHARToUTF8(Wide.Get(), Wide.Length()).Get(), Text);

	// Each malformed sequence becomes one replacement character; nothing is read past the length.
	const char Bad[] = {'a', '\xC3', 'b', '\xFF', '\xE2', '\x82'};
	FUTF8ToTCHAR Converted(Bad, 6);
	ASSERT_EQ(Converted.Length(), 5);
	EXPECT_EQ(Converted.Get()[1], u'\xFFFD');
	EXPECT_EQ(Converted.Get()[2], u'b');
	EXPECT_EQ(Converted.Get()[4], u'\xFFFD');
	const TCHAR LoneSurrogate[] = {u'x', 0xD800, 0};
	EXPECT_STREQ(FTCHARToUTF8(LoneSurrogate).Get(), "x\xEF\xBF\xBD");
}

TEST(CoreTypesTest, TMapIteratesInInsertionOrderAndRefillsHolesLastFreedFirst)
{
	TMap<int32, int32> Map;
	for (int32 Key : {9, 3, 7, 1})
	{
		Map.Add(Key, Key * 10);
	}
	Map.Add(3, 31);
	Map.Remove(9);
	Map.Remove(7);
	Map.Add(5, 50);
	Map.Add(6, 60);
	TArray<int32> Keys;
	Map.GetKeys(Keys);
	EXPECT_EQ(Keys, (TArray<int32>{6, 3, 5, 1}));
	EXPECT_EQ(*Map.Find(3), 31);
}

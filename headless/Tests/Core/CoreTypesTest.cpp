#include <gtest/gtest.h>

#include "CoreMinimal.h"
#include "Misc/PackageName.h"

TEST(FStringTest, EqualityIgnoresCaseButEqualsDoesNot)
{
	const FString Upper(TEXT("FixturePatch"));
	const FString Lower(TEXT("fixturepatch"));
	EXPECT_TRUE(Upper == Lower);
	EXPECT_FALSE(Upper.Equals(Lower));
	EXPECT_TRUE(Upper.Equals(Lower, ESearchCase::IgnoreCase));
	EXPECT_EQ(GetTypeHash(Upper), GetTypeHash(Lower));
	EXPECT_TRUE(FString() == FString(TEXT("")));
	EXPECT_EQ(FString(TEXT("/Game/My.Folder/Stage")).Find(TEXT(".")), 8);
	EXPECT_EQ(FString(TEXT("/Game/DMX/Stage")).Find(TEXT(".")), INDEX_NONE);
}

TEST(FStringTest, PrintfFormatsTextAndNumbers)
{
	EXPECT_EQ(FString::Printf(TEXT("%s_%d"), TEXT("Mode"), 3), FString(TEXT("Mode_3")));
	EXPECT_EQ(FString::Printf(TEXT("%08X|%%|%u"), 0xABCu, 7u), FString(TEXT("00000ABC|%|7")));
}

TEST(FNameTest, CaseInsensitiveCasePreservingWithNumbers)
{
	const FName Light(TEXT("Light_1"));
	EXPECT_EQ(Light.ToString(), FString(TEXT("Light_1")));
	EXPECT_EQ(Light.GetNumber(), 2);
	EXPECT_EQ(Light.GetPlainNameString(), FString(TEXT("Light")));
	EXPECT_TRUE(Light == FName(TEXT("LIGHT_1")));
	EXPECT_TRUE(FName(TEXT("LIGHT_1")).ToString().Equals(FString(TEXT("LIGHT_1"))));
	EXPECT_EQ(FName(TEXT("Light_01")).GetNumber(), NAME_NO_NUMBER_INTERNAL);
	EXPECT_TRUE(FName(TEXT("")).IsNone());
	EXPECT_TRUE(FName(TEXT("nOnE")).IsNone());
	EXPECT_EQ(FName(TEXT("")).ToString(), FString(TEXT("None")));
	EXPECT_EQ(FText::FromName(NAME_None).ToString(), FString(TEXT("None")));
}

TEST(FStringConvTest, UTF8RoundTripAndMalformedInput)
{
	const char* Text = "Sp\xC3\xB6t \xF0\x9F\x92\xA1";
	FUTF8ToTCHAR Wide(Text);
	EXPECT_EQ(Wide.Length(), 7);
	FTCHARToUTF8 Back(Wide.Get(), Wide.Length());
	EXPECT_STREQ(Back.Get(), Text);

	// Each malformed sequence becomes one replacement character; nothing is read past the length.
	const char Bad[] = {'a', '\xC3', 'b', '\xFF', '\xE2', '\x82'};
	FUTF8ToTCHAR Converted(Bad, 6);
	ASSERT_EQ(Converted.Length(), 5);
	EXPECT_EQ(Converted.Get()[1], u'\xFFFD');
	EXPECT_EQ(Converted.Get()[2], u'b');
	EXPECT_EQ(Converted.Get()[4], u'\xFFFD');

	const TCHAR LoneSurrogate[] = {u'x', 0xD800, 0};
	EXPECT_STREQ(FTCHARToUTF8(LoneSurrogate).Get(), "x\xEF\xBF\xBD");
	EXPECT_EQ(FTCHARToUTF8(nullptr).Get(), nullptr);
}

TEST(TMapTest, IteratesInInsertionOrderAndRefillsHolesLastFreedFirst)
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
	EXPECT_EQ(Map.Num(), 4);
}

TEST(TSetTest, FStringMembershipIgnoresCase)
{
	TSet<FString> Names{FString(TEXT("Mode"))};
	EXPECT_TRUE(Names.Contains(FString(TEXT("MODE"))));
	Names.Add(FString(TEXT("mode")));
	EXPECT_EQ(Names.Num(), 1);
}

TEST(FGuidTest, DigitsFormatAppendsThirtyTwoUppercaseDigits)
{
	FString Out(TEXT(">"));
	FGuid(0x1, 0xABCDEF01, 0, 0xFFFFFFFF).AppendString(Out, EGuidFormats::Digits);
	EXPECT_EQ(Out, FString(TEXT(">00000001ABCDEF0100000000FFFFFFFF")));
	EXPECT_EQ(FGuid().ToString(), FString(TEXT("00000000000000000000000000000000")));
}

TEST(FPackageNameTest, ShortNameIsTextAfterLastSlash)
{
	EXPECT_EQ(FPackageName::GetShortName(FString(TEXT("/Game/DMX/Stage"))), FString(TEXT("Stage")));
	EXPECT_EQ(FPackageName::GetShortName(FString(TEXT("/Game/DMX/Stage.Stage"))), FString(TEXT("Stage.Stage")));
	EXPECT_EQ(FPackageName::GetShortName(FString(TEXT("Stage"))), FString(TEXT("Stage")));
	EXPECT_EQ(FPackageName::GetShortName(FString(TEXT("/Game/DMX/"))), FString());
}

TEST(FTextTest, LocalizedTextKeepsNamespaceAndKey)
{
#define LOCTEXT_NAMESPACE "TestSpace"
	const FText Title = LOCTEXT("Key", "Source text");
#undef LOCTEXT_NAMESPACE
	EXPECT_EQ(Title.ToString(), FString(TEXT("Source text")));
	EXPECT_EQ(Title.GetNamespace(), FString(TEXT("TestSpace")));
	EXPECT_EQ(Title.GetKey(), FString(TEXT("Key")));
	EXPECT_EQ(FText::Format(FText::FromString(FString(TEXT("{1} over {0}"))), FText::AsNumber(512), FText::FromString(FString(TEXT("x")))).ToString(),
		FString(TEXT("x over 512")));
}

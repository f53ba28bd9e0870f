#include "DMXProtocolTypes.h"

#include "DMXProtocolSettings.h"

FDMXFixtureCategory::FDMXFixtureCategory()
	: Name(GetFirstValue())
{
}

FDMXFixtureCategory::FDMXFixtureCategory(const FName& InName)
	: Name(InName)
{
}

FName FDMXFixtureCategory::GetFirstValue()
{
	const UDMXProtocolSettings* Settings = GetDefault<UDMXProtocolSettings>();
	const auto First = Settings->FixtureCategories.begin();
	return First != Settings->FixtureCategories.end() ? *First : FName(NAME_None);
}

TArray<FName> FDMXFixtureCategory::GetPredefinedValues()
{
	return GetDefault<UDMXProtocolSettings>()->FixtureCategories.Array();
}

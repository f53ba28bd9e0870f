#include "DMXProtocolSettings.h"

IMPLEMENT_HEADLESS_CLASS(UDMXProtocolSettings, UObject, "DMXProtocolSettings")

UDMXProtocolSettings::UDMXProtocolSettings()
{
	for (const TCHAR* Category : {TEXT("Static"), TEXT("Matrix/Pixel Bar"), TEXT("Moving Head"), TEXT("Moving Mirror"), TEXT("Strobe"), TEXT("Other")})
	{
		FixtureCategories.Add(FName(Category));
	}

	// The stock attribute list starts with these, in this order.
	for (const TCHAR* Attribute : {TEXT("Color"), TEXT("Red"), TEXT("Green"), TEXT("Blue"), TEXT("Cyan"), TEXT("Magenta"), TEXT("Yellow"),
		TEXT("White"), TEXT("Amber"), TEXT("Dimmer"), TEXT("Pan"), TEXT("Shutter"), TEXT("Tilt"), TEXT("Zoom"), TEXT("Focus"), TEXT("Iris"),
		TEXT("Gobo")})
	{
		FDMXAttribute NewAttribute;
		NewAttribute.Name = FName(Attribute);
		Attributes.Add(NewAttribute);
	}
}

void UDMXProtocolSettings::SerializeHeadlessState(FHeadlessStateArchive& Ar)
{
	Super::SerializeHeadlessState(Ar);
	Ar << FixtureCategories << Attributes << bAllFixturePatchesReceiveDMXInEditor;
}

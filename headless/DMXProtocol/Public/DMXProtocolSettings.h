// Project settings of the DMX protocol module, with the stock lists.
#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"
#include "UObject/UObjectGlobals.h"
#include "DMXAttribute.h"

#ifndef DMXPROTOCOL_API
#define DMXPROTOCOL_API
#endif

UCLASS(Config = Engine, DefaultConfig, meta = (DisplayName = "DMX"))
class DMXPROTOCOL_API UDMXProtocolSettings : public UObject
{
	DECLARE_HEADLESS_CLASS(UDMXProtocolSettings, UObject)

public:
	UDMXProtocolSettings();

	// Fixture categories; the first one is the default of FDMXFixtureCategory.
	UPROPERTY(Config, EditAnywhere, Category = "Fixture Settings")
	TSet<FName> FixtureCategories;

	// Attributes; the first one is the attribute of a newly added matrix cell.
	UPROPERTY(Config, EditAnywhere, Category = "Fixture Settings")
	TSet<FDMXAttribute> Attributes;

	// When true, every fixture patch receives DMX in the editor, whatever its own flag says.
	UPROPERTY(Config, EditAnywhere, Category = "DMX")
	bool bAllFixturePatchesReceiveDMXInEditor = true;
};

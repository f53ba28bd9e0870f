// The undo steps this module records, one per changing call.
#pragma once

#include "CoreMinimal.h"

enum class EDMXEngineTransaction : uint8
{
	AddDMXEntity,
	ConfigureDMXEntity,
	RemoveDMXEntity,
	AddDMXComponent,
	ConfigureDMXComponent,
};

// The localisable title of the undo step (namespace "Kest_DMXEngine").
FText GetDMXEngineTransactionTitle(EDMXEngineTransaction Transaction);

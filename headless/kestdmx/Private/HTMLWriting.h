// Writing HTML text into a string: escaped text, numbers and colours, for the channel map page.
#pragma once

#include <string>
#include "CoreMinimal.h"

// The text with &, <, >, " and ' as character references, so it is safe in content and in quoted
// attribute values.
void AppendHTMLText(std::string& Out, const std::string& UTF8);

// An engine name as people see it: control characters shown as escapes, then HTML-escaped.
void AppendDisplayName(std::string& Out, const FString& Name);
void AppendDisplayName(std::string& Out, const FName& Name);

void AppendNumber(std::string& Out, int64 Value);

// A channel range as "First–Last", or "First" for one channel.
void AppendChannels(std::string& Out, int32 First, int32 Last);

// An sRGB colour with 8 bits a component.
struct FDisplayColor
{
	uint8 R = 0;
	uint8 G = 0;
	uint8 B = 0;
};

// The editor colour as the editor shows it: linear components clamped to 0..1 (anything not a number
// as 0) and encoded as sRGB; alpha is not shown.
FDisplayColor ToDisplayColor(const FLinearColor& Color);

// The colour scaled towards black by Factor (0..1).
FDisplayColor DarkenColor(FDisplayColor Color, float Factor);

// Whether dark text reads better on the colour than light text.
bool IsLightColor(FDisplayColor Color);

// "#rrggbb".
void AppendColor(std::string& Out, FDisplayColor Color);

// Text between the runner's UTF-8 world (files, command lines, reports) and engine strings.
#pragma once

#include <string>
#include "CoreMinimal.h"

inline std::string ToUTF8(const FString& Text)
{
	const FTCHARToUTF8 Converted(*Text, Text.Len());
	return Converted.Get() ? std::string(Converted.Get(), static_cast<size_t>(Converted.Length())) : std::string();
}

inline FString ToEngine(const std::string& Text)
{
	const FUTF8ToTCHAR Converted(Text.c_str(), static_cast<int32>(Text.size()));
	return FString(Converted.Length(), Converted.Get());
}

// Engine texts as the inspection tables report them.
#pragma once

#include "CoreMinimal.h"
#include "host/VorlithLua.h"

// Sets Table[Key] to the text as UTF-8 up to its first NUL ("" for an empty text). The conversion
// keeps 128 bytes in place and goes to the heap only for longer texts.
void SetTextField(sol::table& Table, const char* Key, const FString& Text);

// Sets Table[Index] to the text, converted the same way.
void SetTextElement(sol::table& Table, int32 Index, const FString& Text);

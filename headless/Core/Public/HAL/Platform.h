// Basic types as on Linux builds of the engine: TCHAR is a 16-bit code unit (char16_t).
#pragma once

#include <cstddef>
#include <cstdint>

typedef uint8_t uint8;
typedef uint16_t uint16;
typedef uint32_t uint32;
typedef uint64_t uint64;
typedef int8_t int8;
typedef int16_t int16;
typedef int32_t int32;
typedef int64_t int64;

typedef char ANSICHAR;
typedef char16_t WIDECHAR;
typedef WIDECHAR TCHAR;
typedef char UTF8CHAR_T;
typedef char16_t UTF16CHAR;
typedef char32_t UTF32CHAR;
typedef std::size_t SIZE_T;

#define PLATFORM_TCHAR_IS_CHAR16 1
#define PLATFORM_WCHAR_IS_4_BYTES 1

#define TEXT_PASTE(x) u##x
#define TEXT(x) TEXT_PASTE(x)

#define INDEX_NONE (-1)
#define NAME_SIZE 1024

#ifndef DLLEXPORT
#define DLLEXPORT __attribute__((visibility("default")))
#endif
#define FORCEINLINE inline
#define UE_NODISCARD_CTOR [[nodiscard]]

#define WITH_EDITOR 1
#define WITH_EDITORONLY_DATA 1

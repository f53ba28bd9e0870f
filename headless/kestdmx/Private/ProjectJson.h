// The JSON of project files. Every value read is checked against what the engine can hold, and a
// problem names where in its file it sits ("entities[2].modes[0].channel_span"); the caller adds the
// file. Writing keeps each value exactly, non-finite numbers included.
#pragma once

#include <stdexcept>
#include <string>
#include <nlohmann/json.hpp>
#include "CoreMinimal.h"

// Keys keep the order they are written in, so the files read top to bottom like the editor shows them.
using FProjectJson = nlohmann::ordered_json;

// The deepest nesting a project file may have; the formats need 8 levels.
constexpr int32 MaxProjectJsonDepth = 64;

// Where a value sits in its file: a chain of keys and list positions that lives on the reader's
// stack and is spelled out only for a message.
struct FProjectJsonPath
{
	const FProjectJsonPath* Parent = nullptr;
	// The key in the parent object, or null for a position in the parent list.
	const char* Key = nullptr;
	size_t Index = 0;

	FProjectJsonPath At(const char* InKey) const { return FProjectJsonPath{this, InKey, 0}; }
	FProjectJsonPath At(size_t InIndex) const { return FProjectJsonPath{this, nullptr, InIndex}; }
	// "entities[2].universe"; empty for the whole file.
	std::string ToString() const;
};

// A problem with the content of a file, with the place it was found at.
struct FProjectFileError : std::runtime_error
{
	FProjectFileError(const FProjectJsonPath& Where, const std::string& Problem);
	explicit FProjectFileError(const std::string& Problem) : std::runtime_error(Problem) {}
};

// "PATH: Problem", or the problem alone for the whole file.
std::string DescribeAt(const FProjectJsonPath& Where, const std::string& Problem);

// Parses a file's text, refusing nesting deeper than MaxProjectJsonDepth before the parser sees it.
FProjectJson ParseProjectJson(const std::string& Text);
// Tab-indented, ending with a line break.
std::string DumpProjectJson(const FProjectJson& Json);

// Checks "format" and "version" at the top of a file.
void CheckProjectFileFormat(const FProjectJson& File, const char* Format, int64 Version);

// Checked reads of Object[Key]; Where is the object's place. A missing key or a value of the wrong
// kind or range is a FProjectFileError naming the key's place.
const FProjectJson& ReadField(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);
const FProjectJson& ReadObject(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);
const FProjectJson& ReadList(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);
bool ReadBool(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);
int64 ReadInteger(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key, int64 Min, int64 Max);
double ReadDouble(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);
FString ReadString(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);
FName ReadName(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);
FGuid ReadGuid(const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);
// The same for a value already in hand (an entry of a list).
const FProjectJson& CheckObject(const FProjectJson& Value, const FProjectJsonPath& Where);
double CheckDouble(const FProjectJson& Value, const FProjectJsonPath& Where);
float CheckFloat(const FProjectJson& Value, const FProjectJsonPath& Where);
FName CheckName(const FProjectJson& Value, const FProjectJsonPath& Where);

// The index of Value in Names (an enumeration written by the names of its enumerators).
template <size_t Count>
uint8 ReadEnumName(const char* const (&Names)[Count], const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);

// Writers: a name that is None is null; a GUID is XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX; a number that
// is not finite is the text "NaN", "-NaN", "Infinity" or "-Infinity".
FProjectJson WriteName(const FName& Name);
FProjectJson WriteGuid(const FGuid& Guid);
FProjectJson WriteDouble(double Value);

// Implementation of the template above.
uint8 FindEnumName(const char* const* Names, size_t Count, const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key);
template <size_t Count>
uint8 ReadEnumName(const char* const (&Names)[Count], const FProjectJson& Object, const FProjectJsonPath& Where, const char* Key)
{
	return FindEnumName(Names, Count, Object, Where, Key);
}

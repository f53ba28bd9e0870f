// kest_project_fuzz: reads its input as project files, in a fresh headless editor each time: the bytes
// up to the first NUL as a library file of /Game/DMX/Fuzz, the bytes after it (when there is a NUL)
// as the level file. It checks that:
// - a file is either refused with an error or loaded, never anything else (the sanitizers watch for
//   crashes, overflows and undefined behaviour; libFuzzer for timeouts and memory);
// - what loaded saves, and the saved text loads again in a second editor and saves to the very same
//   text: a save never writes what a load refuses, and nothing changes on the way.
// Anything else is printed and ends the process with abort(), so that libFuzzer keeps the input.
// Its mutator changes whole JSON values three times in four, so that most inputs stay files the
// checks and the round trip get to.
//
// A summary of what was read and the kinds of errors seen is printed at exit.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "HeadlessEditor.h"
#include "Library/DMXLibrary.h"
#include "ProjectFileFormats.h"
#include "UObject/HeadlessObjectRegistry.h"

namespace
{
	const TCHAR* const LibraryPackage = TEXT("/Game/DMX/Fuzz");

	struct FStats
	{
		unsigned long long Inputs = 0;
		unsigned long long LibrariesLoaded = 0;
		unsigned long long LevelsLoaded = 0;
		unsigned long long Warnings = 0;
		std::map<std::string, unsigned long long> ErrorKinds;
	};
	FStats Stats;

	// The problem without its place and the value found (", not ..."): quoted texts become "",
	// numbers N, and the text is cut after 70 characters.
	std::string GetErrorKind(const std::string& Error)
	{
		const size_t Colon = Error.find(": ");
		const bool bPlace = Colon != std::string::npos && Error.find(' ') > Colon && Error.compare(0, 6, "parse ") != 0;
		const size_t Found = Error.find(", not ");
		const size_t End = Found == std::string::npos ? Error.size() : Found;
		std::string Kind;
		bool bInQuote = false;
		for (size_t Index = bPlace ? Colon + 2 : 0; Index < End && Kind.size() < 70; ++Index)
		{
			const char C = Error[Index];
			if (C == '"')
			{
				bInQuote = !bInQuote;
				Kind += bInQuote ? "\"\"" : "";
			}
			else if (!bInQuote && (C < '0' || C > '9'))
			{
				Kind += C;
			}
			else if (!bInQuote && (Kind.empty() || Kind.back() != 'N'))
			{
				Kind += 'N';
			}
		}
		return Kind;
	}

	void CountErrorKind(const std::string& Error)
	{
		const std::string Kind = GetErrorKind(Error);
		const bool bRoom = Stats.ErrorKinds.size() < 200 || Stats.ErrorKinds.count(Kind) != 0;
		++Stats.ErrorKinds[bRoom ? Kind : "(other kinds)"];
	}

	void PrintSummary()
	{
		if (Stats.Inputs == 0)
		{
			return;
		}
		std::fprintf(stderr, "\n== kest_project_fuzz summary ==\ninputs %llu, libraries loaded %llu, levels loaded %llu, warnings %llu\nerror kinds:\n",
			Stats.Inputs, Stats.LibrariesLoaded, Stats.LevelsLoaded, Stats.Warnings);
		for (const auto& [Kind, Count] : Stats.ErrorKinds)
		{
			std::fprintf(stderr, "  %8llu  %s\n", Count, Kind.c_str());
		}
	}

	[[noreturn]] void Fail(const char* What, const std::string& Detail)
	{
		std::fprintf(stderr, "kest_project_fuzz: %s\n%s\n", What, Detail.c_str());
		std::abort();
	}

	// Reads the files into a fresh editor; answers whether both loaded, with what they save to.
	bool ReadFiles(const std::string& LibraryText, const std::string* LevelText, std::string& OutLibrary, std::string& OutLevel, std::string& OutError)
	{
		FHeadlessEditor Editor;
		std::vector<std::string> Warnings;
		UDMXLibrary* Library = ReadProjectLibraryFile(FString(LibraryPackage), LibraryText, Warnings, OutError);
		if (Library == nullptr)
		{
			if (OutError.empty())
			{
				Fail("a library file was refused without an error", LibraryText);
			}
			return false;
		}
		if (LevelText != nullptr && !ReadProjectLevelFile(Editor.GetEditorWorld(), *LevelText, Warnings, OutError))
		{
			if (OutError.empty())
			{
				Fail("a level file was refused without an error", *LevelText);
			}
			return false;
		}
		Stats.Warnings += Warnings.size();
		OutLibrary = WriteProjectLibraryFile(Library);
		OutLevel = LevelText != nullptr ? WriteProjectLevelFile(Editor.GetEditorWorld()) : std::string();
		return true;
	}
}

// libFuzzer's own mutation of bytes, for the custom mutator to fall back on.
extern "C" size_t LLVMFuzzerMutate(uint8_t* Data, size_t Size, size_t MaxSize);

namespace
{
	// Values a file's values are swapped for: edges of every range the formats check, and every kind.
	const char* const EdgeValues[] = {
		"null", "true", "false", "0", "-1", "1", "8", "12", "32", "512", "513", "2147483647", "2147483648", "-2147483648", "-2147483649",
		"9223372036854775807", "18446744073709551615", "-9223372036854775808", "1.5", "-0.0", "1e300", "3.4028235e38", "3.5e38", "\"\"",
		"\"NaN\"", "\"-NaN\"", "\"Infinity\"", "\"nan\"", "\"None\"", "\"Angle\"", "\"TopLeftToBottom\"", "\"fixture_type\"",
		"\"fixture_patch\"", "\"00000000-0000-0000-0000-000000000000\"", "\"00000000-0000-0000-0000-000000000001\"",
		"\"/Game/DMX/Fuzz.Fuzz\"", "\"a\\u0000b\"", "[]", "{}", "[1, 2, 3, 4]", "[[[[[[[[[[]]]]]]]]]]",
	};

	using FJson = nlohmann::ordered_json;

	void CollectValues(FJson& Value, std::vector<FJson*>& OutValues)
	{
		OutValues.push_back(&Value);
		if (Value.is_structured())
		{
			for (FJson& Child : Value)
			{
				CollectValues(Child, OutValues);
			}
		}
	}

	// An edge value of the same JSON kind as Value, or any edge value when there is none.
	FJson PickEdgeValueOfKind(const FJson& Value, std::mt19937& Random)
	{
		std::vector<FJson> Alike;
		for (const char* Edge : EdgeValues)
		{
			FJson Candidate = FJson::parse(Edge);
			if (Candidate.is_number() == Value.is_number() && Candidate.is_string() == Value.is_string() && Candidate.type() != FJson::value_t::null
				&& (Candidate.is_number() || Candidate.type() == Value.type()))
			{
				Alike.push_back(std::move(Candidate));
			}
		}
		return Alike.empty() ? FJson::parse(EdgeValues[Random() % std::size(EdgeValues)]) : Alike[Random() % Alike.size()];
	}

	// One change to the parsed file, most often one that keeps it loadable: a value swapped for an
	// edge value of its kind, a list entry doubled; else a value swapped for any edge value or for
	// another value of the file, a key or list entry removed. False when the text is not JSON.
	bool MutateJson(std::string& Text, std::mt19937& Random)
	{
		FJson File = FJson::parse(Text, nullptr, false);
		if (File.is_discarded())
		{
			return false;
		}
		std::vector<FJson*> Values;
		CollectValues(File, Values);
		FJson& Target = *Values[Random() % Values.size()];
		const unsigned Choice = Random() % 20;
		if (Choice < 8)
		{
			Target = PickEdgeValueOfKind(Target, Random);
		}
		else if (Choice < 12 && Target.is_array() && !Target.empty())
		{
			Target.push_back(FJson(Target[Random() % Target.size()]));
		}
		else if (Choice < 15)
		{
			Target = FJson::parse(EdgeValues[Random() % std::size(EdgeValues)]);
		}
		else if (Choice < 18)
		{
			Target = FJson(*Values[Random() % Values.size()]);
		}
		else if (Target.is_object() && !Target.empty())
		{
			auto It = Target.begin();
			std::advance(It, Random() % Target.size());
			Target.erase(It);
		}
		else if (Target.is_array() && !Target.empty())
		{
			Target.erase(Target.begin() + static_cast<std::ptrdiff_t>(Random() % Target.size()));
		}
		Text = File.dump();
		return true;
	}
}

// A quarter of the time the bytes, otherwise one value of the library or the level file, so that
// most inputs stay JSON and reach the checks and the round trip.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* Data, size_t Size, size_t MaxSize, unsigned int Seed)
{
	std::mt19937 Random(Seed);
	if (Random() % 4 == 0)
	{
		return LLVMFuzzerMutate(Data, Size, MaxSize);
	}
	const std::string Input(reinterpret_cast<const char*>(Data), Size);
	const size_t Split = Input.find('\0');
	std::string Library = Input.substr(0, Split);
	std::string Level = Split == std::string::npos ? std::string() : Input.substr(Split + 1);
	const bool bMutated = Split != std::string::npos && Random() % 2 == 0 ? MutateJson(Level, Random) : MutateJson(Library, Random);
	const std::string Output = Split == std::string::npos ? Library : Library + std::string(1, '\0') + Level;
	if (!bMutated || Output.size() > MaxSize)
	{
		return LLVMFuzzerMutate(Data, Size, MaxSize);
	}
	std::copy(Output.begin(), Output.end(), Data);
	return Output.size();
}

extern "C" int LLVMFuzzerInitialize(int* Argc, char*** Argv)
{
	std::atexit(&PrintSummary);
	return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	++Stats.Inputs;
	const std::string Input(reinterpret_cast<const char*>(Data), Size);
	const size_t Split = Input.find('\0');
	const std::string LibraryText = Input.substr(0, Split);
	const std::string LevelText = Split == std::string::npos ? std::string() : Input.substr(Split + 1);
	const std::string* Level = Split == std::string::npos ? nullptr : &LevelText;

	std::string SavedLibrary, SavedLevel, Error;
	if (!ReadFiles(LibraryText, Level, SavedLibrary, SavedLevel, Error))
	{
		CountErrorKind(Error);
		FHeadlessObjectRegistry::Get().Warnings.Reset();
		return 0;
	}
	++Stats.LibrariesLoaded;
	Stats.LevelsLoaded += Level != nullptr ? 1 : 0;

	std::string SavedAgainLibrary, SavedAgainLevel;
	if (!ReadFiles(SavedLibrary, Level != nullptr ? &SavedLevel : nullptr, SavedAgainLibrary, SavedAgainLevel, Error))
	{
		Fail("a saved file does not load", Error + "\n--- library ---\n" + SavedLibrary + "--- level ---\n" + SavedLevel);
	}
	if (SavedAgainLibrary != SavedLibrary)
	{
		Fail("a library changed on its way through a save and a load", "--- saved ---\n" + SavedLibrary + "--- saved again ---\n" + SavedAgainLibrary);
	}
	if (SavedAgainLevel != SavedLevel)
	{
		Fail("a level changed on its way through a save and a load", "--- saved ---\n" + SavedLevel + "--- saved again ---\n" + SavedAgainLevel);
	}
	FHeadlessObjectRegistry::Get().Warnings.Reset();
	return 0;
}

// Fixture definitions mapped to the module's vocabulary: one fixture type per definition, each mode
// with its functions in channel order and, where the heads allow, a pixel matrix. The values are
// what a script passes to dmx_library(path):add("fixture_type", ...).
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>
#include "CoreTypes.h"
#include "FixtureDefinition.h"

struct FImportPhysicalRange
{
	double From = 0.0;
	double To = 1.0;
	// The default as a fraction of the function's full value, given before the range; chosen so
	// that the engine's stored default comes out as the function's default value.
	double NormalizedDefault = 0.0;
};

struct FImportFunction
{
	std::string Attribute;
	std::string Name;
	std::string Description;
	int64 DefaultValue = 0;
	// 1 (8 bit) or 2 (a coarse and a fine channel as one 16-bit function).
	int32 NumChannels = 1;
	// The fine byte comes first.
	bool bUseLSB = false;
	std::optional<FImportPhysicalRange> PhysicalRange;
};

struct FImportCellAttribute
{
	std::string Attribute;
	std::string Description;
	int64 DefaultValue = 0;
	int32 NumChannels = 1;
	bool bUseLSB = false;
};

struct FImportMatrix
{
	// The mode's channel of the first cell, from 1.
	int32 FirstCellChannel = 1;
	int32 XCells = 1;
	int32 YCells = 1;
	std::vector<FImportCellAttribute> CellAttributes;
};

struct FImportMode
{
	std::string Name;
	// The definition's channel count, which the mode's channel span must equal.
	int32 ChannelCount = 0;
	std::vector<FImportFunction> Functions;
	std::optional<FImportMatrix> Matrix;
};

struct FImportFixtureType
{
	// "Manufacturer Model" until names are settled in their library.
	std::string Name;
	std::string Category;
	// Package path of the DMX Library the type goes to.
	std::string LibraryPath;
	std::string Manufacturer;
	std::string SourceFile;
	std::vector<FImportMode> Modes;
};

// Something the import could not carry over as the definition has it, and why.
struct FImportNote
{
	std::string File;
	std::string Text;
};

// Maps one definition. Whatever does not map as it stands (fine channels left alone, heads that
// cannot form a matrix, modes too large for a universe, ...) goes to OutNotes.
FImportFixtureType MapFixtureDefinition(const FFixtureDefinition& Definition, std::vector<FImportNote>& OutNotes);

// The engine attribute name of a definition channel, and whether the channel is a fine byte.
struct FChannelAttribute
{
	std::string Attribute;
	bool bFine = false;
};
FChannelAttribute MapChannelAttribute(const FDefinitionChannel& Channel);

// The engine fixture category of a definition's fixture kind ("Moving Head", "Scanner", ...).
std::string MapFixtureCategory(const std::string& Type);

// The text with ASCII capitals made small, for comparing names as the engine does (ignoring case).
std::string FoldCase(const std::string& Text);

// A text as a name of letters and digits: words joined, each starting with a capital ("Beam
// shaper" -> "BeamShaper"); empty when the text has no letter or digit.
std::string MakeCleanName(const std::string& Text);

// Where imported fixture types go when no library is named: one library per manufacturer.
constexpr const char* ImportLibraryFolder = "/Game/DMX/";

// A text made into one valid folder or asset name of a package path: every character a package
// name cannot hold becomes "_", runs of "_" become one, none at either end; "Fixtures" when
// nothing is left ("American DJ" -> "American_DJ", "Clay.Paky" -> "Clay_Paky").
std::string MakePackageNamePart(const std::string& Text);

// The library a manufacturer's fixture types go to: /Game/DMX/<name made valid>.
std::string MakeManufacturerLibraryPath(const std::string& Manufacturer);

// Whether a text is a long package path under /Game/ that an asset can be saved at; OutProblem says
// why not.
bool IsValidImportLibraryPath(const std::string& Path, std::string& OutProblem);

// Settles each type's name in its library before anything is added: "Manufacturer Model", or
// "Manufacturer Model 2", 3, ... when the name is taken (ignoring letter case) by a type already
// in the library or imported before it. Every renaming goes to OutNotes.
using FExistingTypeNames = std::function<std::vector<std::string>(const std::string& LibraryPath)>;
void SettleFixtureTypeNames(std::vector<FImportFixtureType>& FixtureTypes, const FExistingTypeNames& GetExistingNames, std::vector<FImportNote>& OutNotes);

// The definitions of an import, read and mapped in the order given; a folder stands for every .qxf
// file under it, sorted. With a library path every type goes there instead of its manufacturer's.
struct FImportResult
{
	std::vector<FImportFixtureType> FixtureTypes;
	std::vector<FImportNote> Notes;
	// "FILE: problem" for each file that could not be read as a fixture definition.
	std::vector<std::string> Failures;
};
FImportResult ImportFixtureDefinitions(const std::vector<std::string>& Paths, const std::string& LibraryPath = std::string());

// The Lua script that adds the fixture types with only the module's globals. It first checks that
// every library exists and holds none of the names, so it adds nothing unless it can add all.
std::string WriteFixtureImportScript(const std::vector<FImportFixtureType>& FixtureTypes);

// Writes the script whole or not at all: into a new file beside the target, then renamed over it.
// A target that is a link, not a plain file, or that cannot be read is left alone.
bool WriteImportScriptFile(const std::string& File, const std::string& Script, std::string& OutError);

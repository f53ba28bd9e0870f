// A fixture definition (.qxf) as its file states it: the channels the fixture defines, the modes
// that lay them out (with their heads) and the physical data the import uses. Nothing is mapped to
// the engine's vocabulary here; texts are valid UTF-8.
#pragma once

#include <optional>
#include <string>
#include <vector>
#include "CoreTypes.h"

// One value range of a channel and what it does there.
struct FDefinitionCapability
{
	// The range's ends, 0..255; unset when the file's values are not such numbers.
	std::optional<int32> Min;
	std::optional<int32> Max;
	std::string Text;
};

struct FDefinitionChannel
{
	std::string Name;
	// What the channel does: a preset ("IntensityRed", "PositionPanFine", ...) or a group
	// ("Intensity", "Gobo", ...); a definition gives one of them.
	std::string Preset;
	std::string Group;
	// The group's byte is 1: the channel is the fine byte of a 16-bit value.
	bool bGroupFineByte = false;
	// The colour of an intensity channel ("Red", "White", ...); empty when not given.
	std::string Colour;
	// 0..255.
	int32 DefaultValue = 0;
	std::vector<FDefinitionCapability> Capabilities;
};

struct FDefinitionPhysical
{
	// Degrees of pan and tilt the fixture moves through; 0 when it does not move (or does not say).
	double PanMax = 0.0;
	double TiltMax = 0.0;
	// How the heads are arranged (columns and rows); 0 when not given.
	int32 LayoutWidth = 0;
	int32 LayoutHeight = 0;
};

struct FDefinitionMode
{
	std::string Name;
	// The mode's channels in channel order: indices into FFixtureDefinition::Channels.
	std::vector<int32> Channels;
	// The heads: each a list of the mode's channel numbers (from 0), in the order the file gives them.
	std::vector<std::vector<int32>> Heads;
	// Why the heads cannot be used at all (a channel number that is not a number); empty when fine.
	std::string HeadProblem;
	// The mode's own physical data, when it has some.
	std::optional<FDefinitionPhysical> Physical;
};

struct FFixtureDefinition
{
	// The file as given on the command line.
	std::string File;
	std::string Manufacturer;
	std::string Model;
	// The fixture's kind: "Moving Head", "Color Changer", ...
	std::string Type;
	std::vector<FDefinitionChannel> Channels;
	std::vector<FDefinitionMode> Modes;
	FDefinitionPhysical Physical;
	// What the reader had to decide about values it could not take as they are.
	std::vector<std::string> Notes;
};

// Largest fixture definition file read; real ones stay far below.
constexpr size_t MaxFixtureDefinitionBytes = 16 * 1024 * 1024;

// Parses the text of a fixture definition into OutDefinition (which keeps only its File). False,
// with OutError saying what is wrong (without the file name), when the text is not XML or not a
// fixture definition or its modes are not consistent.
bool ParseFixtureDefinition(const std::string& Text, FFixtureDefinition& OutDefinition, std::string& OutError);

// Reads and parses a file. False, with OutError "FILE: problem", when it is missing, unreadable,
// too large or not a valid fixture definition.
bool ReadFixtureDefinition(const std::string& File, FFixtureDefinition& OutDefinition, std::string& OutError);

// Reads fixture definitions (.qxf) with pugixml. Every value is checked: what the import cannot do
// without (the fixture's name, the modes' channels) fails the file with the reason; a value it can
// do without (a default, a capability's range, a head) is dropped with a note.
#include <pugixml.hpp>

#include "FixtureDefinition.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <system_error>

namespace
{
	// The bytes of a text with every malformed UTF-8 sequence replaced by U+FFFD.
	std::string MakeValidUTF8(const char* Text)
	{
		static const char Replacement[] = "\xEF\xBF\xBD";
		std::string Result;
		const unsigned char* Bytes = reinterpret_cast<const unsigned char*>(Text);
		size_t Index = 0;
		while (Bytes[Index] != 0)
		{
			const unsigned char Lead = Bytes[Index];
			int32 Length = 0;
			uint32 Lowest = 0;
			if (Lead < 0x80)
			{
				Result += static_cast<char>(Lead);
				++Index;
				continue;
			}
			if (Lead >= 0xC2 && Lead <= 0xDF)
			{
				Length = 2;
				Lowest = 0x80;
			}
			else if (Lead >= 0xE0 && Lead <= 0xEF)
			{
				Length = 3;
				Lowest = 0x800;
			}
			else if (Lead >= 0xF0 && Lead <= 0xF4)
			{
				Length = 4;
				Lowest = 0x10000;
			}
			uint32 CodePoint = Length == 2 ? (Lead & 0x1F) : Length == 3 ? (Lead & 0x0F) : (Lead & 0x07);
			int32 Taken = 1;
			while (Length > 0 && Taken < Length && (Bytes[Index + Taken] & 0xC0) == 0x80)
			{
				CodePoint = (CodePoint << 6) | (Bytes[Index + Taken] & 0x3F);
				++Taken;
			}
			const bool bValid = Length > 0 && Taken == Length && CodePoint >= Lowest && CodePoint <= 0x10FFFF
				&& (CodePoint < 0xD800 || CodePoint > 0xDFFF);
			if (bValid)
			{
				Result.append(Text + Index, static_cast<size_t>(Length));
			}
			else
			{
				Result += Replacement;
			}
			Index += static_cast<size_t>(Taken);
		}
		return Result;
	}

	std::string Trim(const std::string& Text)
	{
		const char* const Blanks = " \t\r\n";
		const size_t First = Text.find_first_not_of(Blanks);
		if (First == std::string::npos)
		{
			return std::string();
		}
		return Text.substr(First, Text.find_last_not_of(Blanks) - First + 1);
	}

	std::string GetText(const pugi::xml_node& Node)
	{
		return Trim(MakeValidUTF8(Node.child_value()));
	}

	std::string GetAttribute(const pugi::xml_node& Node, const char* Name)
	{
		return Trim(MakeValidUTF8(Node.attribute(Name).value()));
	}

	std::optional<int32> ParseInt(const std::string& Text)
	{
		int32 Value = 0;
		const char* End = Text.data() + Text.size();
		const std::from_chars_result Result = std::from_chars(Text.data(), End, Value);
		if (Text.empty() || Result.ec != std::errc() || Result.ptr != End)
		{
			return std::nullopt;
		}
		return Value;
	}

	std::optional<double> ParseNumber(const std::string& Text)
	{
		double Value = 0.0;
		const char* End = Text.data() + Text.size();
		const std::from_chars_result Result = std::from_chars(Text.data(), End, Value);
		if (Text.empty() || Result.ec != std::errc() || Result.ptr != End || !std::isfinite(Value))
		{
			return std::nullopt;
		}
		return Value;
	}

	std::string Quote(const std::string& Text)
	{
		return "'" + Text + "'";
	}

	// A DMX byte value (0..255) of an attribute; unset, with a note, when it is something else.
	std::optional<int32> ReadByteAttribute(const pugi::xml_node& Node, const char* Name, const std::string& Where, std::vector<std::string>& Notes)
	{
		const std::string Text = GetAttribute(Node, Name);
		const std::optional<int32> Value = ParseInt(Text);
		if (!Value || *Value < 0 || *Value > 255)
		{
			Notes.push_back(Where + ": " + Name + " " + Quote(Text) + " is not a value from 0 to 255; ignored");
			return std::nullopt;
		}
		return Value;
	}

	FDefinitionChannel ReadChannel(const pugi::xml_node& Node, const std::string& Name, std::vector<std::string>& Notes)
	{
		const std::string Where = "channel " + Quote(Name);
		FDefinitionChannel Channel;
		Channel.Name = Name;
		Channel.Preset = GetAttribute(Node, "Preset");
		const pugi::xml_node Group = Node.child("Group");
		if (Group)
		{
			Channel.Group = GetText(Group);
			const std::string Byte = GetAttribute(Group, "Byte");
			Channel.bGroupFineByte = Byte == "1";
			if (Byte != "0" && Byte != "1")
			{
				Notes.push_back(Where + ": group byte " + Quote(Byte) + " is neither 0 nor 1; taken as a coarse channel");
			}
		}
		Channel.Colour = GetText(Node.child("Colour"));
		if (Node.attribute("Default"))
		{
			Channel.DefaultValue = ReadByteAttribute(Node, "Default", Where + " default", Notes).value_or(0);
		}
		for (const pugi::xml_node& CapabilityNode : Node.children("Capability"))
		{
			FDefinitionCapability Capability;
			Capability.Text = GetText(CapabilityNode);
			const std::string CapabilityWhere = Where + " capability " + Quote(Capability.Text);
			Capability.Min = ReadByteAttribute(CapabilityNode, "Min", CapabilityWhere, Notes);
			Capability.Max = ReadByteAttribute(CapabilityNode, "Max", CapabilityWhere, Notes);
			Channel.Capabilities.push_back(std::move(Capability));
		}
		return Channel;
	}

	FDefinitionPhysical ReadPhysical(const pugi::xml_node& Node, const std::string& Where, std::vector<std::string>& Notes)
	{
		FDefinitionPhysical Physical;
		const pugi::xml_node Focus = Node.child("Focus");
		const auto ReadDegrees = [&Focus, &Where, &Notes](const char* Name) -> double
		{
			if (!Focus.attribute(Name))
			{
				return 0.0;
			}
			const std::string Text = GetAttribute(Focus, Name);
			const std::optional<double> Degrees = ParseNumber(Text);
			if (!Degrees || *Degrees < 0.0)
			{
				Notes.push_back(Where + ": " + Name + " " + Quote(Text) + " is not a number of degrees; no range is given");
				return 0.0;
			}
			return *Degrees;
		};
		Physical.PanMax = ReadDegrees("PanMax");
		Physical.TiltMax = ReadDegrees("TiltMax");

		const pugi::xml_node Layout = Node.child("Layout");
		if (Layout)
		{
			const std::optional<int32> Width = ParseInt(GetAttribute(Layout, "Width"));
			const std::optional<int32> Height = ParseInt(GetAttribute(Layout, "Height"));
			if (Width && Height && *Width > 0 && *Height > 0)
			{
				Physical.LayoutWidth = *Width;
				Physical.LayoutHeight = *Height;
			}
			else
			{
				Notes.push_back(Where + ": the head layout is not two positive numbers; ignored");
			}
		}
		return Physical;
	}

	bool ReadMode(const pugi::xml_node& Node, const std::map<std::string, int32>& ChannelsByName, FDefinitionMode& OutMode, std::vector<std::string>& Notes, std::string& OutError)
	{
		OutMode.Name = GetAttribute(Node, "Name");
		const std::string Where = "mode " + Quote(OutMode.Name);

		std::vector<std::pair<int32, int32>> NumberedChannels;
		for (const pugi::xml_node& ChannelNode : Node.children("Channel"))
		{
			const std::string NumberText = GetAttribute(ChannelNode, "Number");
			const std::optional<int32> Number = ParseInt(NumberText);
			if (!Number || *Number < 0)
			{
				OutError = Where + ": channel number " + Quote(NumberText) + " is not a number from 0";
				return false;
			}
			const std::string ChannelName = GetText(ChannelNode);
			const auto Found = ChannelsByName.find(ChannelName);
			if (Found == ChannelsByName.end())
			{
				OutError = Where + ": channel " + Quote(ChannelName) + " is not defined";
				return false;
			}
			NumberedChannels.emplace_back(*Number, Found->second);
		}
		std::sort(NumberedChannels.begin(), NumberedChannels.end());
		for (size_t Index = 0; Index < NumberedChannels.size(); ++Index)
		{
			const int32 Number = NumberedChannels[Index].first;
			if (Number != static_cast<int32>(Index))
			{
				OutError = Where + (Number < static_cast<int32>(Index)
					? ": channel number " + std::to_string(Number) + " is given twice"
					: ": there is no channel number " + std::to_string(Index));
				return false;
			}
			OutMode.Channels.push_back(NumberedChannels[Index].second);
		}

		for (const pugi::xml_node& HeadNode : Node.children("Head"))
		{
			std::vector<int32> Head;
			for (const pugi::xml_node& HeadChannel : HeadNode.children("Channel"))
			{
				const std::string Text = GetText(HeadChannel);
				const std::optional<int32> Number = ParseInt(Text);
				if (!Number && OutMode.HeadProblem.empty())
				{
					OutMode.HeadProblem = "head " + std::to_string(OutMode.Heads.size() + 1) + " names channel " + Quote(Text) + ", which is not a channel number";
				}
				Head.push_back(Number.value_or(-1));
			}
			OutMode.Heads.push_back(std::move(Head));
		}

		const pugi::xml_node Physical = Node.child("Physical");
		if (Physical)
		{
			OutMode.Physical = ReadPhysical(Physical, Where, Notes);
		}
		return true;
	}

	std::string DescribeParseError(const std::string& Text, const pugi::xml_parse_result& Result)
	{
		const size_t Offset = std::min(static_cast<size_t>(std::max<ptrdiff_t>(Result.offset, 0)), Text.size());
		const size_t Line = 1 + static_cast<size_t>(std::count(Text.begin(), Text.begin() + static_cast<ptrdiff_t>(Offset), '\n'));
		return std::string("not XML: ") + Result.description() + " on line " + std::to_string(Line);
	}
}

bool ParseFixtureDefinition(const std::string& Text, FFixtureDefinition& OutDefinition, std::string& OutError)
{
	pugi::xml_document Document;
	const pugi::xml_parse_result Result = Document.load_buffer(Text.data(), Text.size(), pugi::parse_default, pugi::encoding_auto);
	if (!Result)
	{
		OutError = DescribeParseError(Text, Result);
		return false;
	}
	const pugi::xml_node Root = Document.document_element();
	if (std::string(Root.name()) != "FixtureDefinition")
	{
		OutError = "not a fixture definition: the document is <" + MakeValidUTF8(Root.name()) + ">, not <FixtureDefinition>";
		return false;
	}

	FFixtureDefinition& Definition = OutDefinition;
	const std::string File = Definition.File;
	Definition = FFixtureDefinition();
	Definition.File = File;
	std::vector<std::string>& Notes = Definition.Notes;
	Definition.Manufacturer = GetText(Root.child("Manufacturer"));
	Definition.Model = GetText(Root.child("Model"));
	Definition.Type = GetText(Root.child("Type"));
	if (Definition.Manufacturer.empty() || Definition.Model.empty())
	{
		OutError = std::string("not a fixture definition: it names no ") + (Definition.Manufacturer.empty() ? "manufacturer" : "model");
		return false;
	}

	std::map<std::string, int32> ChannelsByName;
	for (const pugi::xml_node& ChannelNode : Root.children("Channel"))
	{
		const std::string Name = GetAttribute(ChannelNode, "Name");
		if (Name.empty())
		{
			OutError = "a channel has no name";
			return false;
		}
		if (ChannelsByName.count(Name) != 0)
		{
			Notes.push_back("channel " + Quote(Name) + " is defined twice; the first definition is used");
			continue;
		}
		ChannelsByName.emplace(Name, static_cast<int32>(Definition.Channels.size()));
		Definition.Channels.push_back(ReadChannel(ChannelNode, Name, Notes));
	}

	for (const pugi::xml_node& ModeNode : Root.children("Mode"))
	{
		FDefinitionMode Mode;
		if (!ReadMode(ModeNode, ChannelsByName, Mode, Notes, OutError))
		{
			return false;
		}
		Definition.Modes.push_back(std::move(Mode));
	}
	if (Definition.Modes.empty())
	{
		OutError = "the fixture has no modes";
		return false;
	}

	const pugi::xml_node Physical = Root.child("Physical");
	if (Physical)
	{
		Definition.Physical = ReadPhysical(Physical, "physical data", Notes);
	}
	return true;
}

bool ReadFixtureDefinition(const std::string& File, FFixtureDefinition& OutDefinition, std::string& OutError)
{
	OutDefinition = FFixtureDefinition();
	OutDefinition.File = File;
	std::error_code Error;
	const std::filesystem::file_status Status = std::filesystem::status(File, Error);
	if (!std::filesystem::exists(Status))
	{
		OutError = File + ": no such file";
		return false;
	}
	if (!std::filesystem::is_regular_file(Status))
	{
		OutError = File + ": not a file";
		return false;
	}
	const uintmax_t Size = std::filesystem::file_size(File, Error);
	if (Error || Size > MaxFixtureDefinitionBytes)
	{
		OutError = File + (Error ? ": cannot be read: " + Error.message() : ": too large for a fixture definition");
		return false;
	}
	std::ifstream Stream(File, std::ios::binary);
	std::string Text(static_cast<size_t>(Size), '\0');
	if (!Stream || !Stream.read(Text.data(), static_cast<std::streamsize>(Text.size())))
	{
		OutError = File + ": cannot be read";
		return false;
	}
	if (!ParseFixtureDefinition(Text, OutDefinition, OutError))
	{
		OutError = File + ": " + OutError;
		return false;
	}
	return true;
}

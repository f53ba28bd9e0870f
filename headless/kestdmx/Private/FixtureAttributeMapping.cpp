// The engine's names for what a definition channel does, and for the kind of fixture. Channels with
// a preset are named from it; channels with only a group from the group, refined by the colour an
// intensity channel gives and by the words of a beam or shutter channel's name.
#include "FixtureImport.h"

#include <cctype>
#include <map>

namespace
{
	// Presets by what they do; a fine preset is the same name followed by "Fine".
	const std::map<std::string, std::string>& GetPresetAttributes()
	{
		static const std::map<std::string, std::string> Attributes =
		{
			{"IntensityMasterDimmer", "Dimmer"}, {"IntensityDimmer", "Dimmer"},
			{"IntensityRed", "Red"}, {"IntensityGreen", "Green"}, {"IntensityBlue", "Blue"},
			{"IntensityCyan", "Cyan"}, {"IntensityMagenta", "Magenta"}, {"IntensityYellow", "Yellow"},
			{"IntensityWhite", "White"}, {"IntensityAmber", "Amber"}, {"IntensityUV", "UV"},
			{"IntensityLime", "Lime"}, {"IntensityIndigo", "Indigo"},
			{"IntensityHue", "Hue"}, {"IntensitySaturation", "Saturation"}, {"IntensityLightness", "Lightness"},
			{"IntensityValue", "Value"},
			{"PositionPan", "Pan"}, {"PositionTilt", "Tilt"}, {"PositionXAxis", "XAxis"}, {"PositionYAxis", "YAxis"},
			{"SpeedPanSlowFast", "PanSpeed"}, {"SpeedPanFastSlow", "PanSpeed"},
			{"SpeedTiltSlowFast", "TiltSpeed"}, {"SpeedTiltFastSlow", "TiltSpeed"},
			{"SpeedPanTiltSlowFast", "PanTiltSpeed"}, {"SpeedPanTiltFastSlow", "PanTiltSpeed"},
			{"ColorMacro", "Color"}, {"ColorWheel", "Color"}, {"ColorRGBMixer", "Color"},
			{"ColorCTOMixer", "CTO"}, {"ColorCTCMixer", "CTC"}, {"ColorCTBMixer", "CTB"},
			{"GoboWheel", "Gobo"}, {"GoboIndex", "Gobo"},
			{"ShutterStrobeSlowFast", "Shutter"}, {"ShutterStrobeFastSlow", "Shutter"},
			{"ShutterIrisMinToMax", "Iris"}, {"ShutterIrisMaxToMin", "Iris"}, {"ShutterIris", "Iris"},
			{"BeamFocusNearFar", "Focus"}, {"BeamFocusFarNear", "Focus"}, {"BeamFocus", "Focus"},
			{"BeamZoomSmallBig", "Zoom"}, {"BeamZoomBigSmall", "Zoom"}, {"BeamZoom", "Zoom"},
			{"PrismRotationSlowFast", "Prism"}, {"PrismRotationFastSlow", "Prism"},
			{"NoFunction", "NoFunction"},
		};
		return Attributes;
	}

	const std::map<std::string, std::string>& GetGroupAttributes()
	{
		static const std::map<std::string, std::string> Attributes =
		{
			{"Intensity", "Dimmer"}, {"Colour", "Color"}, {"Pan", "Pan"}, {"Tilt", "Tilt"}, {"Beam", "Beam"},
			{"Shutter", "Shutter"}, {"Gobo", "Gobo"}, {"Prism", "Prism"}, {"Speed", "Speed"}, {"Effect", "Effect"},
			{"Maintenance", "Maintenance"}, {"Nothing", "NoFunction"},
		};
		return Attributes;
	}

	// Intensity channels of one colour take the colour's attribute.
	std::string MapColour(const std::string& Colour)
	{
		static const std::map<std::string, std::string> Colours =
		{
			{"red", "Red"}, {"green", "Green"}, {"blue", "Blue"}, {"cyan", "Cyan"}, {"magenta", "Magenta"},
			{"yellow", "Yellow"}, {"white", "White"}, {"amber", "Amber"}, {"uv", "UV"}, {"lime", "Lime"},
			{"indigo", "Indigo"},
		};
		const auto Found = Colours.find(FoldCase(Colour));
		return Found != Colours.end() ? Found->second : MakeCleanName(Colour);
	}

	// A beam or shutter group channel whose name says which part of the beam it drives.
	std::string RefineByName(const std::string& Attribute, const std::string& ChannelName)
	{
		const std::string Name = FoldCase(ChannelName);
		const auto Says = [&Name](const char* Word) { return Name.find(Word) != std::string::npos; };
		if (Attribute == "Beam")
		{
			for (const auto& [Word, Refined] : {std::pair{"zoom", "Zoom"}, {"focus", "Focus"}, {"iris", "Iris"}, {"frost", "Frost"}})
			{
				if (Says(Word))
				{
					return Refined;
				}
			}
		}
		if (Attribute == "Shutter" && Says("iris"))
		{
			return "Iris";
		}
		return Attribute;
	}
}

std::string FoldCase(const std::string& Text)
{
	std::string Folded = Text;
	for (char& Character : Folded)
	{
		if (Character >= 'A' && Character <= 'Z')
		{
			Character = static_cast<char>(Character - 'A' + 'a');
		}
	}
	return Folded;
}

std::string MakeCleanName(const std::string& Text)
{
	std::string Name;
	bool bWordStart = true;
	for (const char Character : Text)
	{
		const unsigned char Byte = static_cast<unsigned char>(Character);
		if (Byte < 0x80 && std::isalnum(Byte))
		{
			Name += bWordStart ? static_cast<char>(std::toupper(Byte)) : Character;
			bWordStart = false;
		}
		else
		{
			bWordStart = true;
		}
	}
	return Name;
}

FChannelAttribute MapChannelAttribute(const FDefinitionChannel& Channel)
{
	FChannelAttribute Result;
	if (!Channel.Preset.empty())
	{
		std::string Preset = Channel.Preset;
		const std::string FineSuffix = "Fine";
		if (Preset.size() > FineSuffix.size() && Preset.compare(Preset.size() - FineSuffix.size(), FineSuffix.size(), FineSuffix) == 0)
		{
			Preset.resize(Preset.size() - FineSuffix.size());
			Result.bFine = true;
		}
		const auto Found = GetPresetAttributes().find(Preset);
		Result.Attribute = Found != GetPresetAttributes().end() ? Found->second : MakeCleanName(Preset);
	}
	else if (!Channel.Group.empty())
	{
		Result.bFine = Channel.bGroupFineByte;
		const auto Found = GetGroupAttributes().find(Channel.Group);
		if (Found == GetGroupAttributes().end())
		{
			Result.Attribute = MakeCleanName(Channel.Group);
		}
		else if (Found->first == "Intensity" && !Channel.Colour.empty())
		{
			Result.Attribute = MapColour(Channel.Colour);
		}
		else
		{
			Result.Attribute = RefineByName(Found->second, Channel.Name);
		}
	}
	if (Result.Attribute.empty())
	{
		Result.Attribute = MakeCleanName(Channel.Name);
	}
	if (Result.Attribute.empty())
	{
		Result.Attribute = "Function";
	}
	// The engine takes any spelling of "None" for no name at all.
	if (FoldCase(Result.Attribute) == "none")
	{
		Result.Attribute = "NoFunction";
	}
	return Result;
}

std::string MapFixtureCategory(const std::string& Type)
{
	static const std::map<std::string, std::string> Categories =
	{
		{"moving head", "Moving Head"}, {"scanner", "Moving Mirror"}, {"color changer", "Static"}, {"dimmer", "Static"},
		{"led bar (beams)", "Matrix/Pixel Bar"}, {"led bar (pixels)", "Matrix/Pixel Bar"}, {"strobe", "Strobe"},
	};
	const auto Found = Categories.find(FoldCase(Type));
	return Found != Categories.end() ? Found->second : "Other";
}

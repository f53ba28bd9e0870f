#include "HTMLWriting.h"
#include "KestDMXText.h"
#include "TextColumns.h"

#include <charconv>
#include <cmath>

void AppendHTMLText(std::string& Out, const std::string& UTF8)
{
	for (const char Character : UTF8)
	{
		switch (Character)
		{
		case '&':
			Out += "&amp;";
			break;
		case '<':
			Out += "&lt;";
			break;
		case '>':
			Out += "&gt;";
			break;
		case '"':
			Out += "&quot;";
			break;
		case '\'':
			Out += "&#39;";
			break;
		default:
			Out += Character;
			break;
		}
	}
}

void AppendDisplayName(std::string& Out, const FString& Name)
{
	AppendHTMLText(Out, EscapeForDisplay(ToUTF8(Name)));
}

void AppendDisplayName(std::string& Out, const FName& Name)
{
	AppendDisplayName(Out, Name.ToString());
}

void AppendNumber(std::string& Out, int64 Value)
{
	char Digits[24];
	const std::to_chars_result Result = std::to_chars(Digits, Digits + sizeof(Digits), Value);
	Out.append(Digits, Result.ptr);
}

void AppendChannels(std::string& Out, int32 First, int32 Last)
{
	AppendNumber(Out, First);
	if (Last != First)
	{
		Out += "\xE2\x80\x93";
		AppendNumber(Out, Last);
	}
}

namespace
{
	uint8 EncodeSRGB(float Linear)
	{
		if (!(Linear > 0.0f))
		{
			return 0;
		}
		if (Linear >= 1.0f)
		{
			return 255;
		}
		const double Encoded = Linear <= 0.0031308f ? 12.92 * Linear : 1.055 * std::pow(static_cast<double>(Linear), 1.0 / 2.4) - 0.055;
		return static_cast<uint8>(std::lround(Encoded * 255.0));
	}

	double DecodeSRGB(uint8 Component)
	{
		const double Encoded = Component / 255.0;
		return Encoded <= 0.04045 ? Encoded / 12.92 : std::pow((Encoded + 0.055) / 1.055, 2.4);
	}
}

FDisplayColor ToDisplayColor(const FLinearColor& Color)
{
	return {EncodeSRGB(Color.R), EncodeSRGB(Color.G), EncodeSRGB(Color.B)};
}

FDisplayColor DarkenColor(FDisplayColor Color, float Factor)
{
	const auto Scale = [Factor](uint8 Component) { return static_cast<uint8>(std::lround(Component * (1.0f - Factor))); };
	return {Scale(Color.R), Scale(Color.G), Scale(Color.B)};
}

bool IsLightColor(FDisplayColor Color)
{
	// Relative luminance against the contrast of black and of white text.
	const double Luminance = 0.2126 * DecodeSRGB(Color.R) + 0.7152 * DecodeSRGB(Color.G) + 0.0722 * DecodeSRGB(Color.B);
	return (Luminance + 0.05) / 0.05 > 1.05 / (Luminance + 0.05);
}

void AppendColor(std::string& Out, FDisplayColor Color)
{
	static const char Hex[] = "0123456789abcdef";
	Out += '#';
	for (const uint8 Component : {Color.R, Color.G, Color.B})
	{
		Out += Hex[Component >> 4];
		Out += Hex[Component & 0xF];
	}
}

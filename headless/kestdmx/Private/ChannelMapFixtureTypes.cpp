#include "ChannelMapParts.h"
#include "HTMLWriting.h"
#include "KestDMXText.h"
#include "ModeChannelLayout.h"
#include "TextColumns.h"

#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"

namespace
{
	void AppendMatrixRow(std::string& Out, const FModeChannelRow& Row, const FDMXFixtureMatrix& Matrix)
	{
		Out += "<tr class=\"matrix\"><td class=\"ch\">";
		AppendChannels(Out, Row.FirstChannel, Row.LastChannel);
		Out += "</td><td colspan=\"4\">Matrix ";
		AppendNumber(Out, Matrix.XCells);
		Out += " \xC3\x97 ";
		AppendNumber(Out, Matrix.YCells);
		Out += ", ";
		AppendHTMLText(Out, DescribeDistribution(Matrix.PixelMappingDistribution));
		Out += "<br/>per cell: ";
		if (Matrix.CellAttributes.Num() == 0)
		{
			Out += "nothing";
		}
		for (int32 Index = 0; Index < Matrix.CellAttributes.Num(); ++Index)
		{
			const FDMXFixtureCellAttribute& CellAttribute = Matrix.CellAttributes[Index];
			Out += Index == 0 ? "" : ", ";
			AppendDisplayName(Out, CellAttribute.Attribute.Name);
			Out += " <span class=\"format\">";
			AppendHTMLText(Out, DescribeSignalFormat(CellAttribute.DataType, CellAttribute.bUseLSBMode));
			Out += "</span>";
		}
		Out += "</td></tr>";
	}

	void AppendFunctionRow(std::string& Out, const FModeChannelRow& Row)
	{
		const FDMXFixtureFunction& Function = *Row.Function;
		Out += "<tr><td class=\"ch\">";
		AppendChannels(Out, Row.FirstChannel, Row.LastChannel);
		Out += "</td><td>";
		AppendDisplayName(Out, Function.FunctionName);
		Out += "</td><td>";
		AppendDisplayName(Out, Function.Attribute.Name);
		Out += "</td><td class=\"format\">";
		AppendHTMLText(Out, DescribeSignalFormat(Function.DataType, Function.bUseLSBMode));
		Out += "</td><td class=\"num\">";
		AppendNumber(Out, Function.DefaultValue);
		Out += "</td></tr>";
	}

	void AppendMode(std::string& Out, const FDMXFixtureMode& Mode, int32 ModeIndex)
	{
		Out += "<table class=\"mode\"><caption>Mode ";
		AppendNumber(Out, ModeIndex);
		Out += " <b>";
		AppendDisplayName(Out, Mode.ModeName);
		Out += "</b> <span class=\"note\">span ";
		AppendNumber(Out, Mode.ChannelSpan);
		Out += Mode.bAutoChannelSpan ? " (auto)" : " (manual)";
		Out += "</span></caption>";
		const std::vector<FModeChannelRow> Rows = GetModeChannelRows(Mode);
		if (Rows.empty())
		{
			Out += "<tbody><tr><td class=\"none\">no functions</td></tr></tbody></table>";
			return;
		}
		Out += "<thead><tr><th>Ch</th><th>Function</th><th>Attribute</th><th>Data type</th><th>Default</th></tr></thead><tbody>";
		for (const FModeChannelRow& Row : Rows)
		{
			if (Row.Function != nullptr)
			{
				AppendFunctionRow(Out, Row);
			}
			else
			{
				AppendMatrixRow(Out, Row, Mode.FixtureMatrixConfig);
			}
		}
		Out += "</tbody></table>";
	}
}

void AppendFixtureTypes(std::string& Out, const UDMXLibrary* Library)
{
	TArray<const UDMXEntityFixtureType*> FixtureTypes;
	for (const UDMXEntity* Entity : Library->GetEntities())
	{
		if (const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
		{
			FixtureTypes.Add(FixtureType);
		}
	}
	Out += "<h2 class=\"part\">Fixture types</h2>";
	if (FixtureTypes.Num() == 0)
	{
		Out += "<p class=\"none\">No fixture types.</p>";
		return;
	}
	Out += "<div class=\"types\">";
	for (const UDMXEntityFixtureType* FixtureType : FixtureTypes)
	{
		Out += "<article class=\"type\"><h3>";
		AppendDisplayName(Out, FixtureType->Name);
		Out += " <span class=\"note\">";
		AppendDisplayName(Out, FixtureType->DMXCategory.Name);
		Out += "</span></h3>";
		if (FixtureType->Modes.Num() == 0)
		{
			Out += "<p class=\"none\">No modes.</p>";
		}
		for (int32 ModeIndex = 0; ModeIndex < FixtureType->Modes.Num(); ++ModeIndex)
		{
			AppendMode(Out, FixtureType->Modes[ModeIndex], ModeIndex);
		}
		Out += "</article>";
	}
	Out += "</div>";
}

#include "LibraryReport.h"
#include "KestDMXText.h"
#include "ModeChannelLayout.h"
#include "TextColumns.h"
#include "UniverseOccupancy.h"

#include <algorithm>
#include <sstream>
#include <vector>

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "Misc/PackageName.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	// Columns of a table are separated by this, so two cells never run together.
	const char* const ColumnGap = "  ";

	std::string ShowName(const FString& Name)
	{
		return EscapeForDisplay(ToUTF8(Name));
	}

	std::string ShowName(const FName& Name)
	{
		return EscapeForDisplay(ToUTF8(Name.ToString()));
	}

	// Writes the cell padded to its column and the gap after it; a column no row uses is left out.
	void WriteCell(std::ostringstream& Out, const std::string& Text, size_t Width)
	{
		if (Width == 0)
		{
			return;
		}
		WritePadded(Out, Text, Width);
		Out << ColumnGap;
	}

	void WriteMatrix(std::ostringstream& Out, const FDMXFixtureMatrix& Matrix)
	{
		Out << "matrix " << Matrix.XCells << 'x' << Matrix.YCells << ' ' << DescribeDistribution(Matrix.PixelMappingDistribution) << ", per cell:";
		if (Matrix.CellAttributes.Num() == 0)
		{
			Out << " nothing";
		}
		for (int32 CellIndex = 0; CellIndex < Matrix.CellAttributes.Num(); ++CellIndex)
		{
			const FDMXFixtureCellAttribute& CellAttribute = Matrix.CellAttributes[CellIndex];
			Out << (CellIndex == 0 ? " " : ", ") << ShowName(CellAttribute.Attribute.Name) << ' ' << DescribeSignalFormat(CellAttribute.DataType, CellAttribute.bUseLSBMode);
		}
	}

	// The mode's functions and matrix in channel order, one table: channels, name, attribute, data
	// type, default. The matrix row fills the columns after its channels with its description.
	void WriteMode(std::ostringstream& Out, const FDMXFixtureMode& Mode, int32 ModeIndex)
	{
		Out << "    mode " << ModeIndex << ' ' << QuoteForDisplay(ToUTF8(Mode.ModeName)) << ": span " << Mode.ChannelSpan << (Mode.bAutoChannelSpan ? " (auto)" : " (manual)");
		if (Mode.Functions.Num() == 0 && !Mode.bFixtureMatrixEnabled)
		{
			Out << ", no functions";
		}
		Out << '\n';

		const std::vector<FModeChannelRow> Rows = GetModeChannelRows(Mode);
		size_t ChannelWidth = 0;
		size_t NameWidth = 0;
		size_t AttributeWidth = 0;
		size_t DataTypeWidth = 0;
		for (const FModeChannelRow& Row : Rows)
		{
			ChannelWidth = std::max(ChannelWidth, DescribeChannels(Row.FirstChannel, Row.LastChannel).size());
			if (const FDMXFixtureFunction* Function = Row.Function)
			{
				NameWidth = std::max(NameWidth, GetDisplayWidth(ShowName(Function->FunctionName)));
				AttributeWidth = std::max(AttributeWidth, GetDisplayWidth(ShowName(Function->Attribute.Name)));
				DataTypeWidth = std::max(DataTypeWidth, DescribeSignalFormat(Function->DataType, Function->bUseLSBMode).size());
			}
		}
		for (const FModeChannelRow& Row : Rows)
		{
			Out << "      ch ";
			WriteCell(Out, DescribeChannels(Row.FirstChannel, Row.LastChannel), ChannelWidth);
			if (const FDMXFixtureFunction* Function = Row.Function)
			{
				WriteCell(Out, ShowName(Function->FunctionName), NameWidth);
				WriteCell(Out, ShowName(Function->Attribute.Name), AttributeWidth);
				WriteCell(Out, DescribeSignalFormat(Function->DataType, Function->bUseLSBMode), DataTypeWidth);
				Out << "default " << Function->DefaultValue << '\n';
			}
			else
			{
				WriteMatrix(Out, Mode.FixtureMatrixConfig);
				Out << '\n';
			}
		}
	}

	void WriteFixtureType(std::ostringstream& Out, const UDMXEntityFixtureType* FixtureType)
	{
		Out << "  " << ShowName(FixtureType->Name) << " [" << ShowName(FixtureType->DMXCategory.Name) << ']';
		if (FixtureType->Modes.Num() == 0)
		{
			Out << ": no modes\n";
			return;
		}
		Out << '\n';
		for (int32 ModeIndex = 0; ModeIndex < FixtureType->Modes.Num(); ++ModeIndex)
		{
			WriteMode(Out, FixtureType->Modes[ModeIndex], ModeIndex);
		}
	}

	// The cells of one patch line before its notes.
	struct FPatchLine
	{
		std::string Channels;
		std::string Name;
		std::string FixtureType;
		std::string Mode;
	};

	FPatchLine DescribePatch(const FPatchPlacement& Placement)
	{
		const UDMXEntityFixturePatch* Patch = Placement.Patch;
		FPatchLine Line;
		Line.Channels = Placement.Span > 0 ? DescribeChannels(Placement.Start, Placement.End) : std::to_string(Placement.Start) + " (no span)";
		Line.Name = ShowName(Patch->Name);
		const UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
		if (FixtureType == nullptr)
		{
			Line.FixtureType = "(no fixture type)";
			return Line;
		}
		Line.FixtureType = ShowName(FixtureType->Name);
		const int32 ModeIndex = Patch->GetActiveModeIndex();
		Line.Mode = "mode " + std::to_string(ModeIndex);
		if (FixtureType->Modes.IsValidIndex(ModeIndex))
		{
			Line.Mode += ' ' + QuoteForDisplay(ToUTF8(FixtureType->Modes[ModeIndex].ModeName));
		}
		return Line;
	}
}

std::string FormatLibraryReport(UDMXLibrary* Library)
{
	if (!Library)
	{
		return "no DMX Library\n";
	}

	TArray<const UDMXEntityFixtureType*> FixtureTypes;
	int32 EntityCount = 0;
	int32 PatchCount = 0;
	for (const UDMXEntity* Entity : Library->GetEntities())
	{
		++EntityCount;
		if (const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
		{
			FixtureTypes.Add(FixtureType);
		}
		else if (Cast<UDMXEntityFixturePatch>(Entity) != nullptr)
		{
			++PatchCount;
		}
	}

	std::ostringstream Out;
	Out << "DMX Library " << EscapeForDisplay(ToUTF8(Library->GetPathName())) << '\n';
	Out << FixtureTypes.Num() << " fixture types, " << PatchCount << " fixture patches, " << EntityCount << " entities\n";

	Out << "\nFixture types\n";
	if (FixtureTypes.Num() == 0)
	{
		Out << "  none\n";
	}
	for (const UDMXEntityFixtureType* FixtureType : FixtureTypes)
	{
		WriteFixtureType(Out, FixtureType);
	}

	// One set of column widths for every universe, so the whole list reads as one table.
	const std::vector<FUniverseOccupancy> Universes = GetUniverseOccupancy(Library);
	std::vector<std::vector<FPatchLine>> Lines;
	size_t ChannelWidth = 0;
	size_t NameWidth = 0;
	size_t FixtureTypeWidth = 0;
	size_t ModeWidth = 0;
	for (const FUniverseOccupancy& Occupancy : Universes)
	{
		std::vector<FPatchLine>& UniverseLines = Lines.emplace_back();
		for (const FPatchPlacement& Placement : Occupancy.Patches)
		{
			const FPatchLine& Line = UniverseLines.emplace_back(DescribePatch(Placement));
			ChannelWidth = std::max(ChannelWidth, Line.Channels.size());
			NameWidth = std::max(NameWidth, GetDisplayWidth(Line.Name));
			FixtureTypeWidth = std::max(FixtureTypeWidth, GetDisplayWidth(Line.FixtureType));
			ModeWidth = std::max(ModeWidth, GetDisplayWidth(Line.Mode));
		}
	}

	int32 InvalidCount = 0;
	int32 OverlapCount = 0;
	Out << "\nFixture patches\n";
	if (PatchCount == 0)
	{
		Out << "  none\n";
	}
	for (size_t UniverseIndex = 0; UniverseIndex < Universes.size(); ++UniverseIndex)
	{
		const FUniverseOccupancy& Occupancy = Universes[UniverseIndex];
		Out << "  universe " << Occupancy.Universe << '\n';
		for (size_t PatchIndex = 0; PatchIndex < Occupancy.Patches.size(); ++PatchIndex)
		{
			const FPatchPlacement& Placement = Occupancy.Patches[PatchIndex];
			const FPatchLine& Line = Lines[UniverseIndex][PatchIndex];
			Out << "    ch ";
			WriteCell(Out, Line.Channels, ChannelWidth);
			WriteCell(Out, Line.Name, NameWidth);
			WriteCell(Out, Line.FixtureType, FixtureTypeWidth);
			WriteCell(Out, Line.Mode, ModeWidth);
			Out << "fixture id " << Placement.Patch->GetFixtureID() << '\n';

			if (!Placement.bValid)
			{
				++InvalidCount;
				Out << "       INVALID: " << EscapeForDisplay(Placement.InvalidReason) << '\n';
			}
			if (Placement.OverlapCount > 0)
			{
				++OverlapCount;
				Out << "       OVERLAPS:";
				for (size_t Index = 0; Index < Placement.Overlaps.size(); ++Index)
				{
					Out << (Index == 0 ? " " : ", ") << ShowName(Occupancy.Patches[Placement.Overlaps[Index]].Patch->Name);
				}
				if (const size_t Unlisted = static_cast<size_t>(Placement.OverlapCount) - Placement.Overlaps.size(); Unlisted > 0)
				{
					Out << " and " << Unlisted << " more";
				}
				Out << '\n';
			}
		}
	}

	Out << '\n' << PatchCount << " patches in " << Universes.size() << " universes, " << InvalidCount << " invalid, " << OverlapCount << " overlapping\n";
	return Out.str();
}

UDMXLibrary* LoadLibraryForReport(const std::string& Path)
{
	FString ObjectPath = ToEngine(Path);
	if (ObjectPath.IsEmpty())
	{
		return nullptr;
	}
	if (!ObjectPath.Contains(TEXT(".")))
	{
		const FString ShortName = FPackageName::GetShortName(ObjectPath);
		ObjectPath += TEXT(".");
		ObjectPath += ShortName;
	}
	return Cast<UDMXLibrary>(StaticLoadObject(UDMXLibrary::StaticClass(), nullptr, *ObjectPath, {}, LOAD_NoWarn | LOAD_Quiet));
}

std::vector<UDMXLibrary*> FindLibrariesInMemory()
{
	std::vector<std::pair<std::string, UDMXLibrary*>> Found;
	FHeadlessObjectRegistry::Get().ForEachObject([&Found](UObject* Object)
	{
		UDMXLibrary* Library = Cast<UDMXLibrary>(Object);
		if (Library != nullptr && !Library->IsGarbage() && !Library->IsTemplate())
		{
			Found.emplace_back(ToUTF8(Library->GetPathName()), Library);
		}
	});
	std::sort(Found.begin(), Found.end(), [](const auto& A, const auto& B) { return A.first < B.first; });
	std::vector<UDMXLibrary*> Libraries;
	for (const auto& [Path, Library] : Found)
	{
		Libraries.push_back(Library);
	}
	return Libraries;
}

#include "LibraryReport.h"
#include "KestDMXText.h"

#include <algorithm>
#include <iomanip>
#include <map>
#include <sstream>
#include <vector>

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "Misc/PackageName.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	// Writes the text and pads it with blanks to Width bytes.
	void WritePadded(std::ostringstream& Out, const std::string& Text, size_t Width)
	{
		Out << Text;
		if (Text.size() < Width)
		{
			Out << std::string(Width - Text.size(), ' ');
		}
	}

	std::string FormatChannels(int32 First, int32 Last)
	{
		std::ostringstream Out;
		Out << First;
		if (Last != First)
		{
			Out << '-' << Last;
		}
		return Out.str();
	}

	void WriteSignalFormat(std::ostringstream& Out, EDMXFixtureSignalFormat SignalFormat, bool bUseLSBMode)
	{
		Out << 8 * (static_cast<uint8>(SignalFormat) + 1) << " bit" << (bUseLSBMode ? " LSB" : "");
	}

	void WriteDistribution(std::ostringstream& Out, EDMXPixelMappingDistribution Distribution)
	{
		static const char* const Names[] =
		{
			"TopLeftToRight", "TopLeftToBottom", "TopLeftToClockwise", "TopLeftToAntiClockwise",
			"TopRightToLeft", "BottomLeftToTop", "TopRightToAntiClockwise", "BottomLeftToClockwise",
			"BottomLeftToRight", "TopRightToBottom", "BottomLeftAntiClockwise", "TopRightToClockwise",
			"BottomRightToLeft", "BottomRightToTop", "BottomRightToClockwise", "BottomRightToAntiClockwise",
		};
		const uint8 Value = static_cast<uint8>(Distribution);
		if (Value < 16)
		{
			Out << Names[Value];
		}
		else
		{
			Out << "distribution " << static_cast<int32>(Value);
		}
	}

	void WriteMode(std::ostringstream& Out, const FDMXFixtureMode& Mode, int32 ModeIndex)
	{
		Out << "    mode " << ModeIndex << " \"" << ToUTF8(Mode.ModeName) << "\": span " << Mode.ChannelSpan << (Mode.bAutoChannelSpan ? " (auto)" : " (manual)");
		if (Mode.Functions.Num() == 0 && !Mode.bFixtureMatrixEnabled)
		{
			Out << ", no functions";
		}
		Out << '\n';

		size_t NameWidth = 0;
		for (const FDMXFixtureFunction& Function : Mode.Functions)
		{
			NameWidth = std::max(NameWidth, ToUTF8(Function.FunctionName).size());
		}
		for (const FDMXFixtureFunction& Function : Mode.Functions)
		{
			Out << "      ch ";
			WritePadded(Out, FormatChannels(Function.Channel, Function.GetLastChannel()), 9);
			WritePadded(Out, ToUTF8(Function.FunctionName), NameWidth + 2);
			WritePadded(Out, ToUTF8(Function.Attribute.Name.ToString()), 12);
			WriteSignalFormat(Out, Function.DataType, Function.bUseLSBMode);
			Out << ", default " << Function.DefaultValue << '\n';
		}

		if (Mode.bFixtureMatrixEnabled)
		{
			const FDMXFixtureMatrix& Matrix = Mode.FixtureMatrixConfig;
			Out << "      ch ";
			WritePadded(Out, FormatChannels(Matrix.FirstCellChannel, Matrix.GetLastChannel()), 9);
			Out << "matrix " << Matrix.XCells << 'x' << Matrix.YCells << ' ';
			WriteDistribution(Out, Matrix.PixelMappingDistribution);
			Out << ", per cell:";
			if (Matrix.CellAttributes.Num() == 0)
			{
				Out << " nothing";
			}
			for (int32 CellIndex = 0; CellIndex < Matrix.CellAttributes.Num(); ++CellIndex)
			{
				const FDMXFixtureCellAttribute& CellAttribute = Matrix.CellAttributes[CellIndex];
				Out << (CellIndex == 0 ? " " : ", ") << ToUTF8(CellAttribute.Attribute.Name.ToString()) << ' ';
				WriteSignalFormat(Out, CellAttribute.DataType, CellAttribute.bUseLSBMode);
			}
			Out << '\n';
		}
	}

	void WriteFixtureType(std::ostringstream& Out, const UDMXEntityFixtureType* FixtureType)
	{
		Out << "  " << ToUTF8(FixtureType->Name) << " [" << ToUTF8(FixtureType->DMXCategory.Name.ToString()) << ']';
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

	struct FReportedPatch
	{
		const UDMXEntityFixturePatch* Patch = nullptr;
		int32 Start = 0;
		int32 End = 0;
		int32 Span = 0;
		std::vector<std::string> Overlaps;
	};

	// Marks every pair of patches of one universe whose channel ranges share a channel. Patches
	// without a span take no channels. The patches arrive sorted by starting channel.
	void FindOverlaps(std::vector<FReportedPatch*>& UniversePatches)
	{
		for (size_t First = 0; First < UniversePatches.size(); ++First)
		{
			FReportedPatch& A = *UniversePatches[First];
			if (A.Span <= 0)
			{
				continue;
			}
			for (size_t Second = First + 1; Second < UniversePatches.size() && UniversePatches[Second]->Start <= A.End; ++Second)
			{
				FReportedPatch& B = *UniversePatches[Second];
				if (B.Span <= 0)
				{
					continue;
				}
				A.Overlaps.push_back(ToUTF8(B.Patch->Name));
				B.Overlaps.push_back(ToUTF8(A.Patch->Name));
			}
		}
	}

	void WritePatchMode(std::ostringstream& Out, const UDMXEntityFixturePatch* Patch)
	{
		const UDMXEntityFixtureType* FixtureType = Patch->GetFixtureType();
		if (!FixtureType)
		{
			Out << "no fixture type";
			return;
		}
		const int32 ModeIndex = Patch->GetActiveModeIndex();
		Out << ToUTF8(FixtureType->Name) << ", mode " << ModeIndex;
		if (FixtureType->Modes.IsValidIndex(ModeIndex))
		{
			Out << " \"" << ToUTF8(FixtureType->Modes[ModeIndex].ModeName) << '"';
		}
	}
}

std::string FormatLibraryReport(UDMXLibrary* Library)
{
	if (!Library)
	{
		return "no DMX Library\n";
	}

	TArray<const UDMXEntityFixtureType*> FixtureTypes;
	std::vector<FReportedPatch> Patches;
	int32 EntityCount = 0;
	for (const UDMXEntity* Entity : Library->GetEntities())
	{
		++EntityCount;
		if (const UDMXEntityFixtureType* FixtureType = Cast<UDMXEntityFixtureType>(Entity))
		{
			FixtureTypes.Add(FixtureType);
		}
		else if (const UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Entity))
		{
			FReportedPatch Reported;
			Reported.Patch = Patch;
			Reported.Start = Patch->GetStartingChannel();
			Reported.End = Patch->GetEndingChannel();
			Reported.Span = Patch->GetChannelSpan();
			Patches.push_back(std::move(Reported));
		}
	}

	std::ostringstream Out;
	Out << "DMX Library " << ToUTF8(Library->GetPathName()) << '\n';
	Out << FixtureTypes.Num() << " fixture types, " << Patches.size() << " fixture patches, " << EntityCount << " entities\n";

	Out << "\nFixture types\n";
	if (FixtureTypes.Num() == 0)
	{
		Out << "  none\n";
	}
	for (const UDMXEntityFixtureType* FixtureType : FixtureTypes)
	{
		WriteFixtureType(Out, FixtureType);
	}

	std::map<int32, std::vector<FReportedPatch*>> Universes;
	for (FReportedPatch& Reported : Patches)
	{
		Universes[Reported.Patch->GetUniverseID()].push_back(&Reported);
	}
	for (auto& [Universe, UniversePatches] : Universes)
	{
		std::stable_sort(UniversePatches.begin(), UniversePatches.end(), [](const FReportedPatch* A, const FReportedPatch* B)
		{
			return A->Start < B->Start;
		});
		FindOverlaps(UniversePatches);
	}

	size_t NameWidth = 0;
	for (const FReportedPatch& Reported : Patches)
	{
		NameWidth = std::max(NameWidth, ToUTF8(Reported.Patch->Name).size());
	}

	int32 InvalidCount = 0;
	int32 OverlapCount = 0;
	Out << "\nFixture patches\n";
	if (Patches.empty())
	{
		Out << "  none\n";
	}
	for (const auto& [Universe, UniversePatches] : Universes)
	{
		Out << "  universe " << Universe << '\n';
		for (const FReportedPatch* Reported : UniversePatches)
		{
			const UDMXEntityFixturePatch* Patch = Reported->Patch;
			const std::string Channels = Reported->Span > 0 ? FormatChannels(Reported->Start, Reported->End) : std::to_string(Reported->Start) + " (no span)";
			Out << "    ch ";
			WritePadded(Out, Channels, 14);
			WritePadded(Out, ToUTF8(Patch->Name), NameWidth + 2);
			WritePatchMode(Out, Patch);
			Out << ", fixture id " << Patch->GetFixtureID() << '\n';

			FText Reason;
			if (!Patch->IsValidEntity(Reason))
			{
				++InvalidCount;
				Out << "       INVALID: " << ToUTF8(Reason.ToString()) << '\n';
			}
			if (!Reported->Overlaps.empty())
			{
				++OverlapCount;
				Out << "       OVERLAPS:";
				for (size_t Index = 0; Index < Reported->Overlaps.size(); ++Index)
				{
					Out << (Index == 0 ? " " : ", ") << Reported->Overlaps[Index];
				}
				Out << '\n';
			}
		}
	}

	Out << '\n' << Patches.size() << " patches in " << Universes.size() << " universes, " << InvalidCount << " invalid, " << OverlapCount << " overlapping\n";
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

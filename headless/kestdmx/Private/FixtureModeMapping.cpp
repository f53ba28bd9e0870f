// One fixture definition as one fixture type. Each mode's channels become functions in channel
// order: a coarse channel next to its fine byte becomes one 16-bit function, and heads that are
// alike and follow each other become the mode's matrix. Whatever stays as it is in the definition
// for want of a better mapping is noted with the reason.
#include "FixtureImport.h"

#include <algorithm>
#include <set>

namespace
{
	constexpr int32 MaxDMXChannel = 512;

	// One function to be: a channel alone, or a coarse channel with its fine byte.
	struct FChannelUnit
	{
		// The mode's channel number (from 0) of its first byte.
		int32 FirstChannel = 0;
		int32 NumChannels = 1;
		bool bUseLSB = false;
		// The head the unit lies in, or -1.
		int32 Head = -1;
		std::string Attribute;
		std::string Name;
		std::string Description;
		int64 DefaultValue = 0;
	};

	std::string Quote(const std::string& Text)
	{
		return "'" + Text + "'";
	}

	std::vector<std::string> SplitWords(const std::string& Text)
	{
		std::vector<std::string> Words(1);
		for (const char Character : FoldCase(Text))
		{
			if ((Character >= 'a' && Character <= 'z') || (Character >= '0' && Character <= '9'))
			{
				Words.back() += Character;
			}
			else if (!Words.back().empty())
			{
				Words.emplace_back();
			}
		}
		if (Words.back().empty())
		{
			Words.pop_back();
		}
		return Words;
	}

	bool IsNumber(const std::string& Word)
	{
		return !Word.empty() && std::all_of(Word.begin(), Word.end(), [](char Character) { return Character >= '0' && Character <= '9'; });
	}

	// Numbers in a channel name that tell channels apart ("Red 2"), not the resolution ("16 bit").
	std::set<std::string> GetNameNumbers(const std::vector<std::string>& Words)
	{
		std::set<std::string> Numbers;
		for (size_t Index = 0; Index < Words.size(); ++Index)
		{
			const bool bResolution = Index + 1 < Words.size() && (Words[Index + 1] == "bit" || Words[Index + 1] == "bits");
			if (IsNumber(Words[Index]) && !bResolution)
			{
				Numbers.insert(Words[Index]);
			}
		}
		return Numbers;
	}

	// The name calls the channel a fine or low byte, or the second half of a 16-bit value.
	bool NamesItselfFine(const std::vector<std::string>& Words)
	{
		for (size_t Index = 0; Index < Words.size(); ++Index)
		{
			const std::string& Word = Words[Index];
			const bool bSixteenBits = Word == "16bit" || Word == "16bits" || (Word == "16" && Index + 1 < Words.size() && Words[Index + 1].rfind("bit", 0) == 0);
			if (Word == "fine" || Word == "lsb" || Word == "low" || Word == "least" || bSixteenBits)
			{
				return true;
			}
		}
		return false;
	}

	// A coarse and a fine channel side by side make one value when they drive the same attribute,
	// the fine one says it is a fine byte (its preset does, or else its name), and their names do
	// not number them as different channels ("Gobo 1 LSB" beside "Gobo 2").
	bool BelongTogether(const FDefinitionChannel& Coarse, const FChannelAttribute& CoarseAttribute, const FDefinitionChannel& Fine, const FChannelAttribute& FineAttribute)
	{
		if (CoarseAttribute.bFine || !FineAttribute.bFine || FoldCase(CoarseAttribute.Attribute) != FoldCase(FineAttribute.Attribute))
		{
			return false;
		}
		const std::vector<std::string> FineWords = SplitWords(Fine.Name);
		if (Fine.Preset.empty() && !NamesItselfFine(FineWords))
		{
			return false;
		}
		const std::set<std::string> CoarseNumbers = GetNameNumbers(SplitWords(Coarse.Name));
		const std::set<std::string> FineNumbers = GetNameNumbers(FineWords);
		return CoarseNumbers.empty() || FineNumbers.empty() || CoarseNumbers == FineNumbers;
	}

	std::string DescribeCapabilities(const FDefinitionChannel& Channel)
	{
		const std::vector<FDefinitionCapability>& Capabilities = Channel.Capabilities;
		if (Capabilities.size() == 1 && Capabilities[0].Min == 0 && Capabilities[0].Max == 255)
		{
			return Capabilities[0].Text;
		}
		std::string Description;
		for (const FDefinitionCapability& Capability : Capabilities)
		{
			if (!Description.empty())
			{
				Description += "; ";
			}
			if (Capability.Min && Capability.Max)
			{
				Description += std::to_string(*Capability.Min) + (*Capability.Min != *Capability.Max ? "-" + std::to_string(*Capability.Max) : std::string()) + ": ";
			}
			Description += Capability.Text;
		}
		return Description;
	}

	// Picks Base, else Base + Separator + 2, 3, ... so that no two names of the set are equal
	// ignoring letter case (as the engine compares them).
	std::string MakeUnique(const std::string& Base, const char* Separator, std::set<std::string>& Taken)
	{
		std::string Name = Base;
		for (int32 Count = 2; Taken.count(FoldCase(Name)) != 0; ++Count)
		{
			Name = Base + Separator + std::to_string(Count);
		}
		Taken.insert(FoldCase(Name));
		return Name;
	}

	// The mode being mapped, with its fixture and where notes about it go.
	struct FModeSource
	{
		const FFixtureDefinition& Definition;
		const FDefinitionMode& Mode;
		std::vector<FImportNote>& Notes;
	};

	void NoteMode(const FModeSource& Source, const std::string& Text)
	{
		Source.Notes.push_back({Source.Definition.File, "mode " + Quote(Source.Mode.Name) + ": " + Text});
	}

	const FDefinitionChannel& GetModeChannel(const FModeSource& Source, int32 Number)
	{
		return Source.Definition.Channels[Source.Mode.Channels[static_cast<size_t>(Number)]];
	}

	// The head each channel lies in (the first that lists it), or -1.
	std::vector<int32> FindChannelHeads(const FDefinitionMode& Mode)
	{
		std::vector<int32> Heads(Mode.Channels.size(), -1);
		for (size_t Head = 0; Head < Mode.Heads.size(); ++Head)
		{
			for (const int32 Number : Mode.Heads[Head])
			{
				if (Number >= 0 && static_cast<size_t>(Number) < Heads.size() && Heads[Number] < 0)
				{
					Heads[Number] = static_cast<int32>(Head);
				}
			}
		}
		return Heads;
	}

	FChannelUnit MakeUnit(const FModeSource& Source, int32 Number, int32 Head, const FChannelAttribute& Attribute)
	{
		const FDefinitionChannel& Channel = GetModeChannel(Source, Number);
		FChannelUnit Unit;
		Unit.FirstChannel = Number;
		Unit.Head = Head;
		Unit.Attribute = Attribute.bFine ? Attribute.Attribute + "Fine" : Attribute.Attribute;
		Unit.Name = Channel.Name;
		Unit.Description = DescribeCapabilities(Channel);
		Unit.DefaultValue = Channel.DefaultValue;
		return Unit;
	}

	void NoteLoneFineChannel(const FModeSource& Source, int32 Number, const std::vector<FChannelAttribute>& Attributes, const std::vector<int32>& Heads)
	{
		const FChannelAttribute& Attribute = Attributes[Number];
		std::string Neighbour;
		for (const int32 Other : {Number - 1, Number + 1})
		{
			const bool bInMode = Other >= 0 && static_cast<size_t>(Other) < Attributes.size();
			if (bInMode && Neighbour.empty() && Heads[Other] == Heads[Number]
				&& !Attributes[Other].bFine && FoldCase(Attributes[Other].Attribute) == FoldCase(Attribute.Attribute))
			{
				Neighbour = GetModeChannel(Source, Other).Name;
			}
		}
		const std::string Kept = "; kept as the 8-bit function " + Attribute.Attribute + "Fine";
		if (Neighbour.empty())
		{
			NoteMode(Source, "fine channel " + Quote(GetModeChannel(Source, Number).Name) + " has no coarse " + Attribute.Attribute + " channel beside it" + Kept);
		}
		else
		{
			NoteMode(Source, "fine channel " + Quote(GetModeChannel(Source, Number).Name) + " and " + Quote(Neighbour) + " do not read as one 16-bit value" + Kept);
		}
	}

	// The mode's channels in order as functions to be, pairing coarse and fine channels of one
	// head (or of none): coarse before fine is the usual order, fine before coarse is LSB.
	std::vector<FChannelUnit> MakeUnits(const FModeSource& Source)
	{
		const int32 Count = static_cast<int32>(Source.Mode.Channels.size());
		std::vector<FChannelAttribute> Attributes;
		for (int32 Number = 0; Number < Count; ++Number)
		{
			Attributes.push_back(MapChannelAttribute(GetModeChannel(Source, Number)));
		}
		const std::vector<int32> Heads = FindChannelHeads(Source.Mode);
		const auto Pairs = [&Source, &Attributes, &Heads, Count](int32 CoarseNumber, int32 FineNumber)
		{
			if (CoarseNumber < 0 || FineNumber < 0 || CoarseNumber >= Count || FineNumber >= Count
				|| Heads[CoarseNumber] != Heads[FineNumber])
			{
				return false;
			}
			return BelongTogether(GetModeChannel(Source, CoarseNumber), Attributes[CoarseNumber], GetModeChannel(Source, FineNumber), Attributes[FineNumber]);
		};

		std::vector<FChannelUnit> Units;
		for (int32 Number = 0; Number < Count; ++Number)
		{
			FChannelUnit Unit;
			const int32 Head = Heads[Number];
			if (Pairs(Number, Number + 1))
			{
				Unit = MakeUnit(Source, Number, Head, Attributes[Number]);
				Unit.NumChannels = 2;
				Unit.DefaultValue = Unit.DefaultValue * 256 + GetModeChannel(Source, Number + 1).DefaultValue;
			}
			else if (Pairs(Number + 1, Number) && !Pairs(Number + 1, Number + 2))
			{
				Unit = MakeUnit(Source, Number + 1, Head, Attributes[Number + 1]);
				Unit.FirstChannel = Number;
				Unit.NumChannels = 2;
				Unit.bUseLSB = true;
				Unit.DefaultValue = Unit.DefaultValue * 256 + GetModeChannel(Source, Number).DefaultValue;
			}
			else
			{
				Unit = MakeUnit(Source, Number, Head, Attributes[Number]);
				if (Attributes[Number].bFine)
				{
					NoteLoneFineChannel(Source, Number, Attributes, Heads);
				}
			}
			Number += Unit.NumChannels - 1;
			Units.push_back(std::move(Unit));
		}
		return Units;
	}

	// Why the heads cannot be the mode's matrix; empty when they can: at least two heads, each
	// a run of channels, one right after the other, all with the same functions.
	std::string CheckHeads(const FDefinitionMode& Mode, const std::vector<FChannelUnit>& Units)
	{
		const std::vector<std::vector<int32>>& Heads = Mode.Heads;
		if (!Mode.HeadProblem.empty())
		{
			return Mode.HeadProblem;
		}
		if (Heads.size() < 2)
		{
			return "it has a single head";
		}
		std::vector<int32> Owner(Mode.Channels.size(), -1);
		int32 PreviousLast = -1;
		for (size_t Head = 0; Head < Heads.size(); ++Head)
		{
			const std::string HeadName = "head " + std::to_string(Head + 1);
			std::vector<int32> Numbers = Heads[Head];
			if (Numbers.empty())
			{
				return HeadName + " has no channels";
			}
			std::sort(Numbers.begin(), Numbers.end());
			for (const int32 Number : Numbers)
			{
				if (Number < 0 || static_cast<size_t>(Number) >= Owner.size())
				{
					return HeadName + " names channel " + std::to_string(Number) + ", which the mode does not have";
				}
				if (Owner[Number] >= 0)
				{
					return "heads " + std::to_string(Owner[Number] + 1) + " and " + std::to_string(Head + 1) + " share channel " + std::to_string(Number);
				}
				Owner[Number] = static_cast<int32>(Head);
			}
			if (Numbers.back() - Numbers.front() + 1 != static_cast<int32>(Numbers.size()))
			{
				return "the channels of " + HeadName + " are not next to each other";
			}
			if (Head > 0 && Numbers.front() < PreviousLast)
			{
				return "the heads are not in channel order";
			}
			if (Head > 0 && Numbers.front() != PreviousLast + 1)
			{
				return "channels between head " + std::to_string(Head) + " and " + HeadName + " belong to no head";
			}
			PreviousLast = Numbers.back();
		}

		const auto HeadUnits = [&Units](int32 Head)
		{
			std::vector<const FChannelUnit*> Result;
			for (const FChannelUnit& Unit : Units)
			{
				if (Unit.Head == Head)
				{
					Result.push_back(&Unit);
				}
			}
			return Result;
		};
		const std::vector<const FChannelUnit*> First = HeadUnits(0);
		for (int32 Head = 1; Head < static_cast<int32>(Heads.size()); ++Head)
		{
			const std::vector<const FChannelUnit*> Other = HeadUnits(Head);
			for (size_t Index = 0; Index < std::max(First.size(), Other.size()); ++Index)
			{
				if (Index >= First.size() || Index >= Other.size())
				{
					return "head " + std::to_string(Head + 1) + " has " + std::to_string(Other.size()) + " functions, head 1 has " + std::to_string(First.size());
				}
				const FChannelUnit& A = *First[Index];
				const FChannelUnit& B = *Other[Index];
				if (FoldCase(A.Attribute) != FoldCase(B.Attribute) || A.NumChannels != B.NumChannels || A.bUseLSB != B.bUseLSB || A.DefaultValue != B.DefaultValue)
				{
					return Quote(B.Name) + " of head " + std::to_string(Head + 1) + " differs from " + Quote(A.Name) + " of head 1";
				}
			}
		}
		const int32 FirstCellChannel = First.front()->FirstChannel + 1;
		if (FirstCellChannel > MaxDMXChannel)
		{
			return "the heads start at channel " + std::to_string(FirstCellChannel) + ", past channel 512 where a matrix must start";
		}
		if (Heads.size() > static_cast<size_t>(MaxDMXChannel))
		{
			return "it has more than 512 heads";
		}
		return std::string();
	}

	FImportMatrix MakeMatrix(const FModeSource& Source, const std::vector<FChannelUnit>& Units)
	{
		FImportMatrix Matrix;
		const int32 HeadCount = static_cast<int32>(Source.Mode.Heads.size());
		const FDefinitionPhysical& Physical = Source.Mode.Physical ? *Source.Mode.Physical : Source.Definition.Physical;
		if (Physical.LayoutWidth * Physical.LayoutHeight == HeadCount)
		{
			Matrix.XCells = Physical.LayoutWidth;
			Matrix.YCells = Physical.LayoutHeight;
		}
		else
		{
			Matrix.XCells = HeadCount;
		}
		std::set<std::string> TakenAttributes;
		for (const FChannelUnit& Unit : Units)
		{
			if (Unit.Head != 0)
			{
				continue;
			}
			if (Matrix.CellAttributes.empty())
			{
				Matrix.FirstCellChannel = Unit.FirstChannel + 1;
			}
			FImportCellAttribute CellAttribute;
			CellAttribute.Attribute = MakeUnique(Unit.Attribute, "", TakenAttributes);
			CellAttribute.Description = Unit.Description;
			CellAttribute.DefaultValue = Unit.DefaultValue;
			CellAttribute.NumChannels = Unit.NumChannels;
			CellAttribute.bUseLSB = Unit.bUseLSB;
			Matrix.CellAttributes.push_back(std::move(CellAttribute));
		}
		return Matrix;
	}

	FImportFunction MakeFunction(const FModeSource& Source, const FChannelUnit& Unit, std::set<std::string>& TakenAttributes, std::set<std::string>& TakenNames)
	{
		FImportFunction Function;
		Function.Attribute = MakeUnique(Unit.Attribute, "", TakenAttributes);
		Function.Name = MakeUnique(Unit.Name, " ", TakenNames);
		Function.Description = Unit.Description;
		Function.DefaultValue = Unit.DefaultValue;
		Function.NumChannels = Unit.NumChannels;
		Function.bUseLSB = Unit.bUseLSB;

		const FDefinitionPhysical& Physical = Source.Mode.Physical ? *Source.Mode.Physical : Source.Definition.Physical;
		// The mode's Pan and Tilt get the fixture's range; further pan or tilt channels (Pan2, ...)
		// are controls or other motors whose range the definition does not give.
		const double Degrees = Function.Attribute == "Pan" ? Physical.PanMax : Function.Attribute == "Tilt" ? Physical.TiltMax : 0.0;
		if (Degrees > 0.0)
		{
			// The engine takes the default as a fraction of the range it has then (0..1) and keeps
			// that fraction when the range follows; half a step above the value truncates back to it.
			const double MaxValue = Unit.NumChannels == 2 ? 65535.0 : 255.0;
			Function.PhysicalRange = FImportPhysicalRange{0.0, Degrees, std::min(1.0, (static_cast<double>(Unit.DefaultValue) + 0.5) / MaxValue)};
		}
		return Function;
	}

	FImportMode MapMode(const FModeSource& Source)
	{
		FImportMode Result;
		Result.ChannelCount = static_cast<int32>(Source.Mode.Channels.size());
		const std::vector<FChannelUnit> Units = MakeUnits(Source);
		bool bMatrix = false;
		if (!Source.Mode.Heads.empty())
		{
			const std::string Problem = CheckHeads(Source.Mode, Units);
			bMatrix = Problem.empty();
			if (bMatrix)
			{
				Result.Matrix = MakeMatrix(Source, Units);
			}
			else
			{
				NoteMode(Source, "heads kept as separate functions: " + Problem);
			}
		}
		std::set<std::string> TakenAttributes;
		std::set<std::string> TakenNames;
		for (const FChannelUnit& Unit : Units)
		{
			if (!bMatrix || Unit.Head < 0)
			{
				Result.Functions.push_back(MakeFunction(Source, Unit, TakenAttributes, TakenNames));
			}
		}
		if (Result.ChannelCount == 0)
		{
			NoteMode(Source, "it has no channels");
		}
		if (Result.ChannelCount > MaxDMXChannel)
		{
			NoteMode(Source, "it has " + std::to_string(Result.ChannelCount) + " channels, more than the 512 of a universe; imported as it is, but no patch of it fits a universe");
		}
		return Result;
	}
}

FImportFixtureType MapFixtureDefinition(const FFixtureDefinition& Definition, std::vector<FImportNote>& OutNotes)
{
	for (const std::string& Note : Definition.Notes)
	{
		OutNotes.push_back({Definition.File, Note});
	}
	FImportFixtureType FixtureType;
	FixtureType.Name = Definition.Manufacturer + " " + Definition.Model;
	FixtureType.Category = MapFixtureCategory(Definition.Type);
	FixtureType.Manufacturer = Definition.Manufacturer;
	FixtureType.LibraryPath = MakeManufacturerLibraryPath(Definition.Manufacturer);
	FixtureType.SourceFile = Definition.File;

	std::set<std::string> TakenModeNames;
	for (const FDefinitionMode& Mode : Definition.Modes)
	{
		FImportMode Mapped = MapMode(FModeSource{Definition, Mode, OutNotes});
		Mapped.Name = MakeUnique(Mode.Name.empty() ? std::string("Mode") : Mode.Name, " ", TakenModeNames);
		FixtureType.Modes.push_back(std::move(Mapped));
	}
	return FixtureType;
}

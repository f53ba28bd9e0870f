// The schema's look-ups, and the texts the module parses (data types, distributions, kinds).
#include "KestDMXSchema.h"

#include <algorithm>

namespace
{
	bool ContainsIgnoringCase(const std::vector<std::string>& Texts, std::string_view Text)
	{
		const std::string Lower = ToLowerASCII(Text);
		return std::any_of(Texts.begin(), Texts.end(), [&Lower](const std::string& Candidate) { return ToLowerASCII(Candidate) == Lower; });
	}

	template <typename ItemType>
	const ItemType* FindByName(const std::vector<ItemType>& Items, std::string_view Name)
	{
		for (const ItemType& Item : Items)
		{
			if (Item.Name == Name)
			{
				return &Item;
			}
		}
		return nullptr;
	}
}

std::string ToLowerASCII(std::string_view Text)
{
	std::string Lower(Text);
	for (char& Character : Lower)
	{
		if (Character >= 'A' && Character <= 'Z')
		{
			Character = static_cast<char>(Character - 'A' + 'a');
		}
	}
	return Lower;
}

bool FKestTextSet::Accepts(std::string_view Text) const
{
	return ContainsIgnoringCase(Accepted, Text);
}

bool FKestTextSet::Rejects(std::string_view Text) const
{
	return ContainsIgnoringCase(Rejected, Text);
}

std::string FKestTextSet::GetValue(std::string_view Text) const
{
	const std::string Lower = ToLowerASCII(Text);
	for (size_t Index = 0; Index < Accepted.size(); ++Index)
	{
		if (ToLowerASCII(Accepted[Index]) == Lower)
		{
			return Index < Values.size() ? Values[Index] : Accepted[Index];
		}
	}
	return std::string();
}

const FKestField* FKestClass::FindField(std::string_view FieldName) const
{
	return FindByName(Fields, FieldName);
}

const FKestFunction* FKestGlobal::FindFunction(std::string_view FunctionName) const
{
	return FindByName(Functions, FunctionName);
}

const FKestGlobal* FKestSchema::FindGlobal(std::string_view Name) const
{
	return FindByName(Globals, Name);
}

const FKestClass* FKestSchema::FindClass(std::string_view Name) const
{
	return FindByName(Classes, Name);
}

const FKestTextSet* FKestSchema::FindTextSet(std::string_view Alias) const
{
	for (const FKestTextSet& TextSet : TextSets)
	{
		if (TextSet.Alias == Alias)
		{
			return &TextSet;
		}
	}
	return nullptr;
}

std::vector<FKestTextSet> MakeKestDMXTextSets()
{
	std::vector<FKestTextSet> TextSets;
	TextSets.push_back({"DMXEntityKind", "What a library method acts on (letter case is ignored)", {"fixture_type", "fixture_patch"}, {}});
	TextSets.push_back({"DMXDataType", "A signal format (letter case is ignored); any other text keeps the current format, 8 bit for a new function",
		{"8bit", "16bit", "24bit", "32bit", "E8Bit", "E16Bit", "E24Bit", "E32Bit"}, {},
		{"E8Bit", "E16Bit", "E24Bit", "E32Bit", "E8Bit", "E16Bit", "E24Bit", "E32Bit"}});
	// TopLeftToRight is what info() reports by default, and the other ten are the engine's, but
	// none of them can be set from a script.
	TextSets.push_back({"DMXDistribution", "A pixel mapping distribution a script can set (letter case is ignored); any other text keeps the current one",
		{"TopLeftToBottom", "TopLeftToClockwise", "TopLeftToAntiClockwise", "TopRightToLeft", "BottomLeftToTop", "BottomRightToClockwise"},
		{"TopLeftToRight", "TopRightToAntiClockwise", "BottomLeftToClockwise", "BottomLeftToRight", "TopRightToBottom", "BottomLeftAntiClockwise",
			"TopRightToClockwise", "BottomRightToLeft", "BottomRightToTop", "BottomRightToAntiClockwise"}});
	TextSets.push_back({"DMXSignalFormatName", "A signal format as info() reports it", {"E8Bit", "E16Bit", "E24Bit", "E32Bit"}, {}});
	TextSets.push_back({"DMXDistributionName", "A pixel mapping distribution as info() reports it",
		{"TopLeftToRight", "TopLeftToBottom", "TopLeftToClockwise", "TopLeftToAntiClockwise", "TopRightToLeft", "BottomLeftToTop", "BottomRightToClockwise"}, {}});
	return TextSets;
}

const FKestSchema& GetKestDMXSchema()
{
	static const FKestSchema Schema = []()
	{
		FKestSchema Built;
		Built.TextSets = MakeKestDMXTextSets();
		Built.Classes = MakeKestDMXParamsClasses();
		std::vector<FKestClass> Results = MakeKestDMXResultClasses();
		Built.Classes.insert(Built.Classes.end(), Results.begin(), Results.end());
		Built.Globals = MakeKestDMXGlobals();
		return Built;
	}();
	return Schema;
}

#include "inspection/DMXFixturePatchInfo.h"

#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "inspection/DMXEnumText.h"
#include "inspection/DMXInfoText.h"

namespace
{
	// Walks an attribute map in its iteration order into a sequence of two-key tables: "attribute"
	// first, then ValueKey with whatever SetValue stores.
	template <typename ValueType, typename SetValueFn>
	sol::table BuildAttributeList(sol::this_state S, const TMap<FDMXAttributeName, ValueType>& Map, const char* ValueKey, SetValueFn SetValue)
	{
		sol::state_view Lua(S);
		sol::table List = Lua.create_table(Map.Num(), 0);
		int32 Index = 1;
		for (const TPair<FDMXAttributeName, ValueType>& Pair : Map)
		{
			sol::table Element = Lua.create_table(0, 2);
			SetTextField(Element, "attribute", Pair.Key.Name.ToString());
			SetValue(Element, ValueKey, Pair.Value);
			List.set(Index++, Element);
		}
		return List;
	}

	sol::table BuildTagList(sol::this_state S, const TArray<FName>& Tags)
	{
		sol::state_view Lua(S);
		sol::table List = Lua.create_table(Tags.Num(), 0);
		for (int32 TagIndex = 0; TagIndex < Tags.Num(); ++TagIndex)
		{
			SetTextElement(List, TagIndex + 1, Tags[TagIndex].ToString());
		}
		return List;
	}
}

sol::table BuildAttributeDefaultList(sol::this_state S, const TMap<FDMXAttributeName, int32>& DefaultMap)
{
	return BuildAttributeList(S, DefaultMap, "value", [](sol::table& Element, const char* Key, int32 Value)
	{
		Element.set(Key, Value);
	});
}

sol::table BuildAttributeChannelList(sol::this_state S, const TMap<FDMXAttributeName, int32>& ChannelMap)
{
	return BuildAttributeList(S, ChannelMap, "channel", [](sol::table& Element, const char* Key, int32 Channel)
	{
		Element.set(Key, Channel);
	});
}

sol::table BuildAttributeSignalFormatList(sol::this_state S, const TMap<FDMXAttributeName, EDMXFixtureSignalFormat>& SignalFormatMap)
{
	return BuildAttributeList(S, SignalFormatMap, "data_type", [](sol::table& Element, const char* Key, EDMXFixtureSignalFormat SignalFormat)
	{
		Element.set(Key, SignalFormatToText(SignalFormat));
	});
}

sol::table BuildDefaultRawChannelList(sol::this_state S, const TMap<int32, uint8>& RawMap)
{
	sol::state_view Lua(S);
	TArray<int32> Channels;
	RawMap.GetKeys(Channels);
	Channels.Sort();

	sol::table List = Lua.create_table(Channels.Num(), 0);
	int32 Index = 1;
	for (const int32 Channel : Channels)
	{
		const uint8* Value = RawMap.Find(Channel);
		sol::table Element = Lua.create_table(0, 2);
		Element.set("channel", Channel);
		Element.set("value", static_cast<int32>(Value ? *Value : 0));
		List.set(Index++, Element);
	}
	return List;
}

sol::table BuildFixturePatchInfoTable(sol::this_state S, const UDMXEntityFixturePatch* FixturePatch)
{
	sol::state_view Lua(S);
	sol::table Info = Lua.create_table(0, 25);
	SetTextField(Info, "name", FixturePatch->Name);

	const UDMXEntityFixtureType* FixtureType = FixturePatch->GetFixtureType();
	SetTextField(Info, "fixture_type", FixtureType ? FixtureType->Name : FString());

	Info.set("universe", FixturePatch->GetUniverseID());
	Info.set("starting_channel", FixturePatch->GetStartingChannel());
	Info.set("ending_channel", FixturePatch->GetEndingChannel());
	Info.set("channel_span", FixturePatch->GetChannelSpan());
	Info.set("active_mode_index", FixturePatch->GetActiveModeIndex());
	Info.set("fixture_id", FixturePatch->GetFixtureID());

	FString MVRFixtureUUID;
	FixturePatch->GetMVRFixtureUUID().AppendString(MVRFixtureUUID, EGuidFormats::Digits);
	SetTextField(Info, "mvr_fixture_uuid", MVRFixtureUUID);

	FText InvalidReason;
	const bool bValid = FixturePatch->IsValidEntity(InvalidReason);
	Info.set("valid", bValid);
	SetTextField(Info, "validity_reason", InvalidReason.ToString());

	Info.set("receive_dmx_in_editor", FixturePatch->bReceiveDMXInEditor);
	Info.set("editor_color_r", static_cast<double>(FixturePatch->EditorColor.R));
	Info.set("editor_color_g", static_cast<double>(FixturePatch->EditorColor.G));
	Info.set("editor_color_b", static_cast<double>(FixturePatch->EditorColor.B));
	Info.set("editor_color_a", static_cast<double>(FixturePatch->EditorColor.A));

	const TArray<FName>& Tags = FixturePatch->GetCustomTags();
	Info.set("tags", BuildTagList(S, Tags));
	Info.set("tag_count", Tags.Num());

	const TMap<FDMXAttributeName, int32> DefaultMap = FixturePatch->GetAttributeDefaultMap();
	const TMap<FDMXAttributeName, int32> ChannelMap = FixturePatch->GetAttributeChannelAssignments();
	const TMap<FDMXAttributeName, EDMXFixtureSignalFormat> SignalFormatMap = FixturePatch->GetAttributeSignalFormats();

	Info.set("attribute_default_count", DefaultMap.Num());
	Info.set("attribute_defaults", BuildAttributeDefaultList(S, DefaultMap));
	Info.set("attribute_channel_count", ChannelMap.Num());
	Info.set("attribute_channels", BuildAttributeChannelList(S, ChannelMap));
	Info.set("attribute_signal_format_count", SignalFormatMap.Num());
	Info.set("attribute_signal_formats", BuildAttributeSignalFormatList(S, SignalFormatMap));

	const TMap<FDMXAttributeName, int32> DefaultMapCopy = DefaultMap;
	const TMap<int32, uint8> RawMap = FixturePatch->ConvertAttributeMapToRawMap(DefaultMapCopy);
	Info.set("default_raw_channels", BuildDefaultRawChannelList(S, RawMap));
	return Info;
}

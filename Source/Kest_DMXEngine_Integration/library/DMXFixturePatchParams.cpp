#include "library/DMXFixturePatchParams.h"

#include "Library/DMXEntityFixturePatch.h"
#include "library/DMXParamsLists.h"
#include "module/DMXLuaParams.h"

void ReplaceFixturePatchTags(UDMXEntityFixturePatch* FixturePatch, const sol::object& TagList)
{
	FixturePatch->CustomTags.Reset();
	ForEachParamsListValue(TagList, [FixturePatch](lua_State* L, int ValueIndex)
	{
		if (lua_type(L, ValueIndex) == LUA_TSTRING)
		{
			const FString Tag = ConvertLuaText(std::string(lua_tostring(L, ValueIndex)));
			FixturePatch->CustomTags.Add(FName(*Tag));
		}
	});
}

void ApplyFixturePatchEditorColor(UDMXEntityFixturePatch* FixturePatch, sol::table ColorParams)
{
	const FLinearColor Current = FixturePatch->EditorColor;
	const double Alpha = GetNumberParam(ColorParams, "a", Current.A);
	const double Blue = GetNumberParam(ColorParams, "b", Current.B);
	const double Green = GetNumberParam(ColorParams, "g", Current.G);
	const double Red = GetNumberParam(ColorParams, "r", Current.R);
	FixturePatch->EditorColor = FLinearColor(static_cast<float>(Red), static_cast<float>(Green), static_cast<float>(Blue), static_cast<float>(Alpha));
}

void ApplyFixturePatchTagsReceiveAndColor(UDMXEntityFixturePatch* FixturePatch, sol::table Params)
{
	const sol::object TagList = GetNestedParam(Params, "tags");
	if (TagList.valid())
	{
		ReplaceFixturePatchTags(FixturePatch, TagList);
	}
	FixturePatch->bReceiveDMXInEditor = GetBoolParam(Params, "receive_dmx_in_editor", FixturePatch->bReceiveDMXInEditor);
	const sol::object ColorParams = GetNestedParam(Params, "editor_color");
	if (ColorParams.valid())
	{
		ApplyFixturePatchEditorColor(FixturePatch, ColorParams.as<sol::table>());
	}
}

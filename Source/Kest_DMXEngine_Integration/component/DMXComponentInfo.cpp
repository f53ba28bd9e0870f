#include "component/DMXComponentInfo.h"

#include "GameFramework/Actor.h"
#include "Game/DMXComponent.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "UObject/UnrealType.h"
#include "module/DMXLuaParams.h"

namespace
{
	// Read by name on purpose: the flag is protected in the component, and reflection sees it as
	// the details panel does.
	bool GetReceiveDMXFromPatch(const UDMXComponent* Component)
	{
		const FBoolProperty* ReceiveProperty = FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("bReceiveDMXFromPatch"));
		return ReceiveProperty != nullptr && ReceiveProperty->GetPropertyValue_InContainer(Component);
	}

	sol::table MakeComponentEntry(sol::state_view& Lua, UDMXComponent* Component)
	{
		UDMXEntityFixturePatch* FixturePatch = Component->GetFixturePatch();
		UDMXEntityFixtureType* FixtureType = FixturePatch != nullptr ? FixturePatch->GetFixtureType() : nullptr;

		sol::table Entry = Lua.create_table();
		Entry.set("name", ConvertEngineText(Component->GetName()));
		Entry.set("registered", Component->IsRegistered());
		Entry.set("receive_dmx_from_patch", GetReceiveDMXFromPatch(Component));
		Entry.set("tick_enabled", Component->IsComponentTickEnabled());
		Entry.set("fixture_patch", FixturePatch != nullptr ? ConvertEngineText(FixturePatch->Name) : std::string());
		Entry.set("fixture_type", FixtureType != nullptr ? ConvertEngineText(FixtureType->Name) : std::string());
		Entry.set("universe", FixturePatch != nullptr ? FixturePatch->GetUniverseID() : 0);
		Entry.set("starting_channel", FixturePatch != nullptr ? FixturePatch->GetStartingChannel() : 0);
		return Entry;
	}
}

sol::table MakeDMXComponentInfoTable(AActor* Actor, sol::this_state S)
{
	sol::state_view Lua(S);
	sol::table Info = Lua.create_table();
	Info.set("valid", Actor != nullptr);
	if (Actor == nullptr)
	{
		Info.set("component_count", 0);
		Info.set("components", Lua.create_table());
		return Info;
	}

	Info.set("actor_label", ConvertEngineText(Actor->GetActorLabel(true)));
	Info.set("actor_name", ConvertEngineText(Actor->GetName()));

	TArray<UDMXComponent*> Components;
	Actor->GetComponents(Components);
	sol::table Entries = Lua.create_table();
	int32 EntryCount = 0;
	for (UDMXComponent* Component : Components)
	{
		if (Component != nullptr)
		{
			++EntryCount;
			Entries.set(EntryCount, MakeComponentEntry(Lua, Component));
		}
	}
	Info.set("component_count", EntryCount);
	Info.set("components", Entries);
	return Info;
}

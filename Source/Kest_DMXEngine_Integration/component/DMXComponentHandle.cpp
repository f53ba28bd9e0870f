#include "component/DMXComponentHandle.h"

#include "component/DMXComponentAdd.h"
#include "component/DMXComponentConfigure.h"
#include "component/DMXComponentInfo.h"
#include "component/DMXComponentLookup.h"
#include "module/DMXLuaParams.h"

sol::object OpenDMXComponentHandle(const std::string& Actor, sol::this_state CallerState)
{
	sol::state_view Lua(CallerState);
	AActor* ResolvedActor = FindEditorActorByNameOrLabel(ConvertLuaText(Actor));

	sol::table Handle = Lua.create_table();
	Handle.set("valid", ResolvedActor != nullptr);
	Handle.set("actor", Actor);
	Handle.set_function("info", [ResolvedActor](sol::table Self, sol::this_state S) -> sol::object
	{
		return MakeDMXComponentInfoTable(ResolvedActor, S);
	});
	Handle.set_function("add", [ResolvedActor](sol::table Self, sol::table Params, sol::this_state S) -> sol::object
	{
		return AddDMXComponent(ResolvedActor, Params, S);
	});
	Handle.set_function("configure", [ResolvedActor](sol::table Self, const std::string& Component, sol::table Params, sol::this_state S) -> sol::object
	{
		return ConfigureDMXComponent(ResolvedActor, Component, Params, S);
	});
	return Handle;
}

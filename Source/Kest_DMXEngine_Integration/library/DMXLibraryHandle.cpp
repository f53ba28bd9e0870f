#include "library/DMXLibraryHandle.h"

#include "Library/DMXLibrary.h"
#include "inspection/DMXLibraryInfo.h"
#include "library/DMXLibraryAdd.h"
#include "library/DMXLibraryConfigure.h"
#include "library/DMXLibraryLookup.h"
#include "library/DMXLibraryRemove.h"
#include "module/DMXLuaParams.h"

sol::object OpenDMXLibraryHandle(const std::string& Path, sol::this_state S)
{
	sol::state_view Lua(S);
	UDMXLibrary* Library = LoadDMXLibrary(ConvertLuaText(Path));

	// The methods keep the library resolved now; they do not look the path up again.
	sol::table Handle = Lua.create_table();
	Handle.set("valid", Library != nullptr);
	Handle.set("path", Path);
	Handle.set_function("info", [Library](sol::table Self, sol::this_state CallState) -> sol::object
	{
		return BuildLibraryInfoTable(CallState, Library);
	});
	Handle.set_function("add", [Library](sol::table Self, const std::string& Kind, sol::table Params, sol::this_state CallState) -> sol::object
	{
		return AddDMXLibraryEntity(Library, Kind, Params, CallState);
	});
	Handle.set_function("configure", [Library](sol::table Self, const std::string& Kind, const std::string& Name, sol::table Params) -> bool
	{
		return ConfigureDMXLibraryEntity(Library, Kind, Name, Params);
	});
	Handle.set_function("remove", [Library](sol::table Self, const std::string& Kind, const std::string& Name) -> bool
	{
		return RemoveDMXLibraryEntity(Library, Kind, Name);
	});
	return Handle;
}

// `kestdmx check`: what the module silently did with a script's arguments. A check session wraps the
// module's globals (and the methods of the handles they answer) so that every call is read against
// the schema before it runs and compared with what the engine holds after it; the arguments,
// results and errors pass through untouched. `kestdmx run` never installs any of this.
#pragma once

#include <map>
#include <string>
#include <vector>
#include <nlohmann/json.hpp>
#include "CoreMinimal.h"
#include "UObject/WeakObjectPtrTemplates.h"

class AActor;
class FKestDMXSession;
class UDMXLibrary;
struct lua_State;

struct FKestCheckFinding
{
	std::string File;
	int Line = 0;
	std::string Code;
	std::string Message;
	// The call the finding is about, as the script wrote it: dmx_library("/Game/DMX/Stage"):add("fixture_patch").
	std::string Call;
	// Where in the arguments: "universe", "modes[1].functions[3].data_type"; empty for the call as a whole.
	std::string Key;
	// The value given and the value used; null where there is none (or the setting kept its value).
	nlohmann::json Given;
	nlohmann::json Used;
};

// A place in a script.
struct FKestCheckSite
{
	std::string File;
	int Line = 0;
	std::string Call;
	// Later calls have higher numbers.
	int Order = 0;
};

// What a handle of a wrapped global was opened on.
struct FKestCheckHandle
{
	std::string Global;
	std::string Argument;
	bool bValid = false;
	TWeakObjectPtr<UDMXLibrary> Library;
	TWeakObjectPtr<AActor> Actor;
};

// One check session: its findings and what it knows about the calls so far. Create it before the
// session it is installed on and keep it until that session is gone.
struct FKestCheckLog
{
	std::vector<FKestCheckFinding> Findings;
	std::vector<FKestCheckHandle> Handles;
	// The last call that added or changed each fixture patch, or changed or removed its fixture type,
	// by the patch's id (32 hexadecimal digits).
	std::map<std::string, FKestCheckSite> PatchSites;
	// The most recent call site seen, for calls that start outside any script line.
	FKestCheckSite LastSite;
	int SiteCount = 0;
	// Calls pass through unobserved once the run is over (finalizers at shutdown may still call).
	bool bActive = true;
};

// Wraps dmx_library, dmx_component and dmx_subsystem of the session's Lua state so that their calls
// and their handles' method calls are reported to Log.
void InstallKestDMXCheck(FKestDMXSession& Session, FKestCheckLog& Log);

// The findings about the state the scripts left: every invalid fixture patch and every pair of
// patches sharing channels in a universe, in every DMX Library of the editor. Patches no call
// touched are reported at their library's file in ProjectDir (or its package name without one).
void CheckKestDMXFinalState(FKestCheckLog& Log, const std::string& ProjectDir);

// file:line: warning[code]: message, one line per finding.
std::string FormatKestCheckFindings(const std::vector<FKestCheckFinding>& Findings);
// A JSON array of objects with file, line, code, message, call, key, given and used.
std::string FormatKestCheckFindingsAsJson(const std::vector<FKestCheckFinding>& Findings);

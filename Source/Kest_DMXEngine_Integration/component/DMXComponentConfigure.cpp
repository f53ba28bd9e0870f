#include "component/DMXComponentConfigure.h"

#include "GameFramework/Actor.h"
#include "Game/DMXComponent.h"
#include "ScopedTransaction.h"
#include "component/DMXComponentInfo.h"
#include "component/DMXComponentLookup.h"
#include "component/DMXComponentParams.h"
#include "module/DMXEngineTransactions.h"
#include "module/DMXLuaParams.h"

sol::object ConfigureDMXComponent(AActor* Actor, const std::string& ComponentName, sol::table Params, sol::this_state S)
{
	UDMXComponent* Component = FindDMXComponentByName(Actor, ConvertLuaText(ComponentName));
	if (Component == nullptr)
	{
		return sol::lua_nil;
	}

	// The info table is built while the step is still open.
	const FScopedTransaction Transaction(GetDMXEngineTransactionTitle(EDMXEngineTransaction::ConfigureDMXComponent));
	Component->Modify(true);

	UDMXEntityFixturePatch* FixturePatch = nullptr;
	if (ReadFixturePatchParam(Params, FixturePatch))
	{
		Component->SetFixturePatch(FixturePatch);
	}

	bool bReceive = false;
	if (ReadReceiveParam(Params, bReceive))
	{
		Component->SetReceiveDMXFromPatch(bReceive);
	}

	Actor->MarkPackageDirty();
	return MakeDMXComponentInfoTable(Actor, S);
}

#include "component/DMXComponentAdd.h"

#include "GameFramework/Actor.h"
#include "Game/DMXComponent.h"
#include "ScopedTransaction.h"
#include "UObject/UObjectGlobals.h"
#include "component/DMXComponentInfo.h"
#include "component/DMXComponentLookup.h"
#include "component/DMXComponentParams.h"
#include "module/DMXEngineTransactions.h"
#include "module/DMXLuaParams.h"

namespace
{
	// One undo step holds the new component; it closes when this returns.
	UDMXComponent* CreateDMXComponent(AActor* Actor, const FString& Name)
	{
		const FScopedTransaction Transaction(GetDMXEngineTransactionTitle(EDMXEngineTransaction::AddDMXComponent));
		Actor->Modify(true);
		UDMXComponent* Component = NewObject<UDMXComponent>(Actor, UDMXComponent::StaticClass(), FName(*Name), RF_Transactional);
		if (Component == nullptr)
		{
			return nullptr;
		}
		Component->Modify(true);
		Actor->AddInstanceComponent(Component);
		Component->RegisterComponent();
		return Component;
	}
}

sol::object AddDMXComponent(AActor* Actor, sol::table Params, sol::this_state S)
{
	if (Actor == nullptr)
	{
		return sol::lua_nil;
	}

	const FString Name = GetStringParam(Params, "name", TEXT("DMXComponent"));
	UDMXComponent* Component = FindDMXComponentByName(Actor, Name);
	if (Component == nullptr)
	{
		Component = CreateDMXComponent(Actor, Name);
		if (Component == nullptr)
		{
			return sol::lua_nil;
		}
	}

	UDMXEntityFixturePatch* FixturePatch = nullptr;
	if (ReadFixturePatchParam(Params, FixturePatch))
	{
		Component->Modify(true);
		Component->SetFixturePatch(FixturePatch);
	}

	bool bReceive = false;
	if (ReadReceiveParam(Params, bReceive))
	{
		Component->Modify(true);
		Component->SetReceiveDMXFromPatch(bReceive);
	}

	Actor->MarkPackageDirty();
	return MakeDMXComponentInfoTable(Actor, S);
}

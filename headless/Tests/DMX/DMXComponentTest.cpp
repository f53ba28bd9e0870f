// The DMX component: defaults, the reflected receive flag, patch assignment and tick enabling.
#include "Engine/World.h"
#include "Game/DMXComponent.h"
#include "GameFramework/Actor.h"
#include "UObject/UnrealType.h"
#include "DMXTestUtils.h"

using namespace DMXRuntimeTests;

class DMXRuntimeComponent : public FDMXTestBase
{
protected:
	void SetUp() override
	{
		FDMXTestBase::SetUp();
		UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1)});
		Patch = CreatePatch(FixtureType, TEXT("Spot1"));
		OtherPatch = CreatePatch(FixtureType, TEXT("Spot2"));
		Component = NewObject<UDMXComponent>(Package, FName(TEXT("DMX")), RF_Transactional);
		ASSERT_NE(Component, nullptr);
	}

	static bool ReadReceiveFlag(const UDMXComponent* InComponent)
	{
		const FBoolProperty* Property = FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("bReceiveDMXFromPatch"));
		return Property && Property->GetPropertyValue_InContainer(InComponent);
	}

	UDMXEntityFixturePatch* Patch = nullptr;
	UDMXEntityFixturePatch* OtherPatch = nullptr;
	UDMXComponent* Component = nullptr;
};

TEST_F(DMXRuntimeComponent, DefaultsReceiveFromPatchAndTickInEditor)
{
	EXPECT_TRUE(Component->PrimaryComponentTick.bCanEverTick);
	EXPECT_TRUE(Component->PrimaryComponentTick.bStartWithTickEnabled);
	EXPECT_TRUE(Component->bTickInEditor);
	EXPECT_EQ(Component->GetFixturePatch(), nullptr);
	EXPECT_TRUE(Component->FixturePatchRef.bDisplayLibraryPicker);

	ASSERT_NE(FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("breceivedmxfrompatch")), nullptr);
	EXPECT_TRUE(ReadReceiveFlag(Component));
	Component->SetReceiveDMXFromPatch(false);
	EXPECT_FALSE(ReadReceiveFlag(Component));
}

TEST_F(DMXRuntimeComponent, SetFixturePatchStoresAReferenceToThePatch)
{
	Component->SetFixturePatch(Patch);
	EXPECT_EQ(Component->GetFixturePatch(), Patch);
	EXPECT_EQ(Component->FixturePatchRef.DMXLibrary.Get(), Library);
	EXPECT_TRUE(Component->FixturePatchRef == FDMXEntityFixturePatchRef(Patch));

	Component->SetFixturePatch(OtherPatch);
	EXPECT_EQ(Component->GetFixturePatch(), OtherPatch);

	// Null only invalidates the id: the live patch still resolves through the reference's cache.
	Component->SetFixturePatch(nullptr);
	EXPECT_FALSE(Component->FixturePatchRef == FDMXEntityFixturePatchRef(OtherPatch));
	EXPECT_EQ(Component->GetFixturePatch(), OtherPatch);
}

TEST_F(DMXRuntimeComponent, TickRunsOnlyWithAListenerAPatchAndReceiveOn)
{
	Component->SetFixturePatch(Patch);
	EXPECT_FALSE(Component->IsComponentTickEnabled());

	Component->OnDMXComponentTick.AddLambda([](float) {});
	Component->SetFixturePatch(OtherPatch);
	EXPECT_TRUE(Component->IsComponentTickEnabled());

	Component->SetReceiveDMXFromPatch(false);
	EXPECT_FALSE(Component->IsComponentTickEnabled());
	Component->SetReceiveDMXFromPatch(true);
	EXPECT_TRUE(Component->IsComponentTickEnabled());

	// Setting the current patch again changes nothing, not even the tick.
	Component->PrimaryComponentTick.SetTickFunctionEnable(false);
	Component->SetFixturePatch(OtherPatch);
	EXPECT_FALSE(Component->IsComponentTickEnabled());
}

TEST_F(DMXRuntimeComponent, RegisteringWithoutATickListenerDisablesTheTick)
{
	UWorld* World = UWorld::CreateWorld(EWorldType::Editor, TEXT("DMXComponentWorld"));
	ASSERT_NE(World, nullptr);
	AActor* Actor = World->SpawnActor(AActor::StaticClass());
	ASSERT_NE(Actor, nullptr);
	UDMXComponent* Owned = NewObject<UDMXComponent>(Actor, FName(TEXT("DMX")), RF_Transactional);
	ASSERT_TRUE(Owned->IsComponentTickEnabled());

	Owned->RegisterComponent();
	ASSERT_TRUE(Owned->IsRegistered());
	EXPECT_FALSE(Owned->IsComponentTickEnabled());
}


// The DMX component: defaults, the reflected receive flag, patch assignment and tick enabling.
#include "Game/DMXComponent.h"
#include "UObject/UnrealType.h"
#include "DMXTestUtils.h"

using namespace DMXRuntimeTests;

using DMXRuntimeComponent = FDMXTestBase;

TEST_F(DMXRuntimeComponent, ReceiveFlagPatchReferenceAndTick)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1)});
	UDMXEntityFixturePatch* Patch = CreatePatch(FixtureType, TEXT("Spot1"));
	UDMXEntityFixturePatch* OtherPatch = CreatePatch(FixtureType, TEXT("Spot2"));
	UDMXComponent* Component = NewObject<UDMXComponent>(Package, FName(TEXT("DMX")), RF_Transactional);
	EXPECT_TRUE(Component->bTickInEditor);
	EXPECT_EQ(Component->GetFixturePatch(), nullptr);

	// The receive flag is found by name ignoring case and starts on.
	const FBoolProperty* Property = FindFProperty<FBoolProperty>(UDMXComponent::StaticClass(), TEXT("breceivedmxfrompatch"));
	ASSERT_NE(Property, nullptr);
	EXPECT_TRUE(Property->GetPropertyValue_InContainer(Component));
	Component->SetReceiveDMXFromPatch(false);
	EXPECT_FALSE(Property->GetPropertyValue_InContainer(Component));
	Component->SetReceiveDMXFromPatch(true);

	// The tick runs only with a listener, a patch and receive on.
	Component->SetFixturePatch(Patch);
	EXPECT_EQ(Component->GetFixturePatch(), Patch);
	EXPECT_EQ(Component->FixturePatchRef.DMXLibrary.Get(), Library);
	EXPECT_FALSE(Component->IsComponentTickEnabled());
	Component->OnDMXComponentTick.AddLambda([](float) {});
	Component->SetFixturePatch(OtherPatch);
	EXPECT_TRUE(Component->IsComponentTickEnabled());
	Component->SetReceiveDMXFromPatch(false);
	EXPECT_FALSE(Component->IsComponentTickEnabled());

	// Null clears the patch: nothing resolves any more, and the same patch can be assigned again.
	Component->SetFixturePatch(nullptr);
	EXPECT_FALSE(Component->FixturePatchRef == FDMXEntityFixturePatchRef(OtherPatch));
	EXPECT_EQ(Component->GetFixturePatch(), nullptr);
	Component->SetFixturePatch(OtherPatch);
	EXPECT_EQ(Component->GetFixturePatch(), OtherPatch);
	EXPECT_TRUE(Component->FixturePatchRef == FDMXEntityFixturePatchRef(OtherPatch));
}

TEST_F(DMXRuntimeComponent, ARestoredReferenceResolvesFromItsIdNotFromItsCache)
{
	UDMXEntityFixtureType* FixtureType = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1)});
	UDMXEntityFixturePatch* Patch = CreatePatch(FixtureType, TEXT("Spot1"));
	UDMXEntityFixturePatch* OtherPatch = CreatePatch(FixtureType, TEXT("Spot2"));
	UDMXComponent* Component = NewObject<UDMXComponent>(Package, FName(TEXT("DMX")), RF_Transactional);
	Component->SetFixturePatch(Patch);
	FHeadlessStateArchive Saving = FHeadlessStateArchive::ForSaving();
	Component->SerializeHeadlessState(Saving);
	Component->SetFixturePatch(OtherPatch);

	// What undo does: the reference's fields come back, its cache (of the other patch) does not.
	FHeadlessStateArchive Loading = FHeadlessStateArchive::ForLoading(Saving.TakeValues());
	Component->SerializeHeadlessState(Loading);
	EXPECT_EQ(Component->GetFixturePatch(), Patch);
}

// The library's entity list, entity naming and destruction, and entity references.
#include "Library/DMXEntityReference.h"
#include "DMXTestUtils.h"

using namespace DMXRuntimeTests;

class DMXRuntimeLibrary : public FDMXTestBase
{
};

TEST_F(DMXRuntimeLibrary, EntitiesAreAConstReferenceInRegistrationOrder)
{
	const TArray<UDMXEntity*>& Entities = Library->GetEntities();
	EXPECT_EQ(&Entities, &Library->GetEntities());

	UDMXEntityFixtureType* Spot = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1)});
	UDMXEntityFixturePatch* Patch = CreatePatch(Spot, TEXT("Spot1"));
	UDMXEntityFixtureType* Wash = CreateFixtureType(TEXT("Wash"));
	ASSERT_EQ(Entities.Num(), 3);
	EXPECT_EQ(Entities[0], Spot);
	EXPECT_EQ(Entities[1], Patch);
	EXPECT_EQ(Entities[2], Wash);

	EXPECT_EQ(Library->GetEntitiesTypeCast<UDMXEntityFixtureType>(), (TArray<UDMXEntityFixtureType*>{Spot, Wash}));

	// A second registration is refused.
	Library->RegisterEntity(Spot);
	EXPECT_EQ(Entities.Num(), 3);
}

TEST_F(DMXRuntimeLibrary, FindEntityMatchesNamesCaseSensitivelyAcrossTypes)
{
	UDMXEntityFixtureType* Spot = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1)});
	UDMXEntityFixturePatch* Patch = CreatePatch(Spot, TEXT("Spot"));
	ASSERT_TRUE(Patch->Name.Equals(TEXT("Spot")));

	EXPECT_EQ(Library->FindEntity(FString(TEXT("Spot"))), Spot);
	EXPECT_EQ(Library->FindEntity(FString(TEXT("spot"))), nullptr);
	EXPECT_EQ(Library->FindEntity(Patch->GetID()), Patch);
	EXPECT_EQ(Library->FindEntity(FGuid()), nullptr);
}

TEST_F(DMXRuntimeLibrary, SetNameIsVerbatimAndRenamesTheObjectUniquely)
{
	UDMXEntityFixtureType* Spot = CreateFixtureType(TEXT("Spot"));
	UDMXEntityFixtureType* Wash = CreateFixtureType(TEXT("Wash"));
	Wash->SetName(TEXT("Spot"));
	EXPECT_TRUE(Wash->Name.Equals(TEXT("Spot")));
	EXPECT_NE(Wash->GetFName(), Spot->GetFName());
	EXPECT_EQ(StaticFindObjectFast(nullptr, Library, Wash->GetFName()), Wash);

	Wash->SetName(TEXT(""));
	EXPECT_TRUE(Wash->GetDisplayName().IsEmpty());
}

TEST_F(DMXRuntimeLibrary, DestroyTakesTheEntityOutOfItsLibrary)
{
	UDMXEntityFixtureType* Spot = CreateFixtureType(TEXT("Spot"));
	TArray<UDMXEntity*> Removed;
	UDMXLibrary::GetOnEntitiesRemoved().AddLambda([&Removed](UDMXLibrary*, TArray<UDMXEntity*> Entities) { Removed.Append(Entities); });

	Spot->Destroy();
	UDMXLibrary::GetOnEntitiesRemoved().Clear();
	EXPECT_EQ(Removed, (TArray<UDMXEntity*>{Spot}));
	EXPECT_EQ(Library->GetEntities().Num(), 0);

	// A second destroy without a library does nothing.
	Spot->Name = TEXT("Gone");
	Spot->Destroy();
	EXPECT_TRUE(Spot->GetDisplayName().Equals(TEXT("Gone")));
}

TEST_F(DMXRuntimeLibrary, ReferencesResolveByCacheThenById)
{
	UDMXEntityFixtureType* Spot = CreateFixtureType(TEXT("Spot"), {MakeFunction(TEXT("Dimmer"), 1)});
	UDMXEntityFixturePatch* Patch = CreatePatch(Spot, TEXT("Spot1"));
	UDMXEntityFixturePatch* OtherPatch = CreatePatch(Spot, TEXT("Spot2"));

	EXPECT_EQ(FDMXEntityFixtureTypeRef().GetEntityType().Get(), UDMXEntityFixtureType::StaticClass());
	EXPECT_EQ(FDMXEntityFixtureTypeRef(nullptr).GetEntityType().Get(), nullptr);

	FDMXEntityFixturePatchRef Ref(Patch);
	EXPECT_EQ(Ref.DMXLibrary.Get(), Library);
	EXPECT_EQ(Ref.GetFixturePatch(), Patch);
	EXPECT_TRUE(Ref == FDMXEntityFixturePatchRef(Patch));
	EXPECT_TRUE(Ref != FDMXEntityFixturePatchRef(OtherPatch));

	// A destroyed patch that still lives is found through the cache.
	UDMXEntityFixturePatch::RemoveFixturePatchFromLibrary(Ref);
	EXPECT_EQ(Ref.GetFixturePatch(), Patch);

	// Without a live cached entity the id is looked up, filtered by the entity class.
	FDMXEntityFixtureTypeRef TypeRef(Spot);
	FDMXEntityFixtureTypeRef OtherTypeRef(Spot);
	Library->UnregisterEntity(Spot);
	Spot->MarkAsGarbage();
	EXPECT_EQ(TypeRef.GetFixtureType(), nullptr);
	OtherPatch->ReplicateID(Spot);
	EXPECT_EQ(TypeRef.GetFixtureType(), nullptr);

	UDMXEntityFixtureType* Twin = CreateFixtureType(TEXT("Twin"));
	Twin->ReplicateID(Spot);
	OtherPatch->RefreshID();
	EXPECT_EQ(OtherTypeRef.GetFixtureType(), Twin);
}

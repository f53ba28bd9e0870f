// The indexed lookups (objects by outer and name, unique object names, unique entity names, a
// library's entities by class, the fixture IDs in use) against the walks over every object and
// entity that they replace, through random creations, renames, removals, reordering, fixture ID
// changes, direct name writes, undo and redo.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include "DMXRuntimeUtils.h"
#include "Editor.h"
#include "HeadlessEditor.h"
#include "Library/DMXEntityFixturePatch.h"
#include "Library/DMXEntityFixtureType.h"
#include "Library/DMXLibrary.h"
#include "ScopedTransaction.h"
#include "UObject/HeadlessObjectRegistry.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	const TCHAR* const Names[] = {TEXT("Spot"), TEXT("spot"), TEXT("Spot_1"), TEXT("Spot_2"), TEXT("Spot 3"), TEXT("Wash"), TEXT(""),
		TEXT("DMXEntityFixtureType"), TEXT("DMXEntityFixturePatch_1"), TEXT("Bar_0"), TEXT("Bar_01"), TEXT("7")};

	std::string Utf8(const FString& Text) { return std::string(TCHAR_TO_UTF8(*Text)); }

	// The walk FindUniqueEntityName used to make.
	FString FindUniqueEntityNameByWalking(const UDMXLibrary* Library, const UClass* Class, const FString& Base)
	{
		TSet<FString> Existing;
		for (const UDMXEntity* Entity : Library->GetEntities())
		{
			if (Entity->IsA(Class))
			{
				Existing.Add(Entity->GetDisplayName());
			}
		}
		return FDMXRuntimeUtils::GenerateUniqueNameFromExisting(Existing, Base.IsEmpty() ? Class->GetName() : Base);
	}

	template <typename EntityType>
	TArray<EntityType*> GetEntitiesByWalking(const UDMXLibrary* Library)
	{
		TArray<EntityType*> Result;
		for (UDMXEntity* Entity : Library->GetEntities())
		{
			if (EntityType* Typed = Cast<EntityType>(Entity))
			{
				Result.Add(Typed);
			}
		}
		return Result;
	}

	// The ID GenerateFixtureID gives, walking every patch: the desired ID when no other patch holds
	// it, else one more than the first patch with the highest ID, the patch itself counting as 0; 1
	// for a patch that lost its library (a removal undone without it).
	int32 FindFixtureIDByWalking(const UDMXLibrary* Library, const UDMXEntityFixturePatch* Patch, int32 Desired)
	{
		if (!Patch->GetParentLibrary())
		{
			return 1;
		}
		const TArray<UDMXEntityFixturePatch*> Patches = GetEntitiesByWalking<UDMXEntityFixturePatch>(Library);
		if (Desired > 0 && !Patches.ContainsByPredicate([&](const UDMXEntityFixturePatch* Other) { return Other != Patch && Other->GetFixtureID() == Desired; }))
		{
			return Desired;
		}
		const UDMXEntityFixturePatch* Highest = nullptr;
		int32 HighestID = 0;
		for (const UDMXEntityFixturePatch* Other : Patches)
		{
			const int32 Projected = Other == Patch ? 0 : Other->GetFixtureID();
			if (!Highest || Projected > HighestID)
			{
				Highest = Other;
				HighestID = Projected;
			}
		}
		return Highest ? static_cast<int32>(static_cast<uint32>(Highest->GetFixtureID()) + 1u) : 1;
	}

	UObject* FindObjectByWalking(const UObject* Outer, FName Name)
	{
		UObject* Found = nullptr;
		FHeadlessObjectRegistry::Get().ForEachObject([&](UObject* Object)
		{
			Found = !Found && Object->GetOuter() == Outer && !Object->IsGarbage() && Object->GetFName() == Name ? Object : Found;
		});
		return Found;
	}

	FName MakeUniqueObjectNameByWalking(UObject* Outer, FName Base)
	{
		for (int32 Number = NAME_INTERNAL_TO_EXTERNAL(Base.GetNumber()) + 1;; ++Number)
		{
			const FName Candidate(Base.GetPlainNameString() + TEXT("_") + FString::FromInt(Number));
			if (!FindObjectByWalking(Outer, Candidate))
			{
				return Candidate;
			}
		}
	}
}

TEST(DMXNameIndex, AnswersWhatAWalkOverEveryObjectAnswers)
{
	FHeadlessEditor Editor;
	UPackage* Package = CreatePackage(TEXT("/Game/DMX/Index"));
	UDMXLibrary* Library = NewObject<UDMXLibrary>(Package, FName(TEXT("Index")), RF_Public | RF_Transactional);
	std::mt19937 Random(20261123);
	const auto Pick = [&Random](int32 Count) { return static_cast<int32>(Random() % static_cast<uint32>(Count)); };
	const auto PickName = [&]() { return FString(Names[Pick(static_cast<int32>(std::size(Names)))]); };
	UClass* const Classes[] = {UDMXEntityFixtureType::StaticClass(), UDMXEntityFixturePatch::StaticClass(), UDMXEntity::StaticClass()};

	for (int32 Step = 0; Step < 1500; ++Step)
	{
		const TArray<UDMXEntity*> Entities = Library->GetEntities();
		UDMXEntity* Entity = Entities.IsEmpty() ? nullptr : Entities[Pick(Entities.Num())];
		const int32 Action = Pick(100);
		const bool bInTransaction = Pick(2) == 0;
		{
			FScopedTransaction Transaction(FText::FromString(FString(TEXT("Step"))), bInTransaction);
			// Some steps record only entities, so that undo restores them without the library.
			const bool bRecordLibrary = Pick(4) != 0;
			if (bRecordLibrary)
			{
				Library->Modify();
			}
			if (Action < 30 || !Entity)
			{
				FDMXEntityFixtureTypeConstructionParams Params;
				Params.ParentDMXLibrary = Library;
				UDMXEntityFixtureType::CreateFixtureTypeInLibrary(Params, PickName(), Pick(2) == 0);
			}
			else if (Action < 50)
			{
				TArray<UDMXEntityFixtureType*> Types = Library->GetEntitiesTypeCast<UDMXEntityFixtureType>();
				FDMXEntityFixturePatchConstructionParams Params;
				Params.FixtureTypeRef = Types.IsEmpty() ? nullptr : Types[Pick(Types.Num())];
				UDMXEntityFixturePatch::CreateFixturePatchInLibrary(Params, PickName());
			}
			else if (Action < 70)
			{
				Entity->SetName(PickName());
			}
			else if (Action < 76)
			{
				if (UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Entity))
				{
					UDMXEntityFixturePatch::RemoveFixturePatchFromLibrary(Patch);
				}
				else
				{
					UDMXEntityFixtureType::RemoveFixtureTypeFromLibrary(Cast<UDMXEntityFixtureType>(Entity));
				}
			}
			else if (Action < 79)
			{
				// As readers of saved libraries do: a new entity, its name written straight in.
				FDMXEntityFixtureTypeConstructionParams Params;
				Params.ParentDMXLibrary = Library;
				UDMXEntityFixtureType* Loaded = NewObject<UDMXEntityFixtureType>(Library, UDMXEntityFixtureType::StaticClass(), NAME_None, RF_Transactional);
				Loaded->Name = PickName();
			}
			else if (Action < 81)
			{
				Library->SetEntityIndex(Entity, Pick(Entities.Num() + 2));
			}
			else if (Action < 85)
			{
				if (UDMXEntityFixturePatch* Patch = Cast<UDMXEntityFixturePatch>(Entity))
				{
					// IDs a saved file may hold, negative and extreme ones too.
					const int32 SavedIDs[] = {0, -3, 1, 2, 7, 2147483647};
					Patch->Modify();
					Patch->SetFixtureIDFromSaved(SavedIDs[Pick(static_cast<int32>(std::size(SavedIDs)))]);
				}
			}
			else if (Action < 86)
			{
				// An object that is not an entity, under a name an entity may want.
				NewObject<UDMXLibrary>(Library, FName(*(PickName() + TEXT("_0"))), RF_Transactional);
			}
		}
		if (Action >= 86 && Action < 95)
		{
			GEditor->UndoTransaction();
		}
		else if (Action >= 95)
		{
			GEditor->RedoTransaction();
		}

		for (UClass* Class : Classes)
		{
			const FString Base = PickName();
			ASSERT_EQ(Utf8(FDMXRuntimeUtils::FindUniqueEntityName(Library, Class, Base)), Utf8(FindUniqueEntityNameByWalking(Library, Class, Base)))
				<< "step " << Step << ", base \"" << Utf8(Base) << "\"";
		}
		ASSERT_EQ(Library->GetEntitiesTypeCast<UDMXEntityFixtureType>(), GetEntitiesByWalking<UDMXEntityFixtureType>(Library)) << "step " << Step;
		ASSERT_EQ(Library->GetEntitiesTypeCast<UDMXEntityFixturePatch>(), GetEntitiesByWalking<UDMXEntityFixturePatch>(Library)) << "step " << Step;
		ASSERT_EQ(Library->GetEntitiesOfType(UDMXEntity::StaticClass()), Library->GetEntities()) << "step " << Step;
		const TArray<UDMXEntityFixturePatch*> Patches = GetEntitiesByWalking<UDMXEntityFixturePatch>(Library);
		if (!Patches.IsEmpty())
		{
			UDMXEntityFixturePatch* Patch = Patches[Pick(Patches.Num())];
			const int32 Desired = Pick(3) == 0 ? -1 : Pick(12);
			const int32 Expected = FindFixtureIDByWalking(Library, Patch, Desired);
			Patch->GenerateFixtureID(Desired);
			ASSERT_EQ(Patch->GetFixtureID(), Expected) << "step " << Step << ", desired " << Desired;
		}
		const FName ObjectName(PickName());
		ASSERT_EQ(StaticFindObjectFast(nullptr, Library, ObjectName), FindObjectByWalking(Library, ObjectName)) << "step " << Step;
		if (!ObjectName.IsNone())
		{
			ASSERT_EQ(Utf8(MakeUniqueObjectName(Library, nullptr, ObjectName).ToString()), Utf8(MakeUniqueObjectNameByWalking(Library, ObjectName).ToString())) << "step " << Step;
		}
	}
}

TEST(DMXNameIndex, FixtureIDsFollowAnUndoThatRestoresOnlyThePatch)
{
	FHeadlessEditor Editor;
	UPackage* Package = CreatePackage(TEXT("/Game/DMX/IDs"));
	UDMXLibrary* Library = NewObject<UDMXLibrary>(Package, FName(TEXT("IDs")), RF_Public | RF_Transactional);
	FDMXEntityFixtureTypeConstructionParams TypeParams;
	TypeParams.ParentDMXLibrary = Library;
	FDMXEntityFixturePatchConstructionParams PatchParams;
	PatchParams.FixtureTypeRef = UDMXEntityFixtureType::CreateFixtureTypeInLibrary(TypeParams, TEXT("Type"));
	UDMXEntityFixturePatch* First = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(PatchParams, TEXT("First"));
	UDMXEntityFixturePatch* Second = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(PatchParams, TEXT("Second"));
	ASSERT_EQ(Second->GetFixtureID(), 2);
	{
		FScopedTransaction Transaction(FText::FromString(FString(TEXT("Renumber"))));
		Second->Modify();
		Second->SetFixtureIDFromSaved(100);
	}
	ASSERT_TRUE(GEditor->UndoTransaction());
	ASSERT_EQ(Second->GetFixtureID(), 2);
	First->GenerateFixtureID();
	EXPECT_EQ(First->GetFixtureID(), 3);
	First->GenerateFixtureID(100);
	EXPECT_EQ(First->GetFixtureID(), 100);
}

// The indexed lookups (objects by outer and name, unique object names, unique entity names) against
// the walks over every object and entity that they replace, through random creations, renames,
// removals, direct name writes, undo and redo.
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
			Library->Modify();
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
			else if (Action < 78)
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
			else if (Action < 82)
			{
				// As readers of saved libraries do: a new entity, its name written straight in.
				FDMXEntityFixtureTypeConstructionParams Params;
				Params.ParentDMXLibrary = Library;
				UDMXEntityFixtureType* Loaded = NewObject<UDMXEntityFixtureType>(Library, UDMXEntityFixtureType::StaticClass(), NAME_None, RF_Transactional);
				Loaded->Name = PickName();
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
		const FName ObjectName(PickName());
		ASSERT_EQ(StaticFindObjectFast(nullptr, Library, ObjectName), FindObjectByWalking(Library, ObjectName)) << "step " << Step;
		if (!ObjectName.IsNone())
		{
			ASSERT_EQ(Utf8(MakeUniqueObjectName(Library, nullptr, ObjectName).ToString()), Utf8(MakeUniqueObjectNameByWalking(Library, ObjectName).ToString())) << "step " << Step;
		}
	}
}

// What an undo or redo does beyond swapping state, as the editor does it: fixture types record their
// library and are realigned afterwards, renames are recorded, package dirty flags come back, and a
// transaction that cannot be made leaves nothing open.
#include <gtest/gtest.h>

#include <new>
#include <utility>
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
	FText Title(const TCHAR* Text) { return FText::FromString(FString(Text)); }

	class FUndoFidelityTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			Package = CreatePackage(TEXT("/Game/DMX/Rig"));
			Library = NewObject<UDMXLibrary>(Package, FName(TEXT("Rig")), RF_Public | RF_Transactional);
		}

		// A type whose only mode has a gap between its functions (channels 1 and 5) and span 0.
		UDMXEntityFixtureType* CreateGappedType(const TCHAR* Name)
		{
			FDMXEntityFixtureTypeConstructionParams Params;
			Params.ParentDMXLibrary = Library;
			FDMXFixtureMode Mode;
			Mode.ModeName = TEXT("Mode");
			FDMXFixtureFunction Dimmer;
			Dimmer.Attribute = FName(TEXT("Dimmer"));
			Dimmer.Channel = 1;
			FDMXFixtureFunction Pan = Dimmer;
			Pan.Attribute = FName(TEXT("Pan"));
			Pan.Channel = 5;
			Pan.DataType = EDMXFixtureSignalFormat::E16Bit;
			Mode.Functions = {Dimmer, Pan};
			Params.Modes.Add(Mode);
			return UDMXEntityFixtureType::CreateFixtureTypeInLibrary(Params, Name, false);
		}

		FHeadlessEditor Editor;
		UPackage* Package = nullptr;
		UDMXLibrary* Library = nullptr;
	};
}

TEST_F(FUndoFidelityTest, AFixtureTypeRecordsItsLibraryFirstAndIsRealignedByUndoAndRedo)
{
	UDMXEntityFixtureType* FixtureType = CreateGappedType(TEXT("Spot"));
	FDMXEntityFixturePatchConstructionParams PatchParams;
	PatchParams.FixtureTypeRef = FixtureType;
	UDMXEntityFixturePatch* Patch = UDMXEntityFixturePatch::CreateFixturePatchInLibrary(PatchParams, TEXT("Spot 1"));
	ASSERT_EQ(Patch->GetChannelSpan(), 3);
	// The delegate outlives the test: the listener counts into a static.
	static int32 Broadcasts;
	static bool bListening = false;
	if (!std::exchange(bListening, true))
	{
		UDMXEntityFixtureType::GetOnFixtureTypeChanged().AddLambda([](const UDMXEntityFixtureType*) { ++Broadcasts; });
	}

	// Without a transaction nothing is recorded; with one, the library comes first.
	EXPECT_FALSE(FixtureType->Modify());
	{
		FScopedTransaction Transaction(Title(TEXT("Category")));
		EXPECT_TRUE(FixtureType->Modify());
		FixtureType->DMXCategory = FDMXFixtureCategory(FName(TEXT("Strobe")));
		FixtureType->AddMode(TEXT("Extra"));
	}
	const FTransaction* Step = GEditor->Trans->GetTransaction(GEditor->Trans->GetQueueLength() - 1);
	EXPECT_TRUE(Step->ContainsObject(Library));
	EXPECT_TRUE(Step->ContainsObject(FixtureType));

	Broadcasts = 0;
	// Undo restores, then closes the gap and computes the spans; the patch follows.
	ASSERT_TRUE(GEditor->UndoTransaction());
	ASSERT_EQ(FixtureType->Modes.Num(), 1);
	EXPECT_EQ(FixtureType->Modes[0].Functions[0].Channel, 1);
	EXPECT_EQ(FixtureType->Modes[0].Functions[1].Channel, 2);
	EXPECT_EQ(FixtureType->Modes[0].ChannelSpan, 3);
	EXPECT_EQ(Patch->GetAttributeChannelAssignments().Num(), 2) << "the patch rebuilt from the realigned mode";
	EXPECT_EQ(Broadcasts, 2);

	// Redo realigns too: the mode AddMode left with span 0 comes back with span 1 (the matrix counts).
	ASSERT_TRUE(GEditor->RedoTransaction());
	ASSERT_EQ(FixtureType->Modes.Num(), 2);
	EXPECT_EQ(FixtureType->Modes[1].ChannelSpan, 1);
	EXPECT_EQ(FixtureType->DMXCategory.Name, FName(TEXT("Strobe")));
}

TEST_F(FUndoFidelityTest, RenamesMarkTheirObjects)
{
	// Creating an entity renames it, which dirties the library's package even when told not to.
	ASSERT_FALSE(Package->IsDirty());
	UDMXEntityFixtureType* FixtureType = CreateGappedType(TEXT("Spot"));
	EXPECT_TRUE(Package->IsDirty());

	// A rename inside a transaction records the entity (after its library), and undo takes it back.
	{
		FScopedTransaction Transaction(Title(TEXT("Rename")));
		FixtureType->SetName(TEXT("Wash"));
	}
	const FTransaction* Step = GEditor->Trans->GetTransaction(GEditor->Trans->GetQueueLength() - 1);
	EXPECT_TRUE(Step->ContainsObject(Library));
	EXPECT_TRUE(Step->ContainsObject(FixtureType));
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_EQ(FixtureType->GetDisplayName(), FString(TEXT("Spot")));
	EXPECT_EQ(StaticFindObjectFast(nullptr, Library, FName(TEXT("Wash_0"))), nullptr);
	EXPECT_EQ(StaticFindObjectFast(nullptr, Library, FixtureType->GetFName()), FixtureType);

	// A test rename changes and marks nothing; a non-transactional one is not recorded.
	Package->SetDirtyFlag(false);
	EXPECT_TRUE(FixtureType->Rename(TEXT("Probe"), nullptr, REN_Test));
	EXPECT_NE(FixtureType->GetName(), FString(TEXT("Probe")));
	{
		FScopedTransaction Transaction(Title(TEXT("Quiet")));
		FixtureType->Rename(TEXT("Quiet"), nullptr, REN_NonTransactional);
	}
	EXPECT_FALSE(Package->IsDirty());
	EXPECT_EQ(GEditor->Trans->GetTransaction(GEditor->Trans->GetQueueLength() - 1)->GetRecordCount(), 0);
}

TEST_F(FUndoFidelityTest, UndoAndRedoGivePackagesTheirDirtyFlagsBack)
{
	UDMXEntityFixtureType* FixtureType = CreateGappedType(TEXT("Spot"));
	UPackage* Other = CreatePackage(TEXT("/Game/DMX/Other"));
	UDMXLibrary* OtherLibrary = NewObject<UDMXLibrary>(Other, FName(TEXT("Other")), RF_Public | RF_Transactional);
	Package->SetDirtyFlag(false);
	Other->SetDirtyFlag(true);
	{
		FScopedTransaction Transaction(Title(TEXT("Change")));
		FixtureType->Modify();
		FixtureType->DMXCategory = FDMXFixtureCategory(FName(TEXT("Other")));
		OtherLibrary->Modify();
	}
	EXPECT_TRUE(Package->IsDirty());
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_FALSE(Package->IsDirty()) << "clean before the step, clean after its undo";
	EXPECT_TRUE(Other->IsDirty()) << "dirty before the step stays dirty";
	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_TRUE(Package->IsDirty());

	// Saved after the step: undo leaves the package dirty (it no longer holds what was saved), and
	// redo, back at the saved state, clean.
	Package->SetDirtyFlag(false);
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_TRUE(Package->IsDirty());
	ASSERT_TRUE(GEditor->RedoTransaction());
	EXPECT_FALSE(Package->IsDirty());
}

TEST_F(FUndoFidelityTest, ATransactionThatRunsOutOfMemoryLeavesTheDepthRight)
{
	FHeadlessObjectRegistry& Registry = FHeadlessObjectRegistry::Get();
	UDMXEntityFixtureType* FixtureType = CreateGappedType(TEXT("Spot"));
	const int32 StepsBefore = GEditor->Trans->GetQueueLength();
	// Each of the buffer's allocations in turn, until a step gets through.
	for (int32 FailAt = 0;; ++FailAt)
	{
		Registry.AllocationsBeforeFailure = FailAt;
		bool bFailed = false;
		try
		{
			FScopedTransaction Transaction(Title(TEXT("Category")));
			FixtureType->Modify();
			FixtureType->DMXCategory = FDMXFixtureCategory(FName(TEXT("Strobe")));
		}
		catch (const std::bad_alloc&)
		{
			bFailed = true;
		}
		EXPECT_EQ(GEditor->Trans->GetActiveCount(), 0) << "failing allocation " << FailAt;
		EXPECT_EQ(GUndo, nullptr);
		if (!bFailed)
		{
			break;
		}
		// A step that began holds what it recorded before the failure; the type was not changed.
		EXPECT_NE(FixtureType->DMXCategory.Name, FName(TEXT("Strobe")));
		ASSERT_LT(FailAt, 10);
	}
	Registry.AllocationsBeforeFailure = -1;
	EXPECT_EQ(FixtureType->DMXCategory.Name, FName(TEXT("Strobe")));
	EXPECT_GT(GEditor->Trans->GetQueueLength(), StepsBefore);
	// The buffer still works: the last step undoes.
	ASSERT_TRUE(GEditor->UndoTransaction());
	EXPECT_NE(FixtureType->DMXCategory.Name, FName(TEXT("Strobe")));
}

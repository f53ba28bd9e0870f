#include <gtest/gtest.h>

#include "Editor.h"
#include "Engine/World.h"
#include "GameFramework/Actor.h"
#include "HeadlessEditor.h"
#include "ScopedTransaction.h"
#include "UObject/Package.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	class FTransBufferTest : public ::testing::Test
	{
	protected:
		void SetUp() override
		{
			Editor = std::make_unique<FHeadlessEditor>();
			Actor = Editor->GetEditorWorld()->SpawnActor(AActor::StaticClass(), FName(TEXT("Spot")));
			Actor->SetActorLabel(FString(TEXT("Before")), false);
		}
		void TearDown() override { Editor.reset(); }

		TArray<FString> Titles() const
		{
			TArray<FString> Result;
			for (const FText& Title : GEditor->Trans->GetUndoTitles())
			{
				Result.Add(Title.ToString());
			}
			return Result;
		}

		std::unique_ptr<FHeadlessEditor> Editor;
		AActor* Actor = nullptr;
	};
}

TEST_F(FTransBufferTest, UndoAndRedoSwapTheRecordedState)
{
	{
		FScopedTransaction Transaction(FText::FromString(FString(TEXT("Rename"))));
		Actor->SetActorLabel(FString(TEXT("During")));
	}
	// A change made after the transaction closed is what redo brings back.
	Actor->SetActorLabel(FString(TEXT("After")), false);
	EXPECT_EQ(Titles(), (TArray<FString>{FString(TEXT("Rename"))}));

	EXPECT_TRUE(GEditor->UndoTransaction());
	EXPECT_EQ(Actor->GetActorLabel(), FString(TEXT("Before")));
	EXPECT_TRUE(Titles().IsEmpty());
	EXPECT_FALSE(GEditor->UndoTransaction());

	EXPECT_TRUE(GEditor->RedoTransaction());
	EXPECT_EQ(Actor->GetActorLabel(), FString(TEXT("After")));
	EXPECT_FALSE(GEditor->RedoTransaction());
}

TEST_F(FTransBufferTest, NestedScopesMergeIntoTheOutermostStep)
{
	{
		FScopedTransaction Outer(FText::FromString(FString(TEXT("Outer"))));
		FScopedTransaction Inner(FText::FromString(FString(TEXT("Inner"))));
		EXPECT_TRUE(Inner.IsOutstanding());
		EXPECT_EQ(GEditor->Trans->GetActiveCount(), 2);
		Actor->SetActorLabel(FString(TEXT("Merged")));
	}
	EXPECT_EQ(GEditor->Trans->GetActiveCount(), 0);
	EXPECT_EQ(Titles(), (TArray<FString>{FString(TEXT("Outer"))}));
	GEditor->UndoTransaction();
	EXPECT_EQ(Actor->GetActorLabel(), FString(TEXT("Before")));
}

TEST_F(FTransBufferTest, ModifyOutsideATransactionRecordsNothingButDirtiesThePackage)
{
	UPackage* Package = Actor->GetOutermost();
	Package->SetDirtyFlag(false);
	EXPECT_FALSE(Actor->Modify(true));
	EXPECT_TRUE(Package->IsDirty());
	Package->SetDirtyFlag(false);
	EXPECT_FALSE(Actor->Modify(false));
	EXPECT_FALSE(Package->IsDirty());
	{
		FScopedTransaction Transaction(FText::FromString(FString(TEXT("Mark"))));
		EXPECT_TRUE(Actor->Modify(true));
	}
	EXPECT_TRUE(Package->IsDirty());
	// A step whose objects did not change still stands in the history.
	EXPECT_EQ(Titles().Num(), 1);
}

TEST_F(FTransBufferTest, ObjectsCreatedInsideAStepComeAndGoWithIt)
{
	UActorComponent* Component = nullptr;
	{
		FScopedTransaction Transaction(FText::FromString(FString(TEXT("Create"))));
		Actor->Modify();
		Component = NewObject<UActorComponent>(Actor, UActorComponent::StaticClass(), FName(TEXT("Part")), RF_Transactional);
	}
	ASSERT_NE(Component, nullptr);
	EXPECT_EQ(Actor->GetComponents().Num(), 1);
	GEditor->UndoTransaction();
	EXPECT_TRUE(Actor->GetComponents().IsEmpty());
	EXPECT_FALSE(IsValid(Component));
	GEditor->RedoTransaction();
	EXPECT_EQ(Actor->GetComponents().Num(), 1);
	EXPECT_TRUE(IsValid(Component));
}

TEST_F(FTransBufferTest, ANewStepDiscardsTheStepsThatWereUndone)
{
	for (const TCHAR* Title : {TEXT("One"), TEXT("Two")})
	{
		FScopedTransaction Transaction(FText::FromString(FString(Title)));
		Actor->SetActorLabel(FString(Title));
	}
	GEditor->UndoTransaction();
	{
		FScopedTransaction Transaction(FText::FromString(FString(TEXT("Three"))));
		Actor->Modify();
	}
	EXPECT_EQ(Titles(), (TArray<FString>{FString(TEXT("One")), FString(TEXT("Three"))}));
	EXPECT_FALSE(GEditor->RedoTransaction());
}

TEST_F(FTransBufferTest, DefaultActorLabelComesFromTheClassAndTheNameNumber)
{
	AActor* Numbered = Editor->GetEditorWorld()->SpawnActor(AActor::StaticClass(), FName(TEXT("Wash_2")));
	EXPECT_EQ(Numbered->GetActorLabel(false), FString());
	EXPECT_EQ(Numbered->GetActorLabel(), FString(TEXT("Actor2")));
	EXPECT_EQ(Numbered->GetActorLabel(false), FString(TEXT("Actor2")));
}

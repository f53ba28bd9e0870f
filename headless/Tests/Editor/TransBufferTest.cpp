// The editor's undo buffer: state swaps, nested scopes, objects created inside a step.
#include <gtest/gtest.h>

#include "Editor.h"
#include "Engine/World.h"
#include "GameFramework/Actor.h"
#include "HeadlessEditor.h"
#include "ScopedTransaction.h"
#include "UObject/UObjectGlobals.h"

namespace
{
	FText Title(const TCHAR* Text) { return FText::FromString(FString(Text)); }

	int32 CountUndoSteps() { return GEditor->Trans->GetUndoTitles().Num(); }
}

TEST(FTransBufferTest, UndoAndRedoSwapTheRecordedStateAndNestedScopesMerge)
{
	FHeadlessEditor Editor;
	AActor* Actor = Editor.GetEditorWorld()->SpawnActor(AActor::StaticClass(), FName(TEXT("Spot")));
	Actor->SetActorLabel(FString(TEXT("Before")), false);
	{
		FScopedTransaction Outer(Title(TEXT("Rename")));
		FScopedTransaction Inner(Title(TEXT("Inner")));
		EXPECT_EQ(GEditor->Trans->GetActiveCount(), 2);
		Actor->SetActorLabel(FString(TEXT("During")));
	}
	EXPECT_EQ(GEditor->Trans->GetActiveCount(), 0);
	ASSERT_EQ(CountUndoSteps(), 1);
	EXPECT_TRUE(GEditor->Trans->GetUndoTitles()[0].ToString().Equals(FString(TEXT("Rename"))));

	// A change made after the step closed is what redo brings back.
	Actor->SetActorLabel(FString(TEXT("After")), false);
	EXPECT_TRUE(GEditor->UndoTransaction());
	EXPECT_EQ(Actor->GetActorLabel(), FString(TEXT("Before")));
	EXPECT_EQ(CountUndoSteps(), 0);
	EXPECT_FALSE(GEditor->UndoTransaction());
	EXPECT_TRUE(GEditor->RedoTransaction());
	EXPECT_EQ(Actor->GetActorLabel(), FString(TEXT("After")));
	EXPECT_FALSE(GEditor->RedoTransaction());
}

TEST(FTransBufferTest, ObjectsCreatedInsideAStepComeAndGoWithIt)
{
	FHeadlessEditor Editor;
	AActor* Actor = Editor.GetEditorWorld()->SpawnActor(AActor::StaticClass(), FName(TEXT("Wash_2")));
	EXPECT_EQ(Actor->GetActorLabel(), FString(TEXT("Actor2")));
	UActorComponent* Component = nullptr;
	{
		FScopedTransaction Transaction(Title(TEXT("Create")));
		Actor->Modify();
		Component = NewObject<UActorComponent>(Actor, UActorComponent::StaticClass(), FName(TEXT("Part")), RF_Transactional);
	}
	EXPECT_EQ(Actor->GetComponents().Num(), 1);
	GEditor->UndoTransaction();
	EXPECT_TRUE(Actor->GetComponents().IsEmpty());
	EXPECT_FALSE(IsValid(Component));
	GEditor->RedoTransaction();
	EXPECT_EQ(Actor->GetComponents().Num(), 1);
	EXPECT_TRUE(IsValid(Component));
}

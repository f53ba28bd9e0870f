#include "Editor/TransBuffer.h"
#include "Editor/EditorEngine.h"
#include "ScopedTransaction.h"

UEditorEngine* GEditor = nullptr;

IMPLEMENT_HEADLESS_CLASS(UTransBuffer, UObject, "TransBuffer")
IMPLEMENT_HEADLESS_CLASS(UEditorEngine, UEngine, "EditorEngine")

void UTransBuffer::SerializeHeadlessState(FHeadlessStateArchive& Ar) { Super::SerializeHeadlessState(Ar); }
void UEditorEngine::SerializeHeadlessState(FHeadlessStateArchive& Ar) { Super::SerializeHeadlessState(Ar); }

void FTransaction::SaveObject(UObject* Object)
{
	if (!Object || ContainsObject(Object))
	{
		return;
	}
	FHeadlessStateArchive Ar = FHeadlessStateArchive::ForSaving();
	Object->SerializeHeadlessState(Ar);
	Records.push_back(FRecord{Object, Ar.TakeValues()});
}

void FTransaction::RecordCreatedObject(UObject* Object)
{
	CreatedObjects.push_back(Object);
}

bool FTransaction::ContainsObject(const UObject* Object) const
{
	for (const FRecord& Record : Records)
	{
		if (Record.Object == Object)
		{
			return true;
		}
	}
	return false;
}

void FTransaction::Apply(bool bUndo)
{
	// Objects created by the transaction exist only on its "after" side.
	for (UObject* Object : CreatedObjects)
	{
		if (bUndo)
		{
			Object->MarkAsGarbage();
		}
		else
		{
			Object->ClearGarbage();
		}
	}
	for (FRecord& Record : Records)
	{
		FHeadlessStateArchive Current = FHeadlessStateArchive::ForSaving();
		Record.Object->SerializeHeadlessState(Current);
		FHeadlessStateArchive Saved = FHeadlessStateArchive::ForLoading(std::move(Record.SavedState));
		Record.Object->SerializeHeadlessState(Saved);
		Record.SavedState = Current.TakeValues();
	}
	for (FRecord& Record : Records)
	{
		Record.Object->PostEditUndo();
	}
}

int32 UTransBuffer::Begin(const TCHAR* SessionContext, const FText& Description, UObject* PrimaryObject)
{
	const int32 Result = ActiveCount++;
	if (Result == 0)
	{
		// A new step discards the steps that were undone and not redone.
		UndoBuffer.resize(UndoBuffer.size() - static_cast<size_t>(UndoCount));
		UndoCount = 0;
		UndoBuffer.push_back(std::make_unique<FTransaction>(FString(SessionContext), Description, PrimaryObject));
		Current = UndoBuffer.back().get();
		GUndo = Current;
	}
	return Result;
}

int32 UTransBuffer::End()
{
	if (ActiveCount > 0 && --ActiveCount == 0)
	{
		Current = nullptr;
		GUndo = nullptr;
	}
	return ActiveCount;
}

void UTransBuffer::Cancel(int32 StartIndex)
{
	if (StartIndex == 0 && ActiveCount > 0 && Current)
	{
		// Whatever was recorded is put back first, as the editor does when a transaction is cancelled.
		Current->Apply(true);
		UndoBuffer.pop_back();
		Current = nullptr;
		GUndo = nullptr;
		ActiveCount = 0;
	}
}

bool UTransBuffer::Undo()
{
	if (!CanUndo())
	{
		return false;
	}
	FTransaction& Transaction = *UndoBuffer[UndoBuffer.size() - 1 - static_cast<size_t>(UndoCount)];
	++UndoCount;
	GIsTransacting = true;
	Transaction.Apply(true);
	GIsTransacting = false;
	return true;
}

bool UTransBuffer::Redo()
{
	if (!CanRedo())
	{
		return false;
	}
	--UndoCount;
	FTransaction& Transaction = *UndoBuffer[UndoBuffer.size() - 1 - static_cast<size_t>(UndoCount)];
	GIsTransacting = true;
	Transaction.Apply(false);
	GIsTransacting = false;
	return true;
}

void UTransBuffer::Reset(const FText& Reason)
{
	(void)Reason;
	UndoBuffer.clear();
	UndoCount = 0;
	ActiveCount = 0;
	Current = nullptr;
	GUndo = nullptr;
}

TArray<FText> UTransBuffer::GetUndoTitles() const
{
	TArray<FText> Titles;
	const size_t Undoable = UndoBuffer.size() - static_cast<size_t>(UndoCount);
	for (size_t Index = 0; Index < Undoable; ++Index)
	{
		Titles.Add(UndoBuffer[Index]->GetTitle());
	}
	return Titles;
}

TArray<FText> UTransBuffer::GetRedoTitles() const
{
	TArray<FText> Titles;
	for (size_t Index = UndoBuffer.size() - static_cast<size_t>(UndoCount); Index < UndoBuffer.size(); ++Index)
	{
		Titles.Insert(UndoBuffer[Index]->GetTitle(), 0);
	}
	return Titles;
}

const FTransaction* UTransBuffer::GetTransaction(int32 QueueIndex) const
{
	return QueueIndex >= 0 && QueueIndex < GetQueueLength() ? UndoBuffer[static_cast<size_t>(QueueIndex)].get() : nullptr;
}

int32 UEditorEngine::BeginTransaction(const TCHAR* TransactionContext, const FText& Description, UObject* PrimaryObject)
{
	return Trans ? Trans->Begin(TransactionContext, Description, PrimaryObject) : INDEX_NONE;
}

int32 UEditorEngine::EndTransaction()
{
	return Trans ? Trans->End() : 0;
}

void UEditorEngine::CancelTransaction(int32 Index)
{
	if (Trans)
	{
		Trans->Cancel(Index);
	}
}

bool UEditorEngine::UndoTransaction(bool bCanRedo)
{
	(void)bCanRedo;
	return Trans && Trans->Undo();
}

bool UEditorEngine::RedoTransaction()
{
	return Trans && Trans->Redo();
}

FWorldContext& UEditorEngine::GetEditorWorldContext(bool bEnsureIsGWorld)
{
	(void)bEnsureIsGWorld;
	for (FWorldContext* Context : WorldList)
	{
		if (Context->WorldType == EWorldType::Editor)
		{
			return *Context;
		}
	}
	check(false);
	return *WorldList[0];
}

FScopedTransaction::FScopedTransaction(const FText& SessionName, const bool bShouldActuallyTransact)
{
	Construct(TEXT(""), SessionName, nullptr, bShouldActuallyTransact);
}

FScopedTransaction::FScopedTransaction(const TCHAR* TransactionContext, const FText& SessionName, UObject* PrimaryObject, const bool bShouldActuallyTransact)
{
	Construct(TransactionContext, SessionName, PrimaryObject, bShouldActuallyTransact);
}

void FScopedTransaction::Construct(const TCHAR* TransactionContext, const FText& SessionName, UObject* PrimaryObject, const bool bShouldActuallyTransact)
{
	if (bShouldActuallyTransact && GEditor && GEditor->Trans && ensure(!GIsTransacting))
	{
		Index = GEditor->BeginTransaction(TransactionContext, SessionName, PrimaryObject);
	}
	else
	{
		Index = -1;
	}
}

FScopedTransaction::~FScopedTransaction()
{
	if (IsOutstanding())
	{
		GEditor->EndTransaction();
	}
}

void FScopedTransaction::Cancel()
{
	if (IsOutstanding())
	{
		GEditor->CancelTransaction(Index);
		Index = -1;
	}
}

#include "Editor/TransBuffer.h"

#include <algorithm>
#include "UObject/HeadlessObjectRegistry.h"
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
	FHeadlessObjectRegistry::Get().CountAllocation();
	FHeadlessStateArchive Ar = FHeadlessStateArchive::ForSaving();
	Object->SerializeHeadlessState(Ar);
	RecordPackage(Object);
	Records.reserve(Records.size() + 1);
	RecordedObjects.insert(Object);
	Records.push_back(FRecord{Object, Ar.TakeValues()});
}

void FTransaction::RecordCreatedObject(UObject* Object)
{
	FHeadlessObjectRegistry::Get().CountAllocation();
	RecordPackage(Object);
	CreatedObjects.push_back(Object);
}

void FTransaction::RecordPackage(const UObject* Object)
{
	UPackage* Package = Object->GetOutermost();
	if (!Package || std::any_of(Packages.begin(), Packages.end(), [Package](const FPackageRecord& Record) { return Record.Package == Package; }))
	{
		return;
	}
	FHeadlessObjectRegistry::Get().CountAllocation();
	Packages.push_back(FPackageRecord{Package, Package->IsDirty(), Package->GetSaveCount()});
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
	// Only once every object is back: PostEditUndo may look at the others.
	for (FRecord& Record : Records)
	{
		Record.Object->PostEditUndo();
	}
	ApplyPackageFlags();
}

void FTransaction::ApplyPackageFlags()
{
	for (FPackageRecord& Record : Packages)
	{
		UPackage* Package = Record.Package;
		if (Package->IsGarbage())
		{
			continue;
		}
		const bool bDirtyBefore = Package->IsDirty();
		// A package saved since holds on disk what it held before this is applied: it is dirty now,
		// and clean again when the step is applied back.
		Package->SetDirtyFlag(Package->GetSaveCount() == Record.SaveCount ? Record.bDirty : true);
		Record.bDirty = Package->GetSaveCount() == Record.SaveCount ? bDirtyBefore : false;
		Record.SaveCount = Package->GetSaveCount();
	}
}

int32 UTransBuffer::Begin(const TCHAR* SessionContext, const FText& Description, UObject* PrimaryObject)
{
	if (ActiveCount == 0)
	{
		// Everything that can fail comes before anything changes, so a failure leaves nothing open.
		FHeadlessObjectRegistry::Get().CountAllocation();
		std::unique_ptr<FTransaction> Transaction = std::make_unique<FTransaction>(FString(SessionContext), Description, PrimaryObject);
		const size_t Kept = UndoBuffer.size() - static_cast<size_t>(UndoCount);
		FHeadlessObjectRegistry::Get().CountAllocation();
		// Room first (growing geometrically, so that a long session stays linear).
		if (Kept + 1 > UndoBuffer.capacity())
		{
			UndoBuffer.reserve(std::max<size_t>(64, UndoBuffer.capacity() * 2));
		}
		// A new step discards the steps that were undone and not redone.
		UndoBuffer.resize(Kept);
		UndoCount = 0;
		UndoBuffer.push_back(std::move(Transaction));
		Current = UndoBuffer.back().get();
		GUndo = Current;
	}
	return ActiveCount++;
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
		FTransaction* Cancelled = Current;
		Current = nullptr;
		GUndo = nullptr;
		ActiveCount = 0;
		ApplyTransaction(*Cancelled, true);
		UndoBuffer.pop_back();
	}
}

void UTransBuffer::ApplyTransaction(FTransaction& Transaction, bool bUndo)
{
	struct FTransactingScope
	{
		FTransactingScope() { GIsTransacting = true; }
		~FTransactingScope() { GIsTransacting = false; }
	} Scope;
	Transaction.Apply(bUndo);
}

bool UTransBuffer::Undo()
{
	if (!CanUndo())
	{
		return false;
	}
	FTransaction& Transaction = *UndoBuffer[UndoBuffer.size() - 1 - static_cast<size_t>(UndoCount)];
	++UndoCount;
	ApplyTransaction(Transaction, true);
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
	ApplyTransaction(Transaction, false);
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

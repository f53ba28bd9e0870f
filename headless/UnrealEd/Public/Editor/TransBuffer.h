// The editor's undo buffer. A transaction records the state of each object the first time it is
// marked with Modify, and the objects created while it is open. Undo and redo apply a transaction
// by swapping each recorded object's saved state with its current one.
#pragma once

#include <any>
#include <memory>
#include <unordered_set>
#include <vector>
#include "UObject/Object.h"
#include "UObject/Package.h"

class FTransaction : public ITransaction
{
public:
	FTransaction(const FString& InContext, const FText& InTitle, UObject* InPrimaryObject)
		: Context(InContext), Title(InTitle), PrimaryObject(InPrimaryObject)
	{
	}

	// Both record all or nothing: an allocation that fails leaves the transaction as it was.
	void SaveObject(UObject* Object) override;
	void RecordCreatedObject(UObject* Object) override;
	// Swaps every recorded object's state with its saved one; created objects come and go; then
	// PostEditUndo on each restored object, and each recorded package's dirty flag swapped with the
	// one it had before (a package saved since is left dirty instead).
	void Apply(bool bUndo);

	const FText& GetTitle() const { return Title; }
	const FString& GetContext() const { return Context; }
	UObject* GetPrimaryObject() const { return PrimaryObject; }
	int32 GetRecordCount() const { return static_cast<int32>(Records.size()); }
	bool ContainsObject(const UObject* Object) const { return RecordedObjects.count(Object) != 0; }

private:
	struct FRecord
	{
		UObject* Object = nullptr;
		std::vector<std::any> SavedState;
	};
	struct FPackageRecord
	{
		UPackage* Package = nullptr;
		bool bDirty = false;
		uint32 SaveCount = 0;
	};
	// Remembers the dirty flag of the object's package the first time the step touches the package.
	void RecordPackage(const UObject* Object);
	void ApplyPackageFlags();

	FString Context;
	FText Title;
	UObject* PrimaryObject;
	std::vector<FRecord> Records;
	std::unordered_set<const UObject*> RecordedObjects;
	std::vector<UObject*> CreatedObjects;
	std::vector<FPackageRecord> Packages;
};

class UTransBuffer : public UObject
{
	DECLARE_HEADLESS_CLASS(UTransBuffer, UObject)

public:
	// Opens a transaction, or nests into the open one; answers the number open before this one.
	// When making the transaction runs out of memory, nothing is open and std::bad_alloc escapes.
	int32 Begin(const TCHAR* SessionContext, const FText& Description, UObject* PrimaryObject = nullptr);
	// Closes the innermost transaction; answers the number still open.
	int32 End();
	// Throws the open transaction away without recording it (only when it is the outermost).
	void Cancel(int32 StartIndex = 0);
	bool Undo();
	bool Redo();
	bool CanUndo() const { return UndoCount < static_cast<int32>(UndoBuffer.size()) && ActiveCount == 0; }
	bool CanRedo() const { return UndoCount > 0 && ActiveCount == 0; }
	bool IsActive() const { return ActiveCount > 0; }
	int32 GetActiveCount() const { return ActiveCount; }
	void Reset(const FText& Reason);

	// Titles of the steps that can be undone, oldest first.
	TArray<FText> GetUndoTitles() const;
	// Titles of the steps that can be redone, the next one first.
	TArray<FText> GetRedoTitles() const;
	const FTransaction* GetTransaction(int32 QueueIndex) const;
	int32 GetQueueLength() const { return static_cast<int32>(UndoBuffer.size()); }
	int32 GetUndoCount() const { return UndoCount; }

private:
	// Applies with GIsTransacting set, cleared again however the application ends.
	static void ApplyTransaction(FTransaction& Transaction, bool bUndo);

	std::vector<std::unique_ptr<FTransaction>> UndoBuffer;
	int32 UndoCount = 0;
	int32 ActiveCount = 0;
	FTransaction* Current = nullptr;
};

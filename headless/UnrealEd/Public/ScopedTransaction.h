// Opens an undo transaction for the lifetime of the object (nested ones merge into the outermost).
#pragma once

#include "CoreMinimal.h"

class UObject;

class FScopedTransaction
{
public:
	UE_NODISCARD_CTOR FScopedTransaction(const FText& SessionName, const bool bShouldActuallyTransact = true);
	UE_NODISCARD_CTOR FScopedTransaction(const TCHAR* TransactionContext, const FText& SessionName, UObject* PrimaryObject,
		const bool bShouldActuallyTransact = true);
	~FScopedTransaction();
	FScopedTransaction(const FScopedTransaction&) = delete;
	FScopedTransaction& operator=(const FScopedTransaction&) = delete;

	void Cancel();
	bool IsOutstanding() const { return Index >= 0; }

private:
	void Construct(const TCHAR* TransactionContext, const FText& SessionName, UObject* PrimaryObject, const bool bShouldActuallyTransact);
	int32 Index = -1;
};

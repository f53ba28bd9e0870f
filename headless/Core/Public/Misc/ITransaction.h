// The interface through which objects record themselves into the open undo transaction.
#pragma once

#include "CoreTypes.h"

class UObject;

class ITransaction
{
public:
	virtual ~ITransaction() = default;
	// Saves the object's current state, once per transaction, so that undo can restore it.
	virtual void SaveObject(UObject* Object) = 0;
	// Records an object created while the transaction is open: undo takes it away again.
	virtual void RecordCreatedObject(UObject* Object) = 0;
};

// The transaction that is open right now, or null.
extern ITransaction* GUndo;
// True while the editor applies an undo or redo.
extern bool GIsTransacting;

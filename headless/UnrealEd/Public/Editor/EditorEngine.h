#pragma once

#include "Engine/Engine.h"
#include "Editor/TransBuffer.h"

class UEditorEngine : public UEngine
{
	DECLARE_HEADLESS_CLASS(UEditorEngine, UEngine)

public:
	int32 BeginTransaction(const TCHAR* TransactionContext, const FText& Description, UObject* PrimaryObject);
	int32 BeginTransaction(const FText& Description) { return BeginTransaction(TEXT(""), Description, nullptr); }
	int32 EndTransaction();
	void CancelTransaction(int32 Index);
	bool UndoTransaction(bool bCanRedo = true);
	bool RedoTransaction();

	// The first world context of the editor world type; there must be one.
	FWorldContext& GetEditorWorldContext(bool bEnsureIsGWorld = false);

	UTransBuffer* Trans = nullptr;
};

extern UEditorEngine* GEditor;

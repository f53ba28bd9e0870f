#include "DMXRuntimeUtils.h"

#include "Library/DMXEntity.h"
#include "Library/DMXLibrary.h"

FString FDMXRuntimeUtils::GenerateUniqueNameFromExisting(const TSet<FString>& InExistingNames, const FString& InBaseName)
{
	if (!InBaseName.IsEmpty() && !InExistingNames.Contains(InBaseName))
	{
		return InBaseName;
	}

	FString BaseName;
	int32 Index = 0;
	if (InBaseName.IsEmpty())
	{
		BaseName = TEXT("Default name");
	}
	else
	{
		GetNameAndIndexFromString(InBaseName, BaseName, Index);
	}

	// Counted in 64 bit so that a base ending in INT32_MAX cannot overflow.
	int64 Count = Index == 0 ? 1 : Index;
	FString UniqueName;
	do
	{
		const FString CountText = FString::Printf(TEXT("%d"), Count);
		if (BaseName.Len() + CountText.Len() + 2 >= NAME_SIZE)
		{
			BaseName = BaseName.Left(NAME_SIZE - CountText.Len() - 2);
		}
		UniqueName = BaseName + TEXT("_") + CountText;
		++Count;
	} while (InExistingNames.Contains(UniqueName));

	return UniqueName;
}

bool FDMXRuntimeUtils::GetNameAndIndexFromString(const FString& InString, FString& OutName, int32& OutIndex)
{
	OutName = InString.TrimEnd();

	int32 FirstDigit = OutName.Len();
	while (FirstDigit > 0 && FChar::IsDigit(OutName[FirstDigit - 1]))
	{
		--FirstDigit;
	}

	const bool bHasIndex = FirstDigit < OutName.Len();
	OutIndex = bHasIndex ? FCString::Atoi(*OutName.Mid(FirstDigit)) : 0;
	OutName = OutName.Left(FirstDigit).TrimEnd();

	int32 NameLength = OutName.Len();
	while (NameLength > 0 && (OutName[NameLength - 1] == u'_' || OutName[NameLength - 1] == u'.' || OutName[NameLength - 1] == u'-'))
	{
		--NameLength;
	}
	OutName = OutName.Left(NameLength);

	return bHasIndex;
}

FString FDMXRuntimeUtils::FindUniqueEntityName(const UDMXLibrary* InLibrary, TSubclassOf<UDMXEntity> InEntityClass, const FString& InBaseName)
{
	TSet<FString> ExistingNames;
	if (InLibrary)
	{
		for (const UDMXEntity* Entity : InLibrary->GetEntities())
		{
			if (Entity && Entity->IsA(InEntityClass))
			{
				ExistingNames.Add(Entity->GetDisplayName());
			}
		}
	}

	const FString BaseName = InBaseName.IsEmpty() && InEntityClass ? InEntityClass->GetName() : InBaseName;
	return GenerateUniqueNameFromExisting(ExistingNames, BaseName);
}

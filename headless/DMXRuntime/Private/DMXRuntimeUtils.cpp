#include "DMXRuntimeUtils.h"

#include "Library/DMXEntity.h"
#include "Library/DMXLibrary.h"
#include "DMXUniqueNameGenerator.h"

FString FDMXRuntimeUtils::GenerateUniqueNameFromExisting(const TSet<FString>& InExistingNames, const FString& InBaseName)
{
	int64 NoHint = 0;
	return UE::DMX::Private::GenerateUniqueName([&InExistingNames](const FString& Name) { return InExistingNames.Contains(Name); },
		[&NoHint](const FString&) -> int64& { return NoHint = 0; }, InBaseName);
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
	const FString BaseName = InBaseName.IsEmpty() && InEntityClass ? InEntityClass->GetName() : InBaseName;
	if (!InLibrary)
	{
		return GenerateUniqueNameFromExisting(TSet<FString>(), BaseName);
	}
	return InLibrary->FindUniqueEntityName(InEntityClass, BaseName);
}

// The counting behind FDMXRuntimeUtils::GenerateUniqueNameFromExisting, over any membership test,
// with an optional counter hint so that counting past a long run of taken names is not repeated.
#pragma once

#include "CoreMinimal.h"
#include "DMXRuntimeUtils.h"

namespace UE::DMX::Private
{
	// Contains(Name) answers whether a name is taken. CounterHint(Stem) answers a counter kept by the
	// caller for the stem: every "<stem>_<n>" with 1 <= n < it is taken (the caller lowers it when
	// such a name is freed); it is consulted and advanced only for stems short enough never to be cut.
	template <typename ContainsFn, typename CounterHintFn>
	FString GenerateUniqueName(ContainsFn&& Contains, CounterHintFn&& CounterHint, const FString& InBaseName)
	{
		if (!InBaseName.IsEmpty() && !Contains(InBaseName))
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
			FDMXRuntimeUtils::GetNameAndIndexFromString(InBaseName, BaseName, Index);
		}

		// Counted in 64 bit so that a base ending in INT32_MAX cannot overflow.
		const int64 Start = Index == 0 ? 1 : Index;
		// A stem this short is never cut to fit, so every candidate is "<stem>_<n>".
		int64* Hint = BaseName.Len() + 24 < NAME_SIZE ? &CounterHint(BaseName) : nullptr;
		const bool bFromHint = Hint != nullptr && Start <= *Hint;
		int64 Count = bFromHint ? *Hint : Start;
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
		} while (Contains(UniqueName));

		if (bFromHint)
		{
			*Hint = Count - 1;
		}
		return UniqueName;
	}
}

#include "Internationalization/Text.h"

#include <string>

FText FText::FromString(const FString& String)
{
	FText Result;
	Result.Source = String;
	return Result;
}

FText FText::FromName(const FName& Name)
{
	return FromString(Name.ToString());
}

FText FText::AsNumber(int64 Value)
{
	// Grouping as in the engine's invariant culture: 1,000 and up get separators.
	std::string Digits = std::to_string(Value < 0 ? -Value : Value);
	std::string Grouped;
	for (size_t Index = 0; Index < Digits.size(); ++Index)
	{
		if (Index > 0 && (Digits.size() - Index) % 3 == 0)
		{
			Grouped.push_back(',');
		}
		Grouped.push_back(Digits[Index]);
	}
	if (Value < 0)
	{
		Grouped.insert(Grouped.begin(), '-');
	}
	return FromString(FString(Grouped.c_str()));
}

FText FText::FromLocalized(const TCHAR* Namespace, const TCHAR* Key, const TCHAR* Source)
{
	FText Result;
	Result.Source = FString(Source);
	Result.Namespace = FString(Namespace);
	Result.Key = FString(Key);
	return Result;
}

FText FText::Format(const FText& Pattern, std::initializer_list<FText> Arguments)
{
	const FString& In = Pattern.ToString();
	FString Out;
	for (int32 Index = 0; Index < In.Len(); ++Index)
	{
		if (In[Index] == u'{')
		{
			int32 End = Index + 1;
			int32 ArgIndex = 0;
			while (End < In.Len() && FChar::IsDigit(In[End]))
			{
				ArgIndex = ArgIndex * 10 + (In[End] - u'0');
				++End;
			}
			if (End > Index + 1 && End < In.Len() && In[End] == u'}' && ArgIndex < static_cast<int32>(Arguments.size()))
			{
				Out += (Arguments.begin() + ArgIndex)->ToString();
				Index = End;
				continue;
			}
		}
		Out.AppendChar(In[Index]);
	}
	FText Result = FromString(Out);
	Result.Namespace = Pattern.Namespace;
	Result.Key = Pattern.Key;
	return Result;
}

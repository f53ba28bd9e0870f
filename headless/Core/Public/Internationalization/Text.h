// FText: display text. Texts made by NSLOCTEXT/LOCTEXT remember their namespace and key;
// with no translation loaded their string is the source literal.
#pragma once

#include <initializer_list>
#include "Containers/UnrealString.h"
#include "UObject/NameTypes.h"

class FText
{
public:
	FText() = default;

	static FText FromString(const FString& String);
	static FText FromName(const FName& Name);
	static FText AsNumber(int64 Value);
	static FText GetEmpty() { return FText(); }
	static FText FromLocalized(const TCHAR* Namespace, const TCHAR* Key, const TCHAR* Source);
	// Replaces {0}, {1}, ... with the arguments' strings.
	static FText Format(const FText& Pattern, std::initializer_list<FText> Arguments);
	template <typename... ArgTypes>
	static FText Format(const FText& Pattern, const ArgTypes&... Arguments)
	{
		return Format(Pattern, {FText(Arguments)...});
	}

	const FString& ToString() const { return Source; }
	bool IsEmpty() const { return Source.IsEmpty(); }
	bool EqualTo(const FText& Other) const { return Source.Equals(Other.Source); }

	// Where the text came from, for tools and tests: empty for texts not made by a LOCTEXT macro.
	const FString& GetNamespace() const { return Namespace; }
	const FString& GetKey() const { return Key; }

private:
	FString Source;
	FString Namespace;
	FString Key;
};

#define NSLOCTEXT(InNamespace, InKey, InTextLiteral) FText::FromLocalized(TEXT(InNamespace), TEXT(InKey), TEXT(InTextLiteral))
#define LOCTEXT(InKey, InTextLiteral) FText::FromLocalized(TEXT(LOCTEXT_NAMESPACE), TEXT(InKey), TEXT(InTextLiteral))
#define INVTEXT(InTextLiteral) FText::FromString(FString(TEXT(InTextLiteral)))

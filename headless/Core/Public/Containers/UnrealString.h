// FString: a dynamic string of TCHAR (UTF-16 code units on Linux). operator== ignores case,
// Equals() is case-sensitive unless told otherwise, and the hash ignores case, as in the engine.
#pragma once

#include <string>
#include <string_view>
#include <initializer_list>
#include <variant>
#include "CoreTypes.h"
#include "Containers/Array.h"
#include "Misc/CString.h"

class FString
{
public:
	FString() = default;
	FString(const TCHAR* Str) : Data(Str ? Str : u"") {}
	FString(int32 InCount, const TCHAR* Str) : Data(Str ? std::u16string(Str, static_cast<size_t>(InCount)) : std::u16string()) {}
	explicit FString(const ANSICHAR* Str);
	explicit FString(std::u16string_view View) : Data(View) {}
	FString(const FString&) = default;
	FString(FString&&) noexcept = default;
	FString& operator=(const FString&) = default;
	FString& operator=(FString&&) noexcept = default;
	FString& operator=(const TCHAR* Str)
	{
		Data = Str ? Str : u"";
		return *this;
	}

	const TCHAR* operator*() const { return Data.c_str(); }
	int32 Len() const { return static_cast<int32>(Data.size()); }
	bool IsEmpty() const { return Data.empty(); }
	void Empty() { Data.clear(); }
	void Reset() { Data.clear(); }
	TCHAR& operator[](int32 Index) { return Data[static_cast<size_t>(Index)]; }
	const TCHAR& operator[](int32 Index) const { return Data[static_cast<size_t>(Index)]; }
	std::u16string_view View() const { return Data; }
	// FStringView of the text, as the engine's FString converts implicitly.
	operator std::u16string_view() const { return Data; }

	bool Equals(const FString& Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const;
	int32 Compare(const FString& Other, ESearchCase::Type SearchCase = ESearchCase::CaseSensitive) const;

	int32 Find(const FString& SubStr, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
		ESearchDir::Type SearchDir = ESearchDir::FromStart, int32 StartPosition = INDEX_NONE) const;
	int32 Find(const TCHAR* SubStr, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
		ESearchDir::Type SearchDir = ESearchDir::FromStart, int32 StartPosition = INDEX_NONE) const
	{
		return Find(FString(SubStr), SearchCase, SearchDir, StartPosition);
	}
	bool Contains(const FString& SubStr, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const
	{
		return Find(SubStr, SearchCase) != INDEX_NONE;
	}
	bool FindChar(TCHAR C, int32& OutIndex) const;
	bool FindLastChar(TCHAR C, int32& OutIndex) const;
	bool StartsWith(const FString& Prefix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	bool EndsWith(const FString& Suffix, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;

	FString Left(int32 Count) const;
	FString Right(int32 Count) const;
	FString Mid(int32 Start, int32 Count = 0x7fffffff) const;
	FString LeftChop(int32 Count) const;
	FString RightChop(int32 Count) const;
	FString ToLower() const;
	FString ToUpper() const;
	FString TrimStart() const;
	FString TrimEnd() const;
	FString TrimStartAndEnd() const { return TrimStart().TrimEnd(); }
	FString Replace(const TCHAR* From, const TCHAR* To, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase) const;
	bool Split(const FString& InS, FString* LeftS, FString* RightS, ESearchCase::Type SearchCase = ESearchCase::IgnoreCase,
		ESearchDir::Type SearchDir = ESearchDir::FromStart) const;
	bool IsNumeric() const;

	FString& Append(const FString& Other)
	{
		Data += Other.Data;
		return *this;
	}
	FString& AppendChar(TCHAR C)
	{
		Data.push_back(C);
		return *this;
	}
	void AppendInt(int32 Value);
	FString& operator+=(const FString& Other) { return Append(Other); }
	FString& operator+=(const TCHAR* Other)
	{
		Data += Other;
		return *this;
	}
	FString& operator+=(TCHAR C) { return AppendChar(C); }

	friend FString operator+(const FString& A, const FString& B)
	{
		FString Result(A);
		Result += B;
		return Result;
	}
	friend FString operator+(const FString& A, const TCHAR* B) { return A + FString(B); }
	friend FString operator+(const TCHAR* A, const FString& B) { return FString(A) + B; }

	friend bool operator==(const FString& A, const FString& B) { return A.Equals(B, ESearchCase::IgnoreCase); }
	friend bool operator!=(const FString& A, const FString& B) { return !(A == B); }
	friend bool operator==(const FString& A, const TCHAR* B) { return A.Equals(FString(B), ESearchCase::IgnoreCase); }
	friend bool operator!=(const FString& A, const TCHAR* B) { return !(A == B); }
	friend bool operator<(const FString& A, const FString& B) { return A.Compare(B, ESearchCase::IgnoreCase) < 0; }

	static FString FromInt(int32 Value);
	static FString SanitizeFloat(double Value);

	using FFormatArg = std::variant<int64, uint64, double, const TCHAR*>;
	// printf-style formatting with %s (TCHAR*), %d, %i, %u, %x, %X, %f, %g and %%.
	template <typename... ArgTypes>
	static FString Printf(const TCHAR* Format, ArgTypes... Args)
	{
		return PrintfImpl(Format, {ToFormatArg(Args)...});
	}

private:
	template <typename T>
	static FFormatArg ToFormatArg(T Value)
	{
		if constexpr (std::is_same_v<T, const TCHAR*> || std::is_same_v<T, TCHAR*>)
		{
			return FFormatArg(static_cast<const TCHAR*>(Value));
		}
		else if constexpr (std::is_floating_point_v<T>)
		{
			return FFormatArg(static_cast<double>(Value));
		}
		else if constexpr (std::is_unsigned_v<T>)
		{
			return FFormatArg(static_cast<uint64>(Value));
		}
		else
		{
			return FFormatArg(static_cast<int64>(Value));
		}
	}
	static FString PrintfImpl(const TCHAR* Format, std::initializer_list<FFormatArg> Args);

	std::u16string Data;
};

uint32 GetTypeHash(const FString& S);

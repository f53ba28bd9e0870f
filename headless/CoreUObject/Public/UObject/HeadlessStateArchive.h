// Records and restores an object's state for the undo buffer. Each class lists its state with
// Ar << Field in SerializeHeadlessState (after calling Super's); saving copies the fields out,
// loading copies them back in the same order.
#pragma once

#include <any>
#include <vector>
#include "CoreTypes.h"

class FHeadlessStateArchive
{
public:
	static FHeadlessStateArchive ForSaving() { return FHeadlessStateArchive(true); }
	static FHeadlessStateArchive ForLoading(std::vector<std::any> Saved)
	{
		FHeadlessStateArchive Ar(false);
		Ar.Values = std::move(Saved);
		return Ar;
	}

	bool IsSaving() const { return bSaving; }
	bool IsLoading() const { return !bSaving; }
	std::vector<std::any> TakeValues() { return std::move(Values); }

	template <typename T>
	FHeadlessStateArchive& operator<<(T& Value)
	{
		if (bSaving)
		{
			Values.emplace_back(Value);
		}
		else
		{
			check(Cursor < Values.size());
			Value = std::any_cast<const T&>(Values[Cursor++]);
		}
		return *this;
	}

private:
	explicit FHeadlessStateArchive(bool bInSaving) : bSaving(bInSaving) {}
	bool bSaving;
	size_t Cursor = 0;
	std::vector<std::any> Values;
};

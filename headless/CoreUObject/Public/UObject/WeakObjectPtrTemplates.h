// A weak pointer: answers null once the object is garbage (taken away by an undo).
#pragma once

#include "UObject/Object.h"

template <typename T>
class TWeakObjectPtr
{
public:
	TWeakObjectPtr() = default;
	TWeakObjectPtr(std::nullptr_t) {}
	TWeakObjectPtr(T* InObject) : Object(InObject) {}

	T* Get() const { return (Object && !static_cast<const UObject*>(Object)->IsGarbage()) ? Object : nullptr; }
	bool IsValid() const { return Get() != nullptr; }
	void Reset() { Object = nullptr; }
	T* operator->() const { return Get(); }
	explicit operator bool() const { return IsValid(); }
	bool operator==(const TWeakObjectPtr& Other) const { return Object == Other.Object; }

private:
	T* Object = nullptr;
};

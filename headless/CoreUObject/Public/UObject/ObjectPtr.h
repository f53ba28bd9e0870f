#pragma once

#include "UObject/Object.h"

template <typename T>
class TObjectPtr
{
public:
	TObjectPtr() = default;
	TObjectPtr(std::nullptr_t) {}
	TObjectPtr(T* InObject) : Object(InObject) {}
	template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
	TObjectPtr(const TObjectPtr<U>& Other) : Object(Other.Get()) {}

	T* Get() const { return Object; }
	operator T*() const { return Object; }
	T* operator->() const { return Object; }
	T& operator*() const { return *Object; }
	explicit operator bool() const { return Object != nullptr; }
	bool operator==(const TObjectPtr& Other) const { return Object == Other.Object; }
	bool operator==(const T* Other) const { return Object == Other; }
	bool operator!=(const T* Other) const { return Object != Other; }
	bool operator==(std::nullptr_t) const { return Object == nullptr; }
	bool operator!=(std::nullptr_t) const { return Object != nullptr; }
	friend uint32 GetTypeHash(const TObjectPtr& Ptr) { return GetTypeHash(Ptr.Object); }

private:
	T* Object = nullptr;
};

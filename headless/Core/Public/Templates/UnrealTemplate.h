#pragma once

#include <utility>

template <typename T>
inline std::remove_reference_t<T>&& MoveTemp(T&& Value)
{
	return static_cast<std::remove_reference_t<T>&&>(Value);
}

template <typename T>
inline T CopyTemp(const T& Value)
{
	return Value;
}

template <typename T>
inline void Swap(T& A, T& B)
{
	std::swap(A, B);
}

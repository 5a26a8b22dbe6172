#pragma once

#include <type_traits>
#include <utility>

// Casts to an rvalue so that the value is moved from; the engine's name for std::move.
template <typename T>
constexpr std::remove_reference_t<T>&& MoveTemp(T&& Value) noexcept
{
	return static_cast<std::remove_reference_t<T>&&>(Value);
}

template <typename T>
void Swap(T& A, T& B)
{
	T Temp = MoveTemp(A);
	A = MoveTemp(B);
	B = MoveTemp(Temp);
}

#pragma once

#include <memory>

template <typename T>
using TUniquePtr = std::unique_ptr<T>;

template <typename T, typename... ArgTypes>
TUniquePtr<T> MakeUnique(ArgTypes&&... Args)
{
	return std::make_unique<T>(std::forward<ArgTypes>(Args)...);
}

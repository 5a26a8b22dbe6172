#pragma once

#include "CoreTypes.h"

#include <memory>
#include <type_traits>
#include <utility>

// Reference-counted pointers in the engine's style, on the standard library's thread-safe counts.
// TSharedPtr may be null; TSharedRef never is.

template <typename ObjectType>
class TSharedRef;

template <typename ObjectType>
class TSharedPtr : public std::shared_ptr<ObjectType>
{
	using Super = std::shared_ptr<ObjectType>;

public:
	TSharedPtr() = default;
	TSharedPtr(std::nullptr_t) {}
	explicit TSharedPtr(ObjectType* Object) : Super(Object) {}
	template <typename OtherType, typename = std::enable_if_t<std::is_convertible_v<OtherType*, ObjectType*>>>
	TSharedPtr(const std::shared_ptr<OtherType>& Other) : Super(Other)
	{
	}
	template <typename OtherType, typename = std::enable_if_t<std::is_convertible_v<OtherType*, ObjectType*>>>
	TSharedPtr(std::shared_ptr<OtherType>&& Other) : Super(std::move(Other))
	{
	}

	bool IsValid() const { return this->get() != nullptr; }
	ObjectType* Get() const { return this->get(); }
	void Reset() { this->reset(); }
	TSharedRef<ObjectType> ToSharedRef() const;
};

template <typename ObjectType>
class TSharedRef : public std::shared_ptr<ObjectType>
{
	using Super = std::shared_ptr<ObjectType>;

public:
	explicit TSharedRef(ObjectType* Object) : Super(Object) { check(Object != nullptr); }
	template <typename OtherType, typename = std::enable_if_t<std::is_convertible_v<OtherType*, ObjectType*>>>
	TSharedRef(const TSharedRef<OtherType>& Other) : Super(Other)
	{
	}
	// Built from a pointer known to be valid; the check keeps the never-null promise.
	explicit TSharedRef(const std::shared_ptr<ObjectType>& Other) : Super(Other) { check(this->get() != nullptr); }

	ObjectType& Get() const { return *this->get(); }
	bool IsValid() const { return true; }
	TSharedPtr<ObjectType> ToSharedPtr() const { return TSharedPtr<ObjectType>(static_cast<const Super&>(*this)); }
};

template <typename ObjectType>
TSharedRef<ObjectType> TSharedPtr<ObjectType>::ToSharedRef() const
{
	check(IsValid());
	return TSharedRef<ObjectType>(static_cast<const Super&>(*this));
}

template <typename ObjectType>
class TWeakPtr : public std::weak_ptr<ObjectType>
{
	using Super = std::weak_ptr<ObjectType>;

public:
	TWeakPtr() = default;
	template <typename OtherType>
	TWeakPtr(const std::shared_ptr<OtherType>& Other) : Super(Other)
	{
	}
	template <typename OtherType>
	TWeakPtr(const std::weak_ptr<OtherType>& Other) : Super(Other)
	{
	}
	TSharedPtr<ObjectType> Pin() const { return TSharedPtr<ObjectType>(this->lock()); }
	bool IsValid() const { return !this->expired(); }
};

template <typename ObjectType, typename... ArgTypes>
TSharedRef<ObjectType> MakeShared(ArgTypes&&... Args)
{
	return TSharedRef<ObjectType>(std::make_shared<ObjectType>(std::forward<ArgTypes>(Args)...));
}

template <typename ObjectType>
TSharedRef<ObjectType> MakeShareable(ObjectType* Object)
{
	return TSharedRef<ObjectType>(Object);
}

template <typename ObjectType>
class TSharedFromThis : public std::enable_shared_from_this<ObjectType>
{
public:
	TSharedRef<ObjectType> AsShared() { return TSharedRef<ObjectType>(this->shared_from_this()); }
	TSharedRef<const ObjectType> AsShared() const { return TSharedRef<const ObjectType>(this->shared_from_this()); }
};

template <typename ToType, typename FromType>
TSharedPtr<ToType> StaticCastSharedPtr(const std::shared_ptr<FromType>& From)
{
	return TSharedPtr<ToType>(std::static_pointer_cast<ToType>(From));
}

template <typename ToType, typename FromType>
TSharedRef<ToType> StaticCastSharedRef(const TSharedRef<FromType>& From)
{
	return TSharedRef<ToType>(std::static_pointer_cast<ToType>(From));
}

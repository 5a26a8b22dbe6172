#pragma once

#include "Delegates/Delegate.h"

// A widget value: a constant, or a getter that the toolkit asks again every frame.
template <typename ObjectType>
class TAttribute
{
public:
	using FGetter = TDelegate<ObjectType()>;

	TAttribute() = default;
	template <typename OtherType, typename = std::enable_if_t<std::is_constructible_v<ObjectType, const OtherType&>>>
	TAttribute(const OtherType& InValue) : Value(InValue), bSet(true)
	{
	}

	template <typename UserClass, typename MethodType>
	static TAttribute Create(UserClass* Object, MethodType Method)
	{
		TAttribute Result;
		Result.Getter = FGetter::CreateSP(Object, Method);
		Result.bSet = true;
		return Result;
	}
	static TAttribute Create(const FGetter& InGetter)
	{
		TAttribute Result;
		Result.Getter = InGetter;
		Result.bSet = true;
		return Result;
	}
	template <typename FunctorType>
	static TAttribute CreateLambda(FunctorType&& Functor)
	{
		return Create(FGetter::CreateLambda(std::forward<FunctorType>(Functor)));
	}

	// The getter's answer when bound (the last value once its object is gone), else the constant.
	ObjectType Get() const
	{
		if (Getter.IsBound())
		{
			Value = Getter.Execute();
		}
		return Value;
	}
	ObjectType Get(const ObjectType& DefaultValue) const { return bSet ? Get() : DefaultValue; }
	bool IsSet() const { return bSet; }
	bool IsBound() const { return Getter.IsBound(); }
	void Set(const ObjectType& InValue)
	{
		Getter.Unbind();
		Value = InValue;
		bSet = true;
	}

private:
	mutable ObjectType Value{};
	FGetter Getter;
	bool bSet = false;
};

#pragma once

#include "CoreMinimal.h"

#include <functional>
#include <memory>
#include <type_traits>

// A callable bound to a function, a lambda or an object's member. A member of an object held by shared
// pointers is bound weakly: once the object is gone the delegate is unbound and calling it does nothing.
template <typename Signature>
class TDelegate;

template <typename RetType, typename... ParamTypes>
class TDelegate<RetType(ParamTypes...)>
{
public:
	using FFunction = std::function<RetType(ParamTypes...)>;

	TDelegate() = default;

	template <typename FunctorType>
	static TDelegate CreateLambda(FunctorType&& Functor)
	{
		TDelegate Result;
		Result.Function = FFunction(std::forward<FunctorType>(Functor));
		return Result;
	}

	template <typename UserClass, typename MethodType, typename... VarTypes>
	static TDelegate CreateSP(UserClass* Object, MethodType Method, VarTypes... Vars)
	{
		TDelegate Result;
		Result.Function = Result.BindMember(Object, Method, Vars...);
		return Result;
	}
	template <typename UserClass, typename MethodType, typename... VarTypes>
	static TDelegate CreateRaw(UserClass* Object, MethodType Method, VarTypes... Vars)
	{
		return CreateSP(Object, Method, Vars...);
	}

	template <typename FunctorType>
	void BindLambda(FunctorType&& Functor)
	{
		*this = CreateLambda(std::forward<FunctorType>(Functor));
	}
	template <typename UserClass, typename MethodType, typename... VarTypes>
	void BindRaw(UserClass* Object, MethodType Method, VarTypes... Vars)
	{
		*this = CreateSP(Object, Method, Vars...);
	}
	template <typename UserClass, typename MethodType, typename... VarTypes>
	void BindSP(UserClass* Object, MethodType Method, VarTypes... Vars)
	{
		*this = CreateSP(Object, Method, Vars...);
	}

	void Unbind() { Function = nullptr; }
	bool IsBound() const { return static_cast<bool>(Function) && (!Alive || Alive()); }

	// Calls the bound function; an unbound delegate returns a default value.
	RetType Execute(ParamTypes... Params) const
	{
		if (!IsBound())
		{
			if constexpr (std::is_void_v<RetType>)
			{
				return;
			}
			else if constexpr (std::is_default_constructible_v<RetType>)
			{
				return RetType();
			}
			else
			{
				checkf(false, "An unbound delegate that must return a value was executed");
			}
		}
		return Function(std::forward<ParamTypes>(Params)...);
	}
	bool ExecuteIfBound(ParamTypes... Params) const
	{
		if (!IsBound())
		{
			return false;
		}
		Function(std::forward<ParamTypes>(Params)...);
		return true;
	}

private:
	template <typename UserClass, typename MethodType, typename... VarTypes>
	FFunction BindMember(UserClass* Object, MethodType Method, VarTypes... Vars)
	{
		// Objects owned by shared pointers are watched through a weak pointer; others are trusted to outlive
		// the delegate.
		if constexpr (requires { Object->weak_from_this(); })
		{
			auto Weak = Object->weak_from_this();
			if (!Weak.expired())
			{
				Alive = [Weak] { return !Weak.expired(); };
			}
		}
		return [Object, Method, Vars...](ParamTypes... Params) -> RetType
		{ return (Object->*Method)(std::forward<ParamTypes>(Params)..., Vars...); };
	}

	FFunction Function;
	std::function<bool()> Alive;
};

#define DECLARE_DELEGATE_RetVal(RetType, Name) using Name = TDelegate<RetType()>
#define DECLARE_DELEGATE_RetVal_OneParam(RetType, Name, P1) using Name = TDelegate<RetType(P1)>
#define DECLARE_DELEGATE_RetVal_TwoParams(RetType, Name, P1, P2) using Name = TDelegate<RetType(P1, P2)>
#define DECLARE_DELEGATE(Name) using Name = TDelegate<void()>
#define DECLARE_DELEGATE_OneParam(Name, P1) using Name = TDelegate<void(P1)>
#define DECLARE_DELEGATE_TwoParams(Name, P1, P2) using Name = TDelegate<void(P1, P2)>

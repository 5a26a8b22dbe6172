#pragma once

#include "CoreTypes.h"

#include <cstdint>

class FString;

namespace StringFormat
{
	// One argument of FString::Printf, kept with its kind so that each conversion can check what it was given.
	struct FArg
	{
		enum EKind
		{
			Signed,
			Unsigned,
			Float,
			Text,
			Pointer,
		};
		EKind Kind = Signed;
		bool bWide = false; // a 64-bit integer
		int64 Int = 0;
		double Real = 0.0;
		const TCHAR* String = nullptr;

		FArg(bool Value) : Kind(Signed), Int(Value ? 1 : 0) {}
		FArg(char Value) : Kind(Signed), Int(Value) {}
		FArg(char16_t Value) : Kind(Unsigned), Int(Value) {}
		FArg(int Value) : Kind(Signed), Int(Value) {}
		FArg(unsigned Value) : Kind(Unsigned), Int(static_cast<int64>(Value)) {}
		FArg(long Value) : Kind(Signed), bWide(sizeof(long) == 8), Int(Value) {}
		FArg(unsigned long Value) : Kind(Unsigned), bWide(sizeof(long) == 8), Int(static_cast<int64>(Value)) {}
		FArg(long long Value) : Kind(Signed), bWide(true), Int(Value) {}
		FArg(unsigned long long Value) : Kind(Unsigned), bWide(true), Int(static_cast<int64>(Value)) {}
		FArg(short Value) : Kind(Signed), Int(Value) {}
		FArg(unsigned short Value) : Kind(Unsigned), Int(Value) {}
		FArg(signed char Value) : Kind(Signed), Int(Value) {}
		FArg(unsigned char Value) : Kind(Unsigned), Int(Value) {}
		FArg(float Value) : Kind(Float), Real(Value) {}
		FArg(double Value) : Kind(Float), Real(Value) {}
		FArg(const TCHAR* Value) : Kind(Text), String(Value) {}
		FArg(TCHAR* Value) : Kind(Text), String(Value) {}
		CORE_API FArg(const FString& Value);
		FArg(const void* Value) : Kind(Pointer), Int(static_cast<int64>(reinterpret_cast<intptr_t>(Value))) {}
	};

	CORE_API FString Format(const TCHAR* Fmt, const FArg* Args, int32 NumArgs);
}

#pragma once

#include "Containers/UnrealString.h"

enum class EGuidFormats
{
	// 32 upper-case hexadecimal digits, no separators.
	Digits = 0,
	DigitsWithHyphens = 1,
};

struct CORE_API FGuid
{
	uint32 A = 0;
	uint32 B = 0;
	uint32 C = 0;
	uint32 D = 0;

	FGuid() = default;
	FGuid(uint32 InA, uint32 InB, uint32 InC, uint32 InD) : A(InA), B(InB), C(InC), D(InD) {}

	// 128 bits from the operating system's random source.
	static FGuid NewGuid();
	bool IsValid() const { return (A | B | C | D) != 0; }
	void Invalidate() { A = B = C = D = 0; }
	FString ToString(EGuidFormats Format = EGuidFormats::Digits) const;
	static bool Parse(const FString& Text, FGuid& OutGuid);

	bool operator==(const FGuid& Other) const { return A == Other.A && B == Other.B && C == Other.C && D == Other.D; }
	bool operator!=(const FGuid& Other) const { return !(*this == Other); }
};

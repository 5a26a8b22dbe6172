#pragma once

#include "Containers/UnrealString.h"

// Reads options from a command line such as "-modasdlc -SetModID=12 -ModTitle=Islands".
struct CORE_API FParse
{
	// True when "-Param" or "/Param" stands in Stream as a whole word, letter case ignored.
	static bool Param(const TCHAR* Stream, const TCHAR* Param);
	// The text after Match: a quoted value up to its closing quote, else up to a blank, and with
	// bShouldStopOnSeparator also up to a comma (a parenthesis is part of the value: "Isle)Two" is a title).
	static bool Value(const TCHAR* Stream, const TCHAR* Match, FString& Value, bool bShouldStopOnSeparator = true);
	// The decimal number after Match, with an optional sign; digits stop at the first other character.
	static bool Value(const TCHAR* Stream, const TCHAR* Match, int64& Value);
	static bool Value(const TCHAR* Stream, const TCHAR* Match, int32& Value);
	static bool Value(const TCHAR* Stream, const TCHAR* Match, uint32& Value);
	static bool Value(const TCHAR* Stream, const TCHAR* Match, float& Value);
};

struct CORE_API FCommandLine
{
	static void Set(const FString& NewCommandLine);
	static const TCHAR* Get();
};

#pragma once

#include "Containers/Array.h"
#include "Containers/UnrealString.h"

// Splits one parameter string into separate arguments by the rules of the Microsoft C runtime, so that
// a command line composed for a Windows program reaches our children with the same arguments and
// without any shell:
//
// - Blanks (space, tab) outside double quotes separate arguments; runs of them count as one.
// - A double quote switches quoting on or off and is not itself part of the argument. A pair of quotes
//   with nothing between them still makes an argument, the empty one.
// - 2n backslashes before a double quote give n backslashes, and the quote switches quoting.
// - 2n+1 backslashes before a double quote give n backslashes and a literal double quote.
// - Backslashes not followed by a double quote are literal ("C:\Dir\" keeps both).
// - Inside quotes, two double quotes in a row give one literal double quote and quoting goes on (the
//   rule of the C runtime since Visual Studio 2008): "a""b" is a"b.
// - A quote left open at the end is closed there.
//
// Every argument is taken by these rules, also the first one: the parameter string never holds the
// program's own name.
struct CORE_API FWindowsArguments
{
	static TArray<FString> Split(const FString& Parms);
	// One argument in the form that Split takes back to the same text: bare when nothing in it needs quotes,
	// else in double quotes, with the backslashes before a literal quote or before the closing quote doubled.
	static FString Quote(const FString& Argument);
};

#pragma once

#include "CoreTypes.h"

// Numbers read from the start of a text the way the C library's wide conversions read them.
struct CORE_API FCString
{
	// Leading blanks, an optional sign, then decimal digits up to the first other unit; 0 when no digit follows.
	// Too many digits wrap around instead of failing, as _wtoi64 does on the kit's machines.
	static int64 Atoi64(const TCHAR* Text);
	// The same number's low 32 bits, as _wtoi gives them.
	static int32 Atoi(const TCHAR* Text) { return static_cast<int32>(Atoi64(Text)); }
	// Leading blanks, an optional sign, then the longest decimal number (digits, a point, an exponent); 0 when
	// none follows. The point is always ".", whatever the user's locale, and the result is the same on every
	// system: the nearest double, infinity when too large, zero when too small. No "inf", "nan" or hex forms.
	static double Atod(const TCHAR* Text);
	// The same reading into a float, rounded once: the float nearest to the text.
	static float Atof(const TCHAR* Text);
};

#pragma once

#include "CoreTypes.h"

namespace FChar
{
	// Folds one unit by our own table of simple case mappings (Unicode's, as the C library's C.UTF-8 locale has
	// them), the same on every system and whatever the user's environment says.
	CORE_API TCHAR ToLower(TCHAR Character);
	CORE_API TCHAR ToUpper(TCHAR Character);
	CORE_API bool IsWhitespace(TCHAR Character);
	inline bool IsDigit(TCHAR Character) { return Character >= u'0' && Character <= u'9'; }
	// The value of a hexadecimal digit in either letter case; -1 for any other unit.
	inline int32 HexDigitValue(TCHAR Character)
	{
		if (Character >= u'0' && Character <= u'9')
		{
			return Character - u'0';
		}
		if (Character >= u'a' && Character <= u'f')
		{
			return Character - u'a' + 10;
		}
		if (Character >= u'A' && Character <= u'F')
		{
			return Character - u'A' + 10;
		}
		return -1;
	}
}

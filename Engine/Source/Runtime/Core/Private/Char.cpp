#include "Containers/UnrealString.h"

#include <cwctype>
#include <locale.h>

namespace
{
	// towlower's answer depends on the C library's locale; one fixed UTF-8 locale makes folding the same for
	// every user. C.UTF-8 is built into the C library, so it is always there.
	locale_t FoldingLocale()
	{
		static locale_t Locale = []
		{
			locale_t Made = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(0));
			if (!Made)
			{
				Made = newlocale(LC_CTYPE_MASK, "en_US.UTF-8", static_cast<locale_t>(0));
			}
			return Made;
		}();
		return Locale;
	}
}

TCHAR FChar::ToLower(TCHAR Character)
{
	if (Character < 0x80)
	{
		return (Character >= u'A' && Character <= u'Z') ? static_cast<TCHAR>(Character + 32) : Character;
	}
	locale_t Locale = FoldingLocale();
	if (!Locale || (Character >= 0xD800 && Character <= 0xDFFF))
	{
		return Character;
	}
	const wint_t Folded = towlower_l(static_cast<wint_t>(Character), Locale);
	return Folded <= 0xFFFF ? static_cast<TCHAR>(Folded) : Character;
}

TCHAR FChar::ToUpper(TCHAR Character)
{
	if (Character < 0x80)
	{
		return (Character >= u'a' && Character <= u'z') ? static_cast<TCHAR>(Character - 32) : Character;
	}
	locale_t Locale = FoldingLocale();
	if (!Locale || (Character >= 0xD800 && Character <= 0xDFFF))
	{
		return Character;
	}
	const wint_t Folded = towupper_l(static_cast<wint_t>(Character), Locale);
	return Folded <= 0xFFFF ? static_cast<TCHAR>(Folded) : Character;
}

bool FChar::IsWhitespace(TCHAR Character)
{
	return Character == u' ' || Character == u'\t' || Character == u'\r' || Character == u'\n' || Character == u'\v' ||
		   Character == u'\f' || Character == 0x00A0 || Character == 0x3000;
}

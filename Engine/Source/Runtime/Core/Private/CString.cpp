#include "Misc/CString.h"

#include "Misc/Char.h"

int64 FCString::Atoi64(const TCHAR* Text)
{
	if (!Text)
	{
		return 0;
	}
	const TCHAR* Pos = Text;
	while (*Pos && FChar::IsWhitespace(*Pos))
	{
		++Pos;
	}
	bool bNegative = false;
	if (*Pos == u'-' || *Pos == u'+')
	{
		bNegative = *Pos == u'-';
		++Pos;
	}
	uint64 Magnitude = 0;
	while (FChar::IsDigit(*Pos))
	{
		Magnitude = Magnitude * 10 + static_cast<uint64>(*Pos - u'0');
		++Pos;
	}
	return static_cast<int64>(bNegative ? (~Magnitude + 1) : Magnitude);
}

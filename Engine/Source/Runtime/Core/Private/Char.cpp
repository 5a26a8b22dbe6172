#include "Misc/Char.h"

#include <algorithm>
#include <iterator>

namespace
{
	struct FCaseRun
	{
		uint16 First;
		uint16 Last;
		uint16 Stride;
		int32 Delta;
	};

#include "CaseTable.inl"

	// The C library's answers depend on its locale and differ between systems; one table of our own gives the
	// same folding for every user everywhere. Units outside the table map to themselves.
	template <size_t Count>
	TCHAR MapThrough(const FCaseRun (&Runs)[Count], TCHAR Character)
	{
		const FCaseRun* After =
			std::upper_bound(std::begin(Runs), std::end(Runs), Character, [](TCHAR Unit, const FCaseRun& Run) { return Unit < Run.First; });
		if (After == std::begin(Runs))
		{
			return Character;
		}
		const FCaseRun& Run = *(After - 1);
		if (Character > Run.Last || (Character - Run.First) % Run.Stride != 0)
		{
			return Character;
		}
		return static_cast<TCHAR>(Character + Run.Delta);
	}
}

TCHAR FChar::ToLower(TCHAR Character)
{
	if (Character < 0x80)
	{
		return (Character >= u'A' && Character <= u'Z') ? static_cast<TCHAR>(Character + 32) : Character;
	}
	return MapThrough(LowerRuns, Character);
}

TCHAR FChar::ToUpper(TCHAR Character)
{
	if (Character < 0x80)
	{
		return (Character >= u'a' && Character <= u'z') ? static_cast<TCHAR>(Character - 32) : Character;
	}
	return MapThrough(UpperRuns, Character);
}

bool FChar::IsWhitespace(TCHAR Character)
{
	return Character == u' ' || Character == u'\t' || Character == u'\r' || Character == u'\n' || Character == u'\v' ||
		   Character == u'\f' || Character == 0x00A0 || Character == 0x3000;
}

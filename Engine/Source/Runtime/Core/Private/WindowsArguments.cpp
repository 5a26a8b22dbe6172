#include "Misc/WindowsArguments.h"

TArray<FString> FWindowsArguments::Split(const FString& Parms)
{
	TArray<FString> Result;
	const std::u16string& Text = Parms.GetStd();
	const size_t Size = Text.size();
	size_t Pos = 0;
	while (true)
	{
		while (Pos < Size && (Text[Pos] == u' ' || Text[Pos] == u'\t'))
		{
			++Pos;
		}
		if (Pos >= Size)
		{
			break;
		}

		std::u16string Argument;
		bool bInQuotes = false;
		while (Pos < Size)
		{
			const TCHAR Unit = Text[Pos];
			if (!bInQuotes && (Unit == u' ' || Unit == u'\t'))
			{
				break;
			}
			if (Unit == u'\\')
			{
				size_t Backslashes = 0;
				while (Pos < Size && Text[Pos] == u'\\')
				{
					++Backslashes;
					++Pos;
				}
				if (Pos < Size && Text[Pos] == u'"')
				{
					Argument.append(Backslashes / 2, u'\\');
					if (Backslashes % 2 == 1)
					{
						Argument += u'"';
						++Pos;
					}
					// With an even count the quote is handled as a quote on the next round.
				}
				else
				{
					Argument.append(Backslashes, u'\\');
				}
				continue;
			}
			if (Unit == u'"')
			{
				if (bInQuotes && Pos + 1 < Size && Text[Pos + 1] == u'"')
				{
					Argument += u'"';
					Pos += 2;
				}
				else
				{
					bInQuotes = !bInQuotes;
					++Pos;
				}
				continue;
			}
			Argument += Unit;
			++Pos;
		}
		Result.Add(FString(std::move(Argument)));
	}
	return Result;
}

FString FWindowsArguments::Quote(const FString& Argument)
{
	const std::u16string& Text = Argument.GetStd();
	if (!Text.empty() && Text.find_first_of(u" \t\"") == std::u16string::npos)
	{
		return Argument;
	}
	std::u16string Quoted = u"\"";
	size_t Backslashes = 0;
	for (const char16_t Unit : Text)
	{
		if (Unit == u'\\')
		{
			++Backslashes;
			continue;
		}
		if (Unit == u'"')
		{
			// Backslashes before a quote are doubled, and the quote itself escaped.
			Quoted.append(Backslashes * 2 + 1, u'\\');
		}
		else
		{
			Quoted.append(Backslashes, u'\\');
		}
		Backslashes = 0;
		Quoted += Unit;
	}
	// Those before the closing quote are doubled, so that it stays a closing quote.
	Quoted.append(Backslashes * 2, u'\\');
	Quoted += u'"';
	return FString(std::move(Quoted));
}

// Feeds arbitrary parameter strings to the splitter that reads Windows command lines. Core has no function for
// the other direction, so the quoting a Windows program's caller does is written out here, by the same C
// runtime rules, and split(quote(arguments)) must give back the arguments, both for what a split returned and
// for arguments taken straight from the input. A few properties hold for any text:
//
// - every unit of an argument comes from a unit of its own in the text, so the arguments together are no
//   longer than the text, and there are at most half as many (rounded up) as the text has units;
// - units other than blanks, double quotes and backslashes pass through untouched and in order;
// - text without a double quote splits at runs of blanks and nowhere else.
//
// Input: the first byte chooses how the rest becomes text (bit 0: UTF-8, or 16-bit little-endian units) and
// how the quoting writes (bit 1: a literal double quote inside quotes as \" or as ""; bit 2: one space or a
// mix of spaces and tabs between arguments).

#include "CoreMinimal.h"
#include "Misc/WindowsArguments.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{
	using FArgs = std::vector<std::u16string>;

	[[noreturn]] void Fail(const char* What, const std::u16string& Text)
	{
		std::fprintf(stderr, "%s\ntext: %s\n", What, StringConv::Utf16ToUtf8(Text).c_str());
		std::abort();
	}

	bool IsBlank(char16_t Unit) { return Unit == u' ' || Unit == u'\t'; }

	FArgs Split(const std::u16string& Text)
	{
		FArgs Result;
		for (const FString& Argument : FWindowsArguments::Split(FString(Text)))
		{
			Result.push_back(Argument.GetStd());
		}
		return Result;
	}

	// One argument as a caller writes it for the C runtime: bare when nothing in it needs quotes, else in
	// double quotes, with the backslashes before a literal quote or before the closing quote doubled.
	std::u16string Quote(const std::u16string& Argument, bool bDoubledQuotes)
	{
		bool bNeedsQuotes = Argument.empty();
		for (const char16_t Unit : Argument)
		{
			bNeedsQuotes = bNeedsQuotes || IsBlank(Unit) || Unit == u'"';
		}
		if (!bNeedsQuotes)
		{
			return Argument;
		}
		std::u16string Out = u"\"";
		size_t Backslashes = 0;
		for (const char16_t Unit : Argument)
		{
			if (Unit == u'\\')
			{
				++Backslashes;
				continue;
			}
			if (Unit == u'"')
			{
				if (bDoubledQuotes)
				{
					// An even run before a quote stays as it is written doubled, and "" inside quotes is one quote.
					Out.append(2 * Backslashes, u'\\');
					Out += u"\"\"";
				}
				else
				{
					Out.append(2 * Backslashes + 1, u'\\');
					Out += u'"';
				}
			}
			else
			{
				Out.append(Backslashes, u'\\');
				Out += Unit;
			}
			Backslashes = 0;
		}
		Out.append(2 * Backslashes, u'\\');
		Out += u'"';
		return Out;
	}

	std::u16string Join(const FArgs& Args, bool bDoubledQuotes, bool bMixedBlanks)
	{
		std::u16string Line;
		for (size_t Index = 0; Index < Args.size(); ++Index)
		{
			if (Index > 0)
			{
				Line += bMixedBlanks ? (Index % 2 ? u" \t" : u"\t") : u" ";
			}
			Line += Quote(Args[Index], bDoubledQuotes);
		}
		// Blanks after the last argument make no argument of their own.
		if (bMixedBlanks && !Args.empty())
		{
			Line += u"\t ";
		}
		return Line;
	}

	bool IsOrdinary(char16_t Unit) { return !IsBlank(Unit) && Unit != u'"' && Unit != u'\\'; }

	void CheckSplit(const std::u16string& Text, bool bDoubledQuotes, bool bMixedBlanks)
	{
		const FArgs Args = Split(Text);

		size_t Units = 0;
		std::u16string OrdinaryInArgs;
		for (const std::u16string& Argument : Args)
		{
			Units += Argument.size();
			for (const char16_t Unit : Argument)
			{
				if (IsOrdinary(Unit))
				{
					OrdinaryInArgs += Unit;
				}
			}
		}
		if (Units > Text.size())
		{
			Fail("the arguments are longer than the text", Text);
		}
		if (Args.size() > (Text.size() + 1) / 2)
		{
			Fail("more arguments than the text has room for", Text);
		}
		std::u16string OrdinaryInText;
		for (const char16_t Unit : Text)
		{
			if (IsOrdinary(Unit))
			{
				OrdinaryInText += Unit;
			}
		}
		if (OrdinaryInArgs != OrdinaryInText)
		{
			Fail("units other than blanks, quotes and backslashes were changed, lost or moved", Text);
		}

		if (Text.find(u'"') == std::u16string::npos)
		{
			FArgs Words;
			std::u16string Word;
			for (const char16_t Unit : Text + u' ')
			{
				if (!IsBlank(Unit))
				{
					Word += Unit;
				}
				else if (!Word.empty())
				{
					Words.push_back(Word);
					Word.clear();
				}
			}
			if (Args != Words)
			{
				Fail("text without quotes did not split at its blanks", Text);
			}
		}

		if (Split(Join(Args, bDoubledQuotes, bMixedBlanks)) != Args)
		{
			Fail("the arguments of a split, quoted again, split differently", Text);
		}
	}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size)
{
	if (Size == 0)
	{
		return 0;
	}
	const uint8 Mode = Data[0];
	const bool bDoubledQuotes = (Mode & 2) != 0;
	const bool bMixedBlanks = (Mode & 4) != 0;
	std::u16string Text;
	if (Mode & 1)
	{
		for (size_t Index = 1; Index + 1 < Size; Index += 2)
		{
			Text += static_cast<char16_t>(Data[Index] | (Data[Index + 1] << 8));
		}
	}
	else
	{
		Text = StringConv::Utf8ToUtf16(std::string_view(reinterpret_cast<const char*>(Data) + 1, Size - 1));
	}
	CheckSplit(Text, bDoubledQuotes, bMixedBlanks);

	// The same units as a list of arguments of their own, cut at every NUL (which no argument of a real
	// command line holds): quoted and joined, they must split back exactly, empty ones included.
	FArgs Args(1);
	for (const char16_t Unit : Text)
	{
		if (Unit == u'\0')
		{
			Args.emplace_back();
		}
		else
		{
			Args.back() += Unit;
		}
	}
	if (Text.empty())
	{
		Args.clear();
	}
	if (Split(Join(Args, bDoubledQuotes, bMixedBlanks)) != Args)
	{
		Fail("arguments quoted and joined do not split back to themselves", Text);
	}
	return 0;
}

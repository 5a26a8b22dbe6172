#include "Containers/UnrealString.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <cmath>
#include <string_view>

StringFormat::FArg::FArg(const FString& Value) : Kind(Text), String(*Value) {}

namespace
{
	// One real number by a directive such as "%-+08.3" and its conversion (f, e, g or their capitals), as the C
	// library would print it in the "C" locale, but the same on every system and whatever the user's locale.
	std::u16string FormatReal(const std::string& Directive, TCHAR Conversion, double Value)
	{
		bool bLeft = false;
		bool bPlus = false;
		bool bSpace = false;
		bool bZero = false;
		bool bAlternate = false;
		size_t Pos = 1;
		for (; Pos < Directive.size() && std::string_view("-+ #0").find(Directive[Pos]) != std::string_view::npos; ++Pos)
		{
			bLeft = bLeft || Directive[Pos] == '-';
			bPlus = bPlus || Directive[Pos] == '+';
			bSpace = bSpace || Directive[Pos] == ' ';
			bZero = bZero || Directive[Pos] == '0';
			bAlternate = bAlternate || Directive[Pos] == '#';
		}
		int Width = 0;
		for (; Pos < Directive.size() && Directive[Pos] >= '0' && Directive[Pos] <= '9'; ++Pos)
		{
			Width = std::min(Width * 10 + (Directive[Pos] - '0'), 4096);
		}
		int Precision = 6;
		if (Pos < Directive.size() && Directive[Pos] == '.')
		{
			// A negative precision (from "*") counts as none given.
			const int Given = std::atoi(Directive.c_str() + Pos + 1);
			Precision = Given < 0 ? 6 : Given;
		}
		Precision = std::min(Precision, 1000);
		const char Lower = static_cast<char>(Conversion | 0x20);
		const std::chars_format Format = Lower == 'f'   ? std::chars_format::fixed
										 : Lower == 'e' ? std::chars_format::scientific
														: std::chars_format::general;
		if (Lower == 'g' && Precision == 0)
		{
			Precision = 1;
		}
		std::string Digits(1400, '\0');
		auto Print = [&](std::chars_format As, int Places)
		{
			const std::to_chars_result Result =
				std::to_chars(Digits.data(), Digits.data() + Digits.size(), std::fabs(Value), As, Places);
			Digits.resize(static_cast<size_t>(Result.ptr - Digits.data()));
		};
		const bool bFinite = std::isfinite(Value);
		if (bAlternate && Lower == 'g' && bFinite)
		{
			// "#" keeps the trailing zeros of %g: the choice between the two forms is made as %g makes it, by
			// the exponent the value has once rounded to Precision digits.
			Print(std::chars_format::scientific, Precision - 1);
			const int Exponent = std::atoi(Digits.c_str() + Digits.find('e') + 1);
			Digits.resize(1400);
			if (Exponent < -4 || Exponent >= Precision)
			{
				Print(std::chars_format::scientific, Precision - 1);
			}
			else
			{
				Print(std::chars_format::fixed, Precision - 1 - Exponent);
			}
		}
		else
		{
			Print(Format, Precision);
		}
		if (bAlternate && bFinite && Digits.find('.') == std::string::npos)
		{
			// "#" always shows the decimal point, also with no digit after it.
			const size_t E = Digits.find('e');
			Digits.insert(E == std::string::npos ? Digits.size() : E, 1, '.');
		}
		if (Lower == 'e' || Lower == 'g')
		{
			// The C library writes at least two exponent digits.
			const size_t E = Digits.find('e');
			if (E != std::string::npos && Digits.size() - E == 3)
			{
				Digits.insert(E + 2, 1, '0');
			}
		}
		if (Conversion != Lower)
		{
			for (char& Char : Digits)
			{
				Char = static_cast<char>(std::toupper(static_cast<unsigned char>(Char)));
			}
		}
		const std::string Sign = std::signbit(Value) ? "-" : bPlus ? "+" : bSpace ? " " : "";
		const size_t Length = Sign.size() + Digits.size();
		const size_t Pad = Width > 0 && static_cast<size_t>(Width) > Length ? static_cast<size_t>(Width) - Length : 0;
		std::string Text;
		if (bLeft)
		{
			Text = Sign + Digits + std::string(Pad, ' ');
		}
		else if (bZero && bFinite)
		{
			Text = Sign + std::string(Pad, '0') + Digits;
		}
		else
		{
			Text = std::string(Pad, ' ') + Sign + Digits;
		}
		return std::u16string(Text.begin(), Text.end());
	}
}

namespace
{
	// Each thread formats into a buffer it keeps, so that a line grows without a string of reallocations and the
	// result is allocated once at its exact size: a log of a million formatted lines holds no spare capacity.
	thread_local std::u16string FormatScratch;
	constexpr size_t KeptScratchCapacity = 4096;

	template <typename IntType>
	void AppendDecimal(std::u16string& Out, IntType Value)
	{
		char Digits[24];
		const std::to_chars_result Result = std::to_chars(Digits, Digits + sizeof(Digits), Value);
		Out.append(Digits, Result.ptr);
	}
}

FString StringFormat::Format(const TCHAR* Fmt, const FArg* Args, int32 NumArgs)
{
	if (!Fmt)
	{
		return FString();
	}
	// Taken rather than borrowed: a check that fails while formatting may format its own message.
	std::u16string Out = std::move(FormatScratch);
	Out.clear();
	const auto Finish = [&Out]()
	{
		FString Result(std::u16string(Out.data(), Out.size()));
		if (Out.capacity() <= KeptScratchCapacity)
		{
			FormatScratch = std::move(Out);
		}
		return Result;
	};
	int32 NextArg = 0;
	auto TakeArg = [&]() -> const FArg*
	{
		checkf(NextArg < NumArgs, "FString::Printf was given fewer arguments than its format asks for");
		return &Args[NextArg++];
	};

	for (const TCHAR* Pos = Fmt; *Pos; ++Pos)
	{
		if (*Pos != u'%')
		{
			const TCHAR* RunEnd = Pos;
			while (*RunEnd && *RunEnd != u'%')
			{
				++RunEnd;
			}
			Out.append(Pos, RunEnd);
			Pos = RunEnd - 1;
			continue;
		}
		++Pos;
		// The plain decimal conversions, the bulk of every log line, need no directive and no C library.
		if (*Pos == u'd' || *Pos == u'i' || *Pos == u'u')
		{
			const FArg* Arg = TakeArg();
			checkf(Arg->Kind == FArg::Signed || Arg->Kind == FArg::Unsigned || Arg->Kind == FArg::Pointer,
				   "FString::Printf: an integer conversion was given no integer");
			// Without a length modifier the engine reads a 32-bit value: a wider number shows its low half.
			const uint32 Low = static_cast<uint32>(static_cast<uint64>(Arg->Int) & 0xFFFFFFFFu);
			if (*Pos == u'u')
			{
				AppendDecimal(Out, Low);
			}
			else
			{
				AppendDecimal(Out, static_cast<int32>(Low));
			}
			continue;
		}
		if (*Pos == u'%')
		{
			Out += u'%';
			continue;
		}
		// Gather the conversion in 8-bit form so that the C library does the number formatting.
		std::string Directive = "%";
		while (*Pos == u'-' || *Pos == u'+' || *Pos == u' ' || *Pos == u'#' || *Pos == u'0')
		{
			Directive += static_cast<char>(*Pos++);
		}
		int Width = -1;
		if (*Pos == u'*')
		{
			Width = static_cast<int>(TakeArg()->Int);
			Directive += std::to_string(Width);
			++Pos;
		}
		while (FChar::IsDigit(*Pos))
		{
			Directive += static_cast<char>(*Pos++);
		}
		if (*Pos == u'.')
		{
			Directive += static_cast<char>(*Pos++);
			if (*Pos == u'*')
			{
				Directive += std::to_string(TakeArg()->Int);
				++Pos;
			}
			while (FChar::IsDigit(*Pos))
			{
				Directive += static_cast<char>(*Pos++);
			}
		}
		int LongCount = 0;
		while (*Pos == u'l' || *Pos == u'h' || *Pos == u'z' || *Pos == u'I' || *Pos == u'j')
		{
			if (*Pos == u'l')
			{
				++LongCount;
			}
			if (*Pos == u'z' || *Pos == u'j')
			{
				LongCount = 2;
			}
			if (*Pos == u'I' && Pos[1] == u'6' && Pos[2] == u'4')
			{
				LongCount = 2;
				Pos += 2;
			}
			++Pos;
		}
		const TCHAR Conversion = *Pos;
		if (Conversion == 0)
		{
			break;
		}
		char Buffer[512];
		switch (Conversion)
		{
		case u'd':
		case u'i':
		case u'u':
		case u'x':
		case u'X':
		case u'o':
		{
			const FArg* Arg = TakeArg();
			checkf(Arg->Kind == FArg::Signed || Arg->Kind == FArg::Unsigned || Arg->Kind == FArg::Pointer,
				   "FString::Printf: an integer conversion was given no integer");
			const bool bSigned = Conversion == u'd' || Conversion == u'i';
			if (LongCount >= 2 || (LongCount == 1 && sizeof(long) == 8))
			{
				Directive += "ll";
				Directive += static_cast<char>(Conversion);
				if (bSigned)
				{
					std::snprintf(Buffer, sizeof(Buffer), Directive.c_str(), static_cast<long long>(Arg->Int));
				}
				else
				{
					std::snprintf(Buffer, sizeof(Buffer), Directive.c_str(), static_cast<unsigned long long>(Arg->Int));
				}
			}
			else
			{
				// Without a length modifier the engine reads a 32-bit value: a wider number shows its low half.
				Directive += static_cast<char>(Conversion);
				const uint32 Low = static_cast<uint32>(static_cast<uint64>(Arg->Int) & 0xFFFFFFFFu);
				if (bSigned)
				{
					std::snprintf(Buffer, sizeof(Buffer), Directive.c_str(), static_cast<int>(static_cast<int32>(Low)));
				}
				else
				{
					std::snprintf(Buffer, sizeof(Buffer), Directive.c_str(), static_cast<unsigned>(Low));
				}
			}
			Out += StringConv::Utf8ToUtf16(Buffer);
			break;
		}
		case u'f':
		case u'F':
		case u'g':
		case u'G':
		case u'e':
		case u'E':
		{
			const FArg* Arg = TakeArg();
			const double Value = Arg->Kind == FArg::Float ? Arg->Real : static_cast<double>(Arg->Int);
			Out += FormatReal(Directive, Conversion, Value);
			break;
		}
		case u'c':
		{
			const FArg* Arg = TakeArg();
			Out += static_cast<TCHAR>(Arg->Int);
			break;
		}
		case u's':
		{
			const FArg* Arg = TakeArg();
			checkf(Arg->Kind == FArg::Text, "FString::Printf: %s was given no text");
			const std::u16string_view Text = Arg->String ? std::u16string_view(Arg->String) : std::u16string_view(u"(null)");
			// Width and left-justification apply to text as well; precision cuts it.
			size_t Precision = std::u16string_view::npos;
			int PadWidth = 0;
			bool bLeft = false;
			{
				size_t DirectivePos = 1;
				while (DirectivePos < Directive.size() && (Directive[DirectivePos] == '-' || Directive[DirectivePos] == '+' || Directive[DirectivePos] == ' ' ||
												  Directive[DirectivePos] == '#' || Directive[DirectivePos] == '0'))
				{
					bLeft = bLeft || Directive[DirectivePos] == '-';
					++DirectivePos;
				}
				PadWidth = std::atoi(Directive.c_str() + DirectivePos);
				const size_t Dot = Directive.find('.');
				if (Dot != std::string::npos)
				{
					Precision = static_cast<size_t>(std::atoi(Directive.c_str() + Dot + 1));
				}
			}
			const std::u16string_view Shown = Text.substr(0, Precision);
			const size_t Pad = PadWidth > 0 && static_cast<size_t>(PadWidth) > Shown.size() ? PadWidth - Shown.size() : 0;
			if (!bLeft)
			{
				Out.append(Pad, u' ');
			}
			Out += Shown;
			if (bLeft)
			{
				Out.append(Pad, u' ');
			}
			break;
		}
		case u'p':
		{
			const FArg* Arg = TakeArg();
			std::snprintf(Buffer, sizeof(Buffer), "0x%llx", static_cast<unsigned long long>(Arg->Int));
			Out += StringConv::Utf8ToUtf16(Buffer);
			break;
		}
		default:
			// An unknown conversion is copied as it stands.
			Out += u'%';
			Out += Conversion;
			break;
		}
	}
	return Finish();
}

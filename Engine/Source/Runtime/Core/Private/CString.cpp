#include "Misc/CString.h"

#include "Misc/Char.h"

#include <charconv>
#include <limits>
#include <string>

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

namespace
{
// The shared reading of Atod and Atof: the number is converted once, straight into its own type.
template <typename FReal> FReal ReadDecimal(const TCHAR* Text)
{
	if (!Text)
	{
		return 0.0;
	}
	const TCHAR* Pos = Text;
	while (*Pos && FChar::IsWhitespace(*Pos))
	{
		++Pos;
	}
	std::string Number;
	if (*Pos == u'-' || *Pos == u'+')
	{
		Number += *Pos == u'-' ? "-" : "";
		++Pos;
	}
	const size_t DigitsStart = Number.size();
	int32 IntegerDigits = 0;
	int32 FractionDigits = 0;
	for (; FChar::IsDigit(*Pos); ++Pos, ++IntegerDigits)
	{
		Number += static_cast<char>(*Pos);
	}
	if (*Pos == u'.')
	{
		Number += '.';
		for (++Pos; FChar::IsDigit(*Pos); ++Pos, ++FractionDigits)
		{
			Number += static_cast<char>(*Pos);
		}
	}
	if (IntegerDigits + FractionDigits == 0)
	{
		return 0.0;
	}
	int64 Exponent = 0;
	if ((*Pos == u'e' || *Pos == u'E'))
	{
		const TCHAR* After = Pos + 1;
		const bool bNegative = *After == u'-';
		After += (*After == u'-' || *After == u'+') ? 1 : 0;
		if (FChar::IsDigit(*After))
		{
			Number += 'e';
			Number += bNegative ? "-" : "";
			for (; FChar::IsDigit(*After); ++After)
			{
				Number += static_cast<char>(*After);
				Exponent = std::min<int64>(Exponent * 10 + (*After - u'0'), int64(1) << 40);
			}
			Exponent = bNegative ? -Exponent : Exponent;
		}
	}
	FReal Value = 0.0;
	const std::from_chars_result Result = std::from_chars(Number.data(), Number.data() + Number.size(), Value);
	if (Result.ec == std::errc::result_out_of_range)
	{
		// The place of the first significant digit tells a number too large from one too small.
		int64 Magnitude = IntegerDigits;
		size_t Index = DigitsStart;
		for (; Index < Number.size() && (Number[Index] == '0' || Number[Index] == '.'); ++Index)
		{
			Magnitude -= Number[Index] == '0' ? 1 : 0;
		}
		const bool bNegative = DigitsStart > 0;
		const FReal Limit = Magnitude + Exponent > 0 ? std::numeric_limits<FReal>::infinity() : FReal(0);
		return bNegative ? -Limit : Limit;
	}
	return Value;
}
} // namespace

double FCString::Atod(const TCHAR* Text)
{
	return ReadDecimal<double>(Text);
}

float FCString::Atof(const TCHAR* Text)
{
	return ReadDecimal<float>(Text);
}

#include "Misc/Parse.h"

#include "Misc/CString.h"

#include <cstdlib>
#include <mutex>

namespace
{
	bool IsIdentifierUnit(TCHAR Unit)
	{
		return (Unit >= u'a' && Unit <= u'z') || (Unit >= u'A' && Unit <= u'Z') || FChar::IsDigit(Unit) || Unit == u'_';
	}

	// Where the value after Match starts, or -1. Match must begin a word of the stream, so that "Title=" does
	// not find the tail of "ModTitle=".
	int32 FindValueStart(const TCHAR* Stream, const TCHAR* Match)
	{
		if (!Stream || !Match || !*Match)
		{
			return INDEX_NONE;
		}
		const FString Text(Stream);
		const FString Key(Match);
		int32 From = 0;
		while (true)
		{
			const int32 At = Text.Find(Key, ESearchCase::IgnoreCase, ESearchDir::FromStart, From);
			if (At == INDEX_NONE)
			{
				return INDEX_NONE;
			}
			if (At == 0 || !IsIdentifierUnit(Text[At - 1]))
			{
				return At + Key.Len();
			}
			From = At + 1;
		}
	}
}

bool FParse::Param(const TCHAR* Stream, const TCHAR* Param)
{
	if (!Stream || !Param || !*Param)
	{
		return false;
	}
	const FString Text(Stream);
	const FString Key(Param);
	int32 From = 0;
	while (true)
	{
		const int32 At = Text.Find(Key, ESearchCase::IgnoreCase, ESearchDir::FromStart, From);
		if (At == INDEX_NONE)
		{
			return false;
		}
		const bool bDash = At > 0 && (Text[At - 1] == u'-' || Text[At - 1] == u'/');
		const bool bWordStart = At == 1 || (At > 1 && (FChar::IsWhitespace(Text[At - 2]) || Text[At - 2] == u'"'));
		const int32 End = At + Key.Len();
		const bool bWordEnd = End >= Text.Len() || !IsIdentifierUnit(Text[End]);
		if (bDash && bWordStart && bWordEnd)
		{
			return true;
		}
		From = At + 1;
	}
}

bool FParse::Value(const TCHAR* Stream, const TCHAR* Match, FString& Value, bool bShouldStopOnSeparator)
{
	const int32 Start = FindValueStart(Stream, Match);
	if (Start == INDEX_NONE)
	{
		return false;
	}
	const FString Text(Stream);
	int32 Pos = Start;
	FString Result;
	if (Pos < Text.Len() && Text[Pos] == u'"')
	{
		++Pos;
		while (Pos < Text.Len() && Text[Pos] != u'"')
		{
			Result += Text[Pos++];
		}
	}
	else
	{
		while (Pos < Text.Len() && !FChar::IsWhitespace(Text[Pos]) &&
			   !(bShouldStopOnSeparator && Text[Pos] == u','))
		{
			Result += Text[Pos++];
		}
	}
	Value = Result;
	return true;
}

bool FParse::Value(const TCHAR* Stream, const TCHAR* Match, int64& Value)
{
	const int32 Start = FindValueStart(Stream, Match);
	if (Start == INDEX_NONE)
	{
		return false;
	}
	Value = FCString::Atoi64(Stream + Start);
	return true;
}

bool FParse::Value(const TCHAR* Stream, const TCHAR* Match, int32& Value)
{
	int64 Wide = 0;
	if (!FParse::Value(Stream, Match, Wide))
	{
		return false;
	}
	Value = static_cast<int32>(Wide);
	return true;
}

bool FParse::Value(const TCHAR* Stream, const TCHAR* Match, uint32& Value)
{
	int64 Wide = 0;
	if (!FParse::Value(Stream, Match, Wide))
	{
		return false;
	}
	Value = static_cast<uint32>(Wide);
	return true;
}

bool FParse::Value(const TCHAR* Stream, const TCHAR* Match, float& Value)
{
	FString Text;
	if (!FParse::Value(Stream, Match, Text))
	{
		return false;
	}
	Value = FCString::Atof(*Text);
	return true;
}

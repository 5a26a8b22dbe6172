#include "json/JsonReader.h"

#include "Misc/CString.h"
#include "Serialization/Archive.h"

#include <algorithm>
#include <cstdlib>

namespace
{
	bool IsBlank(TCHAR Unit)
	{
		return Unit == 9 || Unit == 10 || Unit == 13 || Unit == 32;
	}

	bool IsNumberCharacter(TCHAR Unit)
	{
		return (Unit >= u'0' && Unit <= u'9') || Unit == u'+' || Unit == u'-' || Unit == u'.' || Unit == u'e' ||
			   Unit == u'E';
	}

	bool IsAsciiLetter(TCHAR Unit)
	{
		return (Unit >= u'a' && Unit <= u'z') || (Unit >= u'A' && Unit <= u'Z');
	}

	EJsonNotation NotationOf(EJsonToken Token)
	{
		switch (Token)
		{
		case EJsonToken::CurlyOpen:
			return EJsonNotation::ObjectStart;
		case EJsonToken::CurlyClose:
			return EJsonNotation::ObjectEnd;
		case EJsonToken::SquareOpen:
			return EJsonNotation::ArrayStart;
		case EJsonToken::SquareClose:
			return EJsonNotation::ArrayEnd;
		case EJsonToken::String:
			return EJsonNotation::String;
		case EJsonToken::Number:
			return EJsonNotation::Number;
		case EJsonToken::True:
		case EJsonToken::False:
			return EJsonNotation::Boolean;
		case EJsonToken::Null:
			return EJsonNotation::Null;
		default:
			return EJsonNotation::Error;
		}
	}

	// Where the number automaton stands after the units read so far.
	enum class ENumberState : int32
	{
		Rejected = -1,
		Start,
		AfterMinus,
		LeadingZero,
		IntegerDigits,
		AfterPoint,
		AfterExponentMark,
		FractionDigits,
		AfterExponentSign,
		ExponentDigits,
	};

	// Transitions of the number automaton; Rejected where a unit has no entry.
	ENumberState NextNumberState(ENumberState State, TCHAR Unit)
	{
		using enum ENumberState;
		const bool bZero = Unit == u'0';
		const bool bDigit = Unit >= u'1' && Unit <= u'9';
		const bool bAnyDigit = bZero || bDigit;
		const bool bExponent = Unit == u'e' || Unit == u'E';
		switch (State)
		{
		case Start:
			return Unit == u'-' ? AfterMinus : bZero ? LeadingZero : bDigit ? IntegerDigits : Rejected;
		case AfterMinus:
			return bZero ? LeadingZero : bDigit ? IntegerDigits : Rejected;
		case LeadingZero:
			return Unit == u'.' ? AfterPoint : bExponent ? AfterExponentMark : Rejected;
		case IntegerDigits:
			return bAnyDigit ? IntegerDigits : Unit == u'.' ? AfterPoint : bExponent ? AfterExponentMark : Rejected;
		case AfterPoint:
			return bAnyDigit ? FractionDigits : Rejected;
		case AfterExponentMark:
			return (Unit == u'-' || Unit == u'+') ? AfterExponentSign : bAnyDigit ? ExponentDigits : Rejected;
		case FractionDigits:
			return bAnyDigit ? FractionDigits : bExponent ? AfterExponentMark : Rejected;
		case AfterExponentSign:
		case ExponentDigits:
			return bAnyDigit ? ExponentDigits : Rejected;
		default:
			return Rejected;
		}
	}

	// A number may end only after a digit of its last part.
	bool IsCompleteNumber(ENumberState State)
	{
		return State == ENumberState::LeadingZero || State == ENumberState::IntegerDigits ||
			   State == ENumberState::FractionDigits || State == ENumberState::ExponentDigits;
	}
}

TCHAR JsonReader::ReadUnit()
{
	++CharacterNumber;
	return ReadRawUnit();
}

TCHAR JsonReader::ReadRawUnit()
{
	if (BufferPos + 2 > Buffer.size())
	{
		Refill();
	}
	if (BufferPos + 2 <= Buffer.size())
	{
		const TCHAR Unit = static_cast<TCHAR>(Buffer[BufferPos] | (Buffer[BufferPos + 1] << 8));
		BufferPos += 2;
		bLastUnitFromStream = false;
		return Unit;
	}
	uint8 Bytes[2] = {0, 0};
	Stream->Serialize(Bytes, 2);
	bLastUnitFromStream = true;
	return static_cast<TCHAR>(Bytes[0] | (Bytes[1] << 8));
}

void JsonReader::StepBack()
{
	if (bLastUnitFromStream)
	{
		Stream->Seek(Stream->Tell() - 2);
	}
	else
	{
		BufferPos -= 2;
	}
}

bool JsonReader::AtEnd() const
{
	return BufferPos >= Buffer.size() && Stream->AtEnd();
}

void JsonReader::Refill()
{
	constexpr int64 BlockBytes = 64 * 1024;
	Buffer.clear();
	BufferPos = 0;
	const int64 Position = Stream->Tell();
	const int64 Total = Stream->TotalSize();
	if (Position == INDEX_NONE || Total == INDEX_NONE || Total - Position < 2)
	{
		return;
	}
	Buffer.resize(static_cast<size_t>(std::min<int64>((Total - Position) & ~int64(1), BlockBytes)));
	Stream->Serialize(Buffer.data(), static_cast<int64>(Buffer.size()));
}

void JsonReader::SetErrorMessage(const TCHAR* Message)
{
	ErrorMessage = FString(Message) + FString::Printf(TEXT(" Line: %u Ch: %u"), LineNumber, CharacterNumber);
}

const FString& JsonReader::GetValueAsString() const
{
	checkf(CurrentToken == EJsonToken::String, "CurrentToken == EJsonToken::String");
	return StringValue;
}

double JsonReader::GetValueAsNumber() const
{
	checkf(CurrentToken == EJsonToken::Number, "CurrentToken == EJsonToken::Number");
	return NumberValue;
}

bool JsonReader::GetValueAsBoolean() const
{
	checkf(CurrentToken == EJsonToken::True || CurrentToken == EJsonToken::False,
		   "CurrentToken == EJsonToken::True || CurrentToken == EJsonToken::False");
	return BoolValue;
}

bool JsonReader::ReadNext(EJsonNotation& Notation)
{
	if (!ErrorMessage.IsEmpty())
	{
		Notation = EJsonNotation::Error;
		return false;
	}
	if (Stream == nullptr)
	{
		Notation = EJsonNotation::Error;
		SetErrorMessage(TEXT("Null Stream"));
		return true;
	}
	const bool bAtEnd = AtEnd();
	if (bAtEnd && !FinishedReadingRootObject)
	{
		Notation = EJsonNotation::Error;
		SetErrorMessage(TEXT("Improperly formatted."));
		return true;
	}
	if (bAtEnd)
	{
		return false;
	}
	if (FinishedReadingRootObject)
	{
		Notation = EJsonNotation::Error;
		SetErrorMessage(TEXT("Unexpected additional input found."));
		return true;
	}

	Identifier.Empty();
	bool bReadWasSuccess = false;
	do
	{
		const EJson Scope = ParseState.Num() > 0 ? ParseState.Last() : EJson::None;
		if (Scope == EJson::Array)
		{
			bReadWasSuccess = ReadNextArrayValue();
		}
		else if (Scope == EJson::Object)
		{
			bReadWasSuccess = ReadNextObjectValue();
		}
		else
		{
			bReadWasSuccess = ReadStart();
		}
	} while (bReadWasSuccess && CurrentToken == EJsonToken::None);

	Notation = NotationOf(CurrentToken);
	FinishedReadingRootObject = ParseState.Num() == 0;

	if (!bReadWasSuccess || Notation == EJsonNotation::Error)
	{
		Notation = EJsonNotation::Error;
		if (ErrorMessage.IsEmpty())
		{
			SetErrorMessage(TEXT("Unknown Error Occurred"));
		}
		return true;
	}
	if (FinishedReadingRootObject && !AtEnd())
	{
		ParseWhiteSpace();
	}
	return true;
}

bool JsonReader::ReadStart()
{
	ParseWhiteSpace();
	CurrentToken = EJsonToken::None;
	if (!NextToken())
	{
		return false;
	}
	if (CurrentToken != EJsonToken::CurlyOpen && CurrentToken != EJsonToken::SquareOpen)
	{
		SetErrorMessage(TEXT("Open Curly or Square Brace token expected, but not found."));
		return false;
	}
	return true;
}

bool JsonReader::ReadNextArrayValue()
{
	const bool bCommaDue = CurrentToken != EJsonToken::SquareOpen;
	CurrentToken = EJsonToken::None;
	if (!NextToken())
	{
		return false;
	}
	if (CurrentToken == EJsonToken::SquareClose || !bCommaDue)
	{
		return true;
	}
	if (CurrentToken != EJsonToken::Comma)
	{
		SetErrorMessage(TEXT("Comma token expected, but not found."));
		return false;
	}
	// What follows the comma is taken as it comes: a "]" here closes the array.
	CurrentToken = EJsonToken::None;
	return NextToken();
}

bool JsonReader::ReadNextObjectValue()
{
	const bool bCommaDue = CurrentToken != EJsonToken::CurlyOpen;
	CurrentToken = EJsonToken::None;
	if (!NextToken())
	{
		return false;
	}
	if (CurrentToken == EJsonToken::CurlyClose)
	{
		return true;
	}
	if (bCommaDue)
	{
		if (CurrentToken != EJsonToken::Comma)
		{
			SetErrorMessage(TEXT("Comma token expected, but not found."));
			return false;
		}
		CurrentToken = EJsonToken::None;
		if (!NextToken())
		{
			return false;
		}
	}
	if (CurrentToken != EJsonToken::String)
	{
		SetErrorMessage(TEXT("String token expected, but not found."));
		return false;
	}
	Identifier = StringValue;
	CurrentToken = EJsonToken::None;
	if (!NextToken())
	{
		return false;
	}
	if (CurrentToken != EJsonToken::Colon)
	{
		SetErrorMessage(TEXT("Colon token expected, but not found."));
		return false;
	}
	CurrentToken = EJsonToken::None;
	return NextToken();
}

bool JsonReader::NextToken()
{
	while (!AtEnd())
	{
		const TCHAR Char = ReadUnit();
		if (Char == 0)
		{
			break;
		}
		if (Char == u'\n')
		{
			++LineNumber;
			CharacterNumber = 0;
		}
		if (IsBlank(Char))
		{
			continue;
		}

		if (IsNumberCharacter(Char))
		{
			if (!ParseNumberToken(Char))
			{
				return false;
			}
			CurrentToken = EJsonToken::Number;
			return true;
		}

		switch (Char)
		{
		case u'"':
			if (!ParseStringToken())
			{
				return false;
			}
			CurrentToken = EJsonToken::String;
			return true;
		case u',':
			CurrentToken = EJsonToken::Comma;
			return true;
		case u':':
			CurrentToken = EJsonToken::Colon;
			return true;
		case u'[':
			CurrentToken = EJsonToken::SquareOpen;
			ParseState.Add(EJson::Array);
			return true;
		case u']':
			CurrentToken = EJsonToken::SquareClose;
			if (ParseState.Num() > 0)
			{
				ParseState.Pop();
			}
			return true;
		case u'{':
			CurrentToken = EJsonToken::CurlyOpen;
			ParseState.Add(EJson::Object);
			return true;
		case u'}':
			CurrentToken = EJsonToken::CurlyClose;
			if (ParseState.Num() > 0)
			{
				ParseState.Pop();
			}
			return true;
		default:
			break;
		}

		if (Char == u'F' || Char == u'N' || Char == u'T' || Char == u'f' || Char == u'n' || Char == u't')
		{
			FString Word;
			Word += Char;
			while (!AtEnd())
			{
				const TCHAR Next = ReadRawUnit();
				if (!IsAsciiLetter(Next))
				{
					StepBack();
					break;
				}
				++CharacterNumber;
				Word += Next;
			}
			if (Word.Equals(TEXT("False"), ESearchCase::IgnoreCase))
			{
				CurrentToken = EJsonToken::False;
				BoolValue = false;
				return true;
			}
			if (Word.Equals(TEXT("True"), ESearchCase::IgnoreCase))
			{
				CurrentToken = EJsonToken::True;
				BoolValue = true;
				return true;
			}
			if (Word.Equals(TEXT("Null"), ESearchCase::IgnoreCase))
			{
				CurrentToken = EJsonToken::Null;
				return true;
			}
			SetErrorMessage(TEXT("Invalid Json Token. Check that your member names have quotes around them!"));
			return false;
		}
		break;
	}
	SetErrorMessage(TEXT("Invalid Json Token."));
	return false;
}

bool JsonReader::ParseStringToken()
{
	if (AtEnd())
	{
		SetErrorMessage(TEXT("String Token Abruptly Ended."));
		return false;
	}
	FString String;
	while (true)
	{
		TCHAR Char = ReadUnit();
		if (Char == u'"')
		{
			break;
		}
		if (Char == u'\\')
		{
			if (AtEnd())
			{
				SetErrorMessage(TEXT("String Token Abruptly Ended."));
				return false;
			}
			Char = ReadUnit();
			switch (Char)
			{
			case u'"':
			case u'/':
			case u'\\':
				break;
			case u'b':
				Char = 8;
				break;
			case u'f':
				Char = 12;
				break;
			case u'n':
				Char = 10;
				break;
			case u'r':
				Char = 13;
				break;
			case u't':
				Char = 9;
				break;
			case u'u':
			{
				uint32 Code = 0;
				for (int32 Digit = 0; Digit < 4; ++Digit)
				{
					if (AtEnd())
					{
						SetErrorMessage(TEXT("String Token Abruptly Ended."));
						return false;
					}
					const int32 Nibble = FChar::HexDigitValue(ReadUnit());
					if (Nibble < 0)
					{
						SetErrorMessage(TEXT("Invalid Hexadecimal digit parsed."));
						return false;
					}
					Code = (Code << 4) | static_cast<uint32>(Nibble);
				}
				Char = static_cast<TCHAR>(Code);
				break;
			}
			default:
				SetErrorMessage(TEXT("Bad Json escaped char."));
				return false;
			}
		}
		if (Char != 0)
		{
			String += Char;
		}
		if (AtEnd())
		{
			SetErrorMessage(TEXT("String Token Abruptly Ended."));
			return false;
		}
	}
	StringValue = std::move(String);
	return true;
}

bool JsonReader::ParseNumberToken(TCHAR FirstChar)
{
	std::string Text;
	ENumberState State = ENumberState::Start;
	TCHAR Char = FirstChar;
	while (true)
	{
		if (!IsNumberCharacter(Char))
		{
			StepBack();
			--CharacterNumber;
			break;
		}
		State = NextNumberState(State, Char);
		if (State == ENumberState::Rejected)
		{
			SetErrorMessage(TEXT("Poorly formed Json Number Token."));
			return false;
		}
		Text += static_cast<char>(Char);
		if (AtEnd())
		{
			break;
		}
		Char = ReadUnit();
	}
	if (!IsCompleteNumber(State))
	{
		SetErrorMessage(TEXT("Poorly formed Json Number Token."));
		return false;
	}
	// The decimal point is "." whatever the user's settings; numbers out of range become infinity or zero.
	NumberValue = FCString::Atod(*FString::FromUtf8(Text));
	return true;
}

void JsonReader::ParseWhiteSpace()
{
	while (!AtEnd())
	{
		const TCHAR Char = ReadUnit();
		if (Char == u'\n')
		{
			++LineNumber;
			CharacterNumber = 0;
		}
		if (!IsBlank(Char))
		{
			StepBack();
			--CharacterNumber;
			break;
		}
	}
}

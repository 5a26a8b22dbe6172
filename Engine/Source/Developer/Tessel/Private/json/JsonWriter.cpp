#include "json/JsonWriter.h"

#include "Serialization/Archive.h"

#include <cstdio>
#include <vector>

void JsonWriter::WriteChar(TCHAR Char)
{
	uint8 Bytes[2] = {static_cast<uint8>(Char & 0xFF), static_cast<uint8>(Char >> 8)};
	Stream->Serialize(Bytes, 2);
}

void JsonWriter::WriteString(const FString& String)
{
	for (TCHAR Char : String)
	{
		WriteChar(Char);
	}
}

void JsonWriter::WriteLineTerminator()
{
	WriteChar(13);
	WriteChar(10);
}

void JsonWriter::WriteTabs(int32 Count)
{
	for (int32 Index = 0; Index < Count; ++Index)
	{
		WriteChar(9);
	}
}

void JsonWriter::WriteNumber(double Value)
{
	WriteString(FString::Printf(TEXT("%.17g"), Value));
}

void JsonWriter::WriteStringValue(const FString& String)
{
	// The whole quoted text goes to the stream at once: a call per unit was most of the time of writing a large
	// database.
	std::vector<uint8> Bytes;
	Bytes.reserve(static_cast<size_t>(String.Len()) * 2 + 8);
	auto Put = [&Bytes](TCHAR Unit)
	{
		Bytes.push_back(static_cast<uint8>(Unit & 0xFF));
		Bytes.push_back(static_cast<uint8>(Unit >> 8));
	};
	Put(u'"');
	for (TCHAR Char : String)
	{
		// The units written as a backslash and a letter; every other unit, control units too, stands as it is.
		TCHAR Escaped = 0;
		switch (Char)
		{
		case u'\b':
			Escaped = u'b';
			break;
		case u'\t':
			Escaped = u't';
			break;
		case u'\n':
			Escaped = u'n';
			break;
		case u'\f':
			Escaped = u'f';
			break;
		case u'\r':
			Escaped = u'r';
			break;
		case u'"':
		case u'\\':
			Escaped = Char;
			break;
		default:
			break;
		}
		if (Escaped != 0)
		{
			Put(u'\\');
			Put(Escaped);
		}
		else
		{
			Put(Char);
		}
	}
	Put(u'"');
	Stream->Serialize(Bytes.data(), static_cast<int64>(Bytes.size()));
}

bool JsonWriter::CanWriteValueWithoutIdentifier() const
{
	return Stack.Num() <= 0 || Stack.Last() == EJson::Array;
}

void JsonWriter::CheckInObject() const
{
	checkf(Stack.Num() > 0 && Stack.Last() == EJson::Object, "Stack.Top() == EJson::Object");
}

void JsonWriter::WriteCommaIfNeeded()
{
	if (PreviousTokenWritten != EJsonToken::CurlyOpen && PreviousTokenWritten != EJsonToken::SquareOpen)
	{
		WriteChar(u',');
	}
}

void JsonWriter::WriteNewLine()
{
	WriteLineTerminator();
	WriteTabs(IndentLevel);
}

void JsonWriter::WriteKey(const FString& Identifier)
{
	WriteCommaIfNeeded();
	WriteNewLine();
	WriteStringValue(Identifier);
	WriteChar(u':');
}

bool JsonWriter::Close()
{
	return Stack.Num() == 0 && (PreviousTokenWritten == EJsonToken::None || PreviousTokenWritten == EJsonToken::CurlyClose ||
								PreviousTokenWritten == EJsonToken::SquareClose);
}

void JsonWriter::WriteObjectStart()
{
	BeginScopeWithoutIdentifier();
	OpenScope(u'{', EJson::Object, EJsonToken::CurlyOpen);
}

void JsonWriter::WriteObjectStart(const FString& Identifier)
{
	CheckInObject();
	WriteKey(Identifier);
	// A named object opens on the line after its key, a named array on the key's own line.
	WriteNewLine();
	OpenScope(u'{', EJson::Object, EJsonToken::CurlyOpen);
}

void JsonWriter::WriteObjectEnd()
{
	CheckInObject();
	WriteLineTerminator();
	--IndentLevel;
	WriteTabs(IndentLevel);
	WriteChar(u'}');
	Stack.Pop();
	PreviousTokenWritten = EJsonToken::CurlyClose;
}

void JsonWriter::WriteArrayStart()
{
	BeginScopeWithoutIdentifier();
	OpenScope(u'[', EJson::Array, EJsonToken::SquareOpen);
}

void JsonWriter::WriteArrayStart(const FString& Identifier)
{
	CheckInObject();
	WriteKey(Identifier);
	WriteSpace();
	OpenScope(u'[', EJson::Array, EJsonToken::SquareOpen);
}

void JsonWriter::BeginScopeWithoutIdentifier()
{
	checkf(CanWriteValueWithoutIdentifier(), "CanWriteValueWithoutIdentifier()");
	// The document's first scope starts at its very beginning; every later one on a line of its own.
	if (PreviousTokenWritten != EJsonToken::None)
	{
		WriteCommaIfNeeded();
		WriteNewLine();
	}
}

void JsonWriter::OpenScope(TCHAR Bracket, EJson Kind, EJsonToken Token)
{
	WriteChar(Bracket);
	++IndentLevel;
	Stack.Add(Kind);
	PreviousTokenWritten = Token;
}

void JsonWriter::WriteArrayEnd()
{
	checkf(Stack.Num() > 0 && Stack.Last() == EJson::Array, "Stack.Top() == EJson::Array");
	--IndentLevel;
	if (PreviousTokenWritten == EJsonToken::CurlyClose || PreviousTokenWritten == EJsonToken::SquareClose ||
		PreviousTokenWritten == EJsonToken::String)
	{
		WriteNewLine();
	}
	else if (PreviousTokenWritten != EJsonToken::SquareOpen)
	{
		WriteSpace();
	}
	WriteChar(u']');
	Stack.Pop();
	PreviousTokenWritten = EJsonToken::SquareClose;
}

void JsonWriter::WriteValue(const FString& Identifier, const FString& Value)
{
	CheckInObject();
	WriteKey(Identifier);
	WriteSpace();
	WriteStringValue(Value);
	PreviousTokenWritten = EJsonToken::String;
}

void JsonWriter::WriteValue(const FString& Identifier, double Value)
{
	CheckInObject();
	WriteKey(Identifier);
	WriteSpace();
	WriteNumber(Value);
	PreviousTokenWritten = EJsonToken::Number;
}

void JsonWriter::WriteValue(const FString& Identifier, bool bValue)
{
	CheckInObject();
	WriteKey(Identifier);
	WriteSpace();
	WriteString(bValue ? TEXT("true") : TEXT("false"));
	PreviousTokenWritten = bValue ? EJsonToken::True : EJsonToken::False;
}

void JsonWriter::WriteNull(const FString& Identifier)
{
	CheckInObject();
	WriteKey(Identifier);
	WriteSpace();
	WriteString(TEXT("null"));
	PreviousTokenWritten = EJsonToken::Null;
}

void JsonWriter::WriteValue(const FString& Value)
{
	checkf(CanWriteValueWithoutIdentifier(), "CanWriteValueWithoutIdentifier()");
	WriteCommaIfNeeded();
	WriteNewLine();
	WriteStringValue(Value);
	PreviousTokenWritten = EJsonToken::String;
}

void JsonWriter::WriteValue(double Value)
{
	checkf(CanWriteValueWithoutIdentifier(), "CanWriteValueWithoutIdentifier()");
	// Numbers in a row stay on one line.
	const bool bSameLine = PreviousTokenWritten == EJsonToken::SquareOpen || PreviousTokenWritten == EJsonToken::Number;
	WriteCommaIfNeeded();
	if (bSameLine)
	{
		WriteSpace();
	}
	else
	{
		WriteNewLine();
	}
	WriteNumber(Value);
	PreviousTokenWritten = EJsonToken::Number;
}

void JsonWriter::WriteValue(bool bValue)
{
	checkf(CanWriteValueWithoutIdentifier(), "CanWriteValueWithoutIdentifier()");
	const bool bSameLine = PreviousTokenWritten == EJsonToken::SquareOpen || PreviousTokenWritten == EJsonToken::True ||
						   PreviousTokenWritten == EJsonToken::False;
	WriteCommaIfNeeded();
	if (bSameLine)
	{
		WriteSpace();
	}
	else
	{
		WriteNewLine();
	}
	WriteString(bValue ? TEXT("true") : TEXT("false"));
	PreviousTokenWritten = bValue ? EJsonToken::True : EJsonToken::False;
}

void JsonWriter::WriteNull()
{
	checkf(CanWriteValueWithoutIdentifier(), "CanWriteValueWithoutIdentifier()");
	const bool bSameLine = PreviousTokenWritten == EJsonToken::SquareOpen || PreviousTokenWritten == EJsonToken::Null;
	WriteCommaIfNeeded();
	if (bSameLine)
	{
		WriteSpace();
	}
	else
	{
		WriteNewLine();
	}
	WriteString(TEXT("null"));
	PreviousTokenWritten = EJsonToken::Null;
}

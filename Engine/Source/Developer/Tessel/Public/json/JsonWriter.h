#pragma once

#include "json/JsonTypes.h"

class FArchive;

// Writes JSON text in 16-bit little-endian units, pretty-printed with tabs and CR LF line ends, in the exact
// layout of the mod database. The caller keeps to the scope rules; breaking them is an assertion.
class JsonWriter
{
public:
	JsonWriter(FArchive* InStream, int32 InitialIndent) : Stream(InStream), IndentLevel(InitialIndent) {}
	virtual ~JsonWriter() = default;

	// True when every scope is closed.
	virtual bool Close();

	void WriteObjectStart();
	void WriteObjectStart(const FString& Identifier);
	void WriteObjectEnd();
	void WriteArrayStart();
	void WriteArrayStart(const FString& Identifier);
	void WriteArrayEnd();

	void WriteValue(const FString& Identifier, const FString& Value);
	void WriteValue(const FString& Identifier, const TCHAR* Value) { WriteValue(Identifier, FString(Value)); }
	void WriteValue(const FString& Identifier, double Value);
	void WriteValue(const FString& Identifier, bool bValue);
	void WriteNull(const FString& Identifier);
	void WriteValue(const FString& Value);
	void WriteValue(const TCHAR* Value) { WriteValue(FString(Value)); }
	void WriteValue(double Value);
	void WriteValue(bool bValue);
	void WriteNull();

protected:
	virtual void WriteStringValue(const FString& String);

private:
	bool CanWriteValueWithoutIdentifier() const;
	void CheckInObject() const;
	// The two halves of every scope start: what comes before an unnamed one, and the bracket itself.
	void BeginScopeWithoutIdentifier();
	void OpenScope(TCHAR Bracket, EJson Kind, EJsonToken Token);
	void WriteCommaIfNeeded();
	void WriteNewLine();
	void WriteKey(const FString& Identifier);

	void WriteChar(TCHAR Char);
	void WriteString(const FString& String);
	void WriteLineTerminator();
	void WriteTabs(int32 Count);
	void WriteSpace() { WriteChar(u' '); }
	void WriteNumber(double Value);

	FArchive* Stream;
	TArray<EJson> Stack;
	EJsonToken PreviousTokenWritten = EJsonToken::None;
	int32 IndentLevel;
};

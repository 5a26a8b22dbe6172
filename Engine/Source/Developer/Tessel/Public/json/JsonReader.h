#pragma once

#include "json/JsonTypes.h"

#include <vector>

class FArchive;

// A pull tokeniser over JSON text in 16-bit little-endian units. Each ReadNext reports one step of the
// document; the first error is kept with its line and character and ends the reading.
class JsonReader
{
public:
	explicit JsonReader(FArchive* InStream) : Stream(InStream) {}
	virtual ~JsonReader() = default;

	// True: look at Notation, which may be Error. False: reading is over, at the end of the document or after
	// an error that was reported before.
	bool ReadNext(EJsonNotation& Notation);

	const FString& GetIdentifier() const { return Identifier; }
	const FString& GetErrorMessage() const { return ErrorMessage; }
	const FString& GetValueAsString() const;
	double GetValueAsNumber() const;
	bool GetValueAsBoolean() const;

private:
	bool ReadStart();
	bool ReadNextArrayValue();
	bool ReadNextObjectValue();
	bool NextToken();
	bool ParseStringToken();
	bool ParseNumberToken(TCHAR FirstChar);
	void ParseWhiteSpace();

	// Reads one unit and counts it; a line feed outside strings starts a new line.
	TCHAR ReadUnit();
	// Reads one unit without counting it.
	TCHAR ReadRawUnit();
	// Undoes the last ReadUnit or ReadRawUnit.
	void StepBack();
	// True when every unit of the stream has been read.
	bool AtEnd() const;
	// Units are taken from the stream a block at a time: a call per unit was most of the time of reading a
	// large database. Only whole units are buffered; an odd last byte, or a stream that can't tell where it
	// is, is read unit by unit straight from the stream.
	void Refill();
	void SetErrorMessage(const TCHAR* Message);

	TArray<EJson> ParseState;
	EJsonToken CurrentToken = EJsonToken::None;
	FArchive* Stream = nullptr;
	std::vector<uint8> Buffer;
	size_t BufferPos = 0;
	bool bLastUnitFromStream = false;
	FString Identifier;
	FString ErrorMessage;
	FString StringValue;
	double NumberValue = 0.0;
	uint32 LineNumber = 1;
	uint32 CharacterNumber = 0;
	bool BoolValue = false;
	bool FinishedReadingRootObject = false;
};

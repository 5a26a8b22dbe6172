#pragma once

#include "CoreMinimal.h"
#include "Dom/JsonObject.h"

enum class EJsonToken : int32
{
	None = 0,
	Comma = 1,
	CurlyOpen = 2,
	CurlyClose = 3,
	SquareOpen = 4,
	SquareClose = 5,
	Colon = 6,
	String = 7,
	Number = 8,
	True = 9,
	False = 10,
	Null = 11,
};

// What one reading step reports.
enum class EJsonNotation : int32
{
	ObjectStart = 0,
	ObjectEnd = 1,
	ArrayStart = 2,
	ArrayEnd = 3,
	Boolean = 4,
	String = 5,
	Number = 6,
	Null = 7,
	Error = 8,
};

#pragma once

#include "Containers/UnrealString.h"

#include <string>

// Turns bytes that arrive in pieces (a child's output, read by read) into text. A UTF-8 sequence cut
// by the end of one piece is kept back and finished with the next, so the text is the same however the
// bytes were cut. Invalid bytes become U+FFFD as everywhere at the operating system's edge; a NUL byte
// becomes U+FFFD too, so that no consumer that reads text up to a terminator loses the rest of a line.
class CORE_API FUtf8StreamDecoder
{
public:
	// Decodes Count bytes after whatever was kept back; an incomplete last sequence is kept back.
	FString Decode(const char* Bytes, size_t Count);
	// Ends the stream: a sequence still kept back can never be completed and becomes U+FFFD.
	FString Flush();

private:
	std::string Tail;
};

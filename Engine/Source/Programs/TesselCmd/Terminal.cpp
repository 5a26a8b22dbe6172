#include "Terminal.h"

#include <iostream>
#include <string>

bool ReadAnswerLine(FString& OutAnswer)
{
	std::string Line;
	const bool bRead = static_cast<bool>(std::getline(std::cin, Line));
	// A line typed on Windows, or piped from a Windows file, ends in CR LF.
	if (!Line.empty() && Line.back() == '\r')
	{
		Line.pop_back();
	}
	OutAnswer = FString::FromUtf8(Line);
	return bRead;
}

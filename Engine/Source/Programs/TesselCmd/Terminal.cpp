#include "Terminal.h"

#include <iostream>
#include <string>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

// The same on every system: the C runtime's descriptors carry what children write to our standard output.
void FStdoutTap::Pump(int ReadEnd, int To)
{
	char Buffer[4096];
	while (true)
	{
		const ssize_t Count = read(ReadEnd, Buffer, sizeof(Buffer));
		if (Count <= 0)
		{
			break;
		}
		Captured.append(Buffer, static_cast<size_t>(Count));
		for (ssize_t Written = 0; Written < Count;)
		{
			const ssize_t Step = write(To, Buffer + Written, static_cast<size_t>(Count - Written));
			if (Step <= 0)
			{
				break;
			}
			Written += Step;
		}
	}
	close(ReadEnd);
}

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

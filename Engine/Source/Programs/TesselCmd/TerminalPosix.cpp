#include "Terminal.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

bool IsTerminal(std::FILE* Stream)
{
	return isatty(fileno(Stream)) != 0;
}

bool PromptOnTerminal(const FString& Prompt, bool bSecret, FString& OutAnswer)
{
	if (!isatty(STDIN_FILENO))
	{
		return false;
	}
	// Echo goes off before the prompt shows, and nothing typed is flushed away: an answer that arrives the
	// moment the prompt appears is neither shown nor lost.
	termios Saved{};
	const bool bHideEcho = bSecret && tcgetattr(STDIN_FILENO, &Saved) == 0;
	if (bHideEcho)
	{
		termios Quiet = Saved;
		Quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
		tcsetattr(STDIN_FILENO, TCSANOW, &Quiet);
	}
	std::fputs(Prompt.ToUtf8().c_str(), stderr);
	std::fflush(stderr);
	const bool bRead = ReadAnswerLine(OutAnswer);
	if (bHideEcho)
	{
		tcsetattr(STDIN_FILENO, TCSANOW, &Saved);
		// The line feed the user typed was not echoed either.
		std::fputc('\n', stderr);
	}
	return bRead;
}

FString TakeFromEnvironment(const char* Name)
{
	const char* Value = std::getenv(Name);
	const FString Taken = Value ? FString::FromNative(Value) : FString();
	unsetenv(Name);
	return Taken;
}

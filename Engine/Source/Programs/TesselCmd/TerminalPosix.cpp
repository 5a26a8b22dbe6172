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

FStdoutTap::FStdoutTap(bool bToStderr)
{
	std::fflush(stdout);
	int Pipe[2];
	if (pipe(Pipe) != 0)
	{
		return;
	}
	// Only the write end reaches a child, as its standard output.
	fcntl(Pipe[0], F_SETFD, FD_CLOEXEC);
	SavedStdout = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
	Destination = bToStderr ? STDERR_FILENO : SavedStdout;
	dup2(Pipe[1], STDOUT_FILENO);
	close(Pipe[1]);
	bActive = true;
	Reader = std::thread([this, ReadEnd = Pipe[0]] { Pump(ReadEnd, Destination); });
}

FStdoutTap::~FStdoutTap()
{
	Finish();
}

FString FStdoutTap::Finish()
{
	if (bActive)
	{
		std::fflush(stdout);
		// Our standard output was the last write end the tap waits on; children have ended by now.
		dup2(SavedStdout, STDOUT_FILENO);
		Reader.join();
		close(SavedStdout);
		bActive = false;
	}
	return FString::FromUtf8(Captured);
}

FString TakeFromEnvironment(const char* Name)
{
	const char* Value = std::getenv(Name);
	const FString Taken = Value ? FString::FromNative(Value) : FString();
	unsetenv(Name);
	return Taken;
}

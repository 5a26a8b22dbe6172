#include "Terminal.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>

#include "Windows/WindowsApi.h"

bool IsTerminal(std::FILE* Stream)
{
	return _isatty(_fileno(Stream)) != 0;
}

bool PromptOnTerminal(const FString& Prompt, bool bSecret, FString& OutAnswer)
{
	if (!_isatty(_fileno(stdin)))
	{
		return false;
	}
	// Echo goes off before the prompt shows, as on a POSIX terminal.
	const HANDLE Input = GetStdHandle(STD_INPUT_HANDLE);
	DWORD Saved = 0;
	const bool bHideEcho = bSecret && GetConsoleMode(Input, &Saved);
	if (bHideEcho)
	{
		SetConsoleMode(Input, Saved & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
	}
	std::fputs(Prompt.ToUtf8().c_str(), stderr);
	std::fflush(stderr);
	const bool bRead = ReadAnswerLine(OutAnswer);
	if (bHideEcho)
	{
		SetConsoleMode(Input, Saved);
		std::fputc('\n', stderr);
	}
	return bRead;
}

FString TakeFromEnvironment(const char* Name)
{
	const std::wstring WideName(Name, Name + std::char_traits<char>::length(Name));
	const DWORD Size = GetEnvironmentVariableW(WideName.c_str(), nullptr, 0);
	std::wstring Value(Size, L'\0');
	if (Size > 0 && GetEnvironmentVariableW(WideName.c_str(), Value.data(), Size) == Size - 1)
	{
		Value.resize(Size - 1);
	}
	else
	{
		Value.clear();
	}
	// Children get the process's environment block; the C runtime's copy goes too, so that nothing reads it later.
	SetEnvironmentVariableW(WideName.c_str(), nullptr);
	_wputenv_s(WideName.c_str(), L"");
	return FString(WindowsApi::Ours(Value.c_str()));
}

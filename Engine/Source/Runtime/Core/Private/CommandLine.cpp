#include "Misc/Parse.h"

namespace
{
	FString& CommandLineStorage()
	{
		static FString Storage;
		return Storage;
	}
}

void FCommandLine::Set(const FString& NewCommandLine)
{
	CommandLineStorage() = NewCommandLine;
}

const TCHAR* FCommandLine::Get()
{
	return *CommandLineStorage();
}

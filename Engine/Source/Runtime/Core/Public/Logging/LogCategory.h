#pragma once

#include "Containers/UnrealString.h"

// A named log category with its default and compile-time verbosity.
struct FLogCategory
{
	FLogCategory(const TCHAR* InName, int32 InDefaultVerbosity, int32 InCompileTimeVerbosity)
		: Name(InName), Verbosity(InDefaultVerbosity), CompileTimeVerbosity(InCompileTimeVerbosity)
	{
	}
	FString Name;
	int32 Verbosity;
	int32 CompileTimeVerbosity;
};

#include "CoreTypes.h"

#include <cstdio>
#include <cstdlib>

namespace CoreAssert
{
	void Fail(const char* Expression, const char* File, int Line, const char* Message)
	{
		std::fprintf(stderr, "Assertion failed: %s [File:%s] [Line: %d]%s%s\n", Expression, File, Line,
					 Message ? "\n" : "", Message ? Message : "");
		std::fflush(stderr);
		std::abort();
	}
}

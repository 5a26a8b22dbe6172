#pragma once

#include "CoreTypes.h"

#include <cstdlib>
#include <fstream>
#include <string>

struct FPlatformMemory
{
	// The process's resident memory in kilobytes, as the kernel reports it; 0 where it can't be read.
	static int64 GetResidentKilobytes()
	{
		std::ifstream Status("/proc/self/status");
		std::string Line;
		while (std::getline(Status, Line))
		{
			if (Line.rfind("VmRSS:", 0) == 0)
			{
				return std::atol(Line.c_str() + 6);
			}
		}
		return 0;
	}
};

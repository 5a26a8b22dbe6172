#include "PlatformMisc.h"

#include <cerrno>
#include <dlfcn.h>
#include <sys/random.h>

namespace PlatformMisc
{
	void RandomBytes(void* Data, size_t Num)
	{
		size_t Filled = 0;
		while (Filled < Num)
		{
			const ssize_t Got = getrandom(static_cast<char*>(Data) + Filled, Num - Filled, 0);
			if (Got > 0)
			{
				Filled += static_cast<size_t>(Got);
			}
		}
	}

	FString ModuleLibraryPath(const FString& Directory, const FString& Name)
	{
		return (Directory.IsEmpty() ? FString() : Directory + TEXT("/")) + TEXT("lib") + Name + TEXT(".so");
	}

	void* LoadLibrary(const FString& Path)
	{
		return dlopen(Path.ToNative().c_str(), RTLD_NOW | RTLD_LOCAL);
	}

	void* FindSymbol(void* Library, const char* Name)
	{
		return dlsym(Library, Name);
	}
}

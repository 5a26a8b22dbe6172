#include "PlatformMisc.h"

#include "Windows/WindowsApi.h"

#include <bcrypt.h>

namespace PlatformMisc
{
	void RandomBytes(void* Data, size_t Num)
	{
		uint8* Out = static_cast<uint8*>(Data);
		while (Num > 0)
		{
			const ULONG Chunk = static_cast<ULONG>(Num < 0x10000000 ? Num : 0x10000000);
			if (BCryptGenRandom(nullptr, Out, Chunk, BCRYPT_USE_SYSTEM_PREFERRED_RNG) == 0)
			{
				Out += Chunk;
				Num -= Chunk;
			}
		}
	}

	FString ModuleLibraryPath(const FString& Directory, const FString& Name)
	{
		return (Directory.IsEmpty() ? FString() : Directory + TEXT("/")) + TEXT("lib") + Name + TEXT(".dll");
	}

	void* LoadLibrary(const FString& Path)
	{
		FString Windows = Path;
		Windows.ReplaceInline(TEXT("/"), TEXT("\\"));
		// Libraries that the module needs are looked for beside it first; that search needs a full path, so a
		// bare name goes through the system's own search, as dlopen's does.
		const bool bFull = Windows.Len() > 2 && (Windows[1] == u':' || (Windows[0] == u'\\' && Windows[1] == u'\\'));
		return LoadLibraryExW(WindowsApi::Wide(*Windows), nullptr,
							  bFull ? LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS : 0);
	}

	void* FindSymbol(void* Library, const char* Name)
	{
		return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(Library), Name));
	}
}

#include "Containers/UnrealString.h"

uint32 GetTypeHash(const FString& Value)
{
	// FNV-1a over the units.
	uint32 Hash = 2166136261u;
	for (TCHAR Unit : Value.GetStd())
	{
		Hash = (Hash ^ static_cast<uint32>(Unit)) * 16777619u;
	}
	return Hash;
}

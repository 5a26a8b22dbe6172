#pragma once

#include "CoreMinimal.h"
#include "HAL/PlatformFile.h"

#include <cstdlib>
#include <fstream>
#include <string>

// A fresh folder under the system's temporary folder, removed with everything in it at the end of a test.
class FTempDirectory
{
public:
	FTempDirectory()
	{
		std::string Pattern = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") + "/tessel-XXXXXX";
		Path = FString::FromUtf8(mkdtemp(Pattern.data()));
	}
	~FTempDirectory() { FPlatformFileManager::Get().GetPlatformFile().DeleteDirectoryRecursively(*Path); }

	const FString& Get() const { return Path; }
	FString operator/(const FString& Child) const { return Path / Child; }

	// Writes Bytes into the file at Relative below the folder, making the folders on the way.
	FString WriteFile(const FString& Relative, const std::string& Bytes) const
	{
		const FString Full = Path / Relative;
		FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*FPaths::GetPath(Full));
		std::ofstream Out(Full.ToNative(), std::ios::binary);
		Out << Bytes;
		return Full;
	}

	static std::string ReadBytes(const FString& Full)
	{
		std::ifstream In(Full.ToNative(), std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>());
	}

private:
	FString Path;
};

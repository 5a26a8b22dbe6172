#pragma once

#include "CoreMinimal.h"
#include "HAL/PlatformFile.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

// A fresh folder under the system's temporary folder, removed with everything in it at the end of a test.
class FTempDirectory
{
public:
	FTempDirectory()
	{
		static std::atomic<unsigned> Counter{0};
		const std::filesystem::path Base = std::filesystem::temp_directory_path();
		// The clock and a counter make the name unique enough, and the exclusive create makes sure.
		for (unsigned Attempt = 0;; ++Attempt)
		{
			const std::filesystem::path Candidate =
				Base / ("tessel-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count() % 1000000007) + "-" +
						std::to_string(Counter++));
			std::error_code Error;
			if (std::filesystem::create_directory(Candidate, Error))
			{
				// Ours alone, as mkdtemp makes it.
				std::filesystem::permissions(Candidate, std::filesystem::perms::owner_all, std::filesystem::perm_options::replace, Error);
				Path = FString(Candidate.generic_u16string());
				break;
			}
			if (Attempt > 100)
			{
				// A folder we didn't make must never be used, since the end of the test deletes it whole.
				std::fprintf(stderr, "no temporary folder could be made in %s\n", Base.string().c_str());
				std::abort();
			}
		}
	}
	~FTempDirectory() { FPlatformFileManager::Get().GetPlatformFile().DeleteDirectoryRecursively(*Path); }

	const FString& Get() const { return Path; }
	FString operator/(const FString& Child) const { return Path / Child; }

	// Writes Bytes into the file at Relative below the folder, making the folders on the way.
	FString WriteFile(const FString& Relative, const std::string& Bytes) const
	{
		const FString Full = Path / Relative;
		FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*FPaths::GetPath(Full));
		std::ofstream Out(NativePath(Full), std::ios::binary);
		Out << Bytes;
		return Full;
	}

	static std::string ReadBytes(const FString& Full) { return ReadAll(NativePath(Full)); }

	// Every regular file below Root with its bytes, by its path below Root ("/" between folders); a folder shows
	// only through its files, and one that can't be read through none.
	static std::map<std::string, std::string> ReadTree(const FString& Root)
	{
		std::map<std::string, std::string> Files;
		const std::filesystem::path Base = NativePath(Root);
		std::error_code Error;
		for (std::filesystem::recursive_directory_iterator It(Base, std::filesystem::directory_options::skip_permission_denied, Error), End;
			 !Error && It != End; It.increment(Error))
		{
			if (It->is_regular_file(Error))
			{
				Files[std::filesystem::relative(It->path(), Base).generic_string()] = ReadAll(It->path());
			}
		}
		return Files;
	}

private:
	static std::string ReadAll(const std::filesystem::path& File)
	{
		std::ifstream In(File, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(In), std::istreambuf_iterator<char>());
	}

	// Names that are not UTF-8 keep their bytes on POSIX; Windows takes the 16-bit units as they are.
	static std::filesystem::path NativePath(const FString& Full)
	{
#ifdef _WIN32
		return std::filesystem::path(Full.GetStd());
#else
		return std::filesystem::path(Full.ToNative());
#endif
	}

	FString Path;
};

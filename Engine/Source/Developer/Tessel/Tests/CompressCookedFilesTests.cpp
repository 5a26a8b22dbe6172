#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "HAL/PlatformProcess.h"
#include "Misc/Compression.h"
#include "TempDirectory.h"
#include "packaging/CompressAhead.h"
#include "packaging/CompressCookedFilesVisitor.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <thread>
#ifdef _WIN32
#include "Windows/WindowsApi.h"
#else
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace
{
	// Every file below Root, as paths relative to it; folders only show through their files.
	std::set<std::string> FilesBelow(const FString& Root)
	{
		std::set<std::string> Files;
		const std::filesystem::path Base(Root.ToUtf8());
		if (!std::filesystem::exists(Base))
		{
			return Files;
		}
		for (const auto& Entry : std::filesystem::recursive_directory_iterator(Base))
		{
			if (!Entry.is_directory())
			{
				Files.insert(std::filesystem::relative(Entry.path(), Base).generic_string());
			}
		}
		return Files;
	}

	// The original bytes as the loader gets them back out of a ".z" file.
	std::string Unpack(const FString& ZPath, int64 Size)
	{
		TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*ZPath));
		if (!Reader)
		{
			ADD_FAILURE() << "no " << ZPath;
			return std::string();
		}
		std::string Bytes(static_cast<size_t>(Size), '\0');
		Reader->SerializeCompressed(Bytes.data(), Size, COMPRESS_ZLIB);
		EXPECT_FALSE(Reader->IsError()) << ZPath;
		EXPECT_TRUE(Reader->AtEnd()) << ZPath;
		return Bytes;
	}

	std::string Text(size_t Size, char Seed)
	{
		std::string Bytes;
		while (Bytes.size() < Size)
		{
			Bytes += "Package ";
			Bytes += static_cast<char>(Seed + Bytes.size() % 13);
		}
		Bytes.resize(Size);
		return Bytes;
	}

	bool Walk(const FString& From, const FString& To)
	{
		FCompressCookedFilesVisitor Visitor(From, To);
		return FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(*From, Visitor);
	}

	// Passes each call on and remembers it, so that a test can tell what the walk reached before it stopped.
	class FRecordingVisitor : public IPlatformFile::FDirectoryVisitor
	{
	public:
		FRecordingVisitor(const FString& From, const FString& To) : Inner(From, To) {}
		bool Visit(const TCHAR* Path, bool bIsDirectory) override
		{
			const bool bGoOn = Inner.Visit(Path, bIsDirectory);
			Visited.push_back({FString(Path), bIsDirectory, bGoOn});
			return bGoOn;
		}
		struct FCall
		{
			FString Path;
			bool bIsDirectory;
			bool bGoOn;
		};
		std::vector<FCall> Visited;

	private:
		FCompressCookedFilesVisitor Inner;
	};
}

TEST(CompressCookedFilesTests, PackagesAreCompressedAndEverythingElseCopied)
{
	FTempDirectory Dir;
	const FString Staged = Dir / TEXT("Staged");
	const FString Target = Dir / TEXT("Out/WindowsNoEditor");
	const std::string Map = Text(300000, 'a');
	const std::string Asset = Text(5000, 'k');
	const std::string Shader = Text(131072, 'q');
	Dir.WriteFile(TEXT("Staged/Maps/Level.UMAP"), Map);
	Dir.WriteFile(TEXT("Staged/Content/Rock.Uasset"), Asset);
	Dir.WriteFile(TEXT("Staged/Content/Shaders.sm4"), Shader);
	Dir.WriteFile(TEXT("Staged/Content/Rock.uexp"), "bulk");
	Dir.WriteFile(TEXT("Staged/Content/Old.uasset.z"), "already packed");
	Dir.WriteFile(TEXT("Staged/Content/Empty.uasset"), "");
	Dir.WriteFile(TEXT("Staged/README"), "no extension");
	Dir.WriteFile(TEXT("Staged/mod.info"), std::string("\x04\0\0\0abc\0", 8));
	Dir.WriteFile(TEXT("Staged/modmeta.info"), std::string("\0\0\0\0", 4));
	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*(Staged / TEXT("Hollow/Deeper/Deepest")));

	EXPECT_TRUE(Walk(Staged, Target));

	const std::set<std::string> Expected = {
		"Maps/Level.UMAP.z",
		"Maps/Level.UMAP.z.uncompressed_size",
		"Content/Rock.Uasset.z",
		"Content/Rock.Uasset.z.uncompressed_size",
		"Content/Shaders.sm4.z",
		"Content/Shaders.sm4.z.uncompressed_size",
		"Content/Empty.uasset.z",
		"Content/Empty.uasset.z.uncompressed_size",
		"Content/Rock.uexp",
		"Content/Old.uasset.z",
		"README",
		"mod.info",
		"modmeta.info",
	};
	EXPECT_EQ(FilesBelow(Target), Expected) << "no temporaries, no empty folders, nothing else";
	EXPECT_FALSE(std::filesystem::exists((Target / TEXT("Hollow")).ToUtf8()));

	EXPECT_EQ(Unpack(Target / TEXT("Maps/Level.UMAP.z"), 300000), Map);
	EXPECT_EQ(Unpack(Target / TEXT("Content/Rock.Uasset.z"), 5000), Asset);
	EXPECT_EQ(Unpack(Target / TEXT("Content/Shaders.sm4.z"), 131072), Shader);
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("Maps/Level.UMAP.z.uncompressed_size")), "300000\r\n");
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("Content/Shaders.sm4.z.uncompressed_size")), "131072\r\n");

	// An empty package still gets a stream (tag and zero summary) and a size of 0.
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("Content/Empty.uasset.z")).size(), 32u);
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("Content/Empty.uasset.z.uncompressed_size")), "0\r\n");

	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("Content/Old.uasset.z")), "already packed");
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("README")), "no extension");
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("mod.info")), std::string("\x04\0\0\0abc\0", 8));
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("Content/Rock.uexp")), "bulk");

	// The source tree is left as it was.
	EXPECT_EQ(FilesBelow(Staged).size(), 9u);
}

TEST(CompressCookedFilesTests, WalkWithThePoolMakesWhatOneThreadMakesEvenWhenFilesChangeOnTheWay)
{
	// Packages are compressed ahead of the walk. Files that shrink, appear or grow past what is held ahead
	// while the walk runs must come out as they are when the walk reaches them, byte for byte as one thread
	// would have packaged the final tree.
	FTempDirectory Dir;
	const FString Staged = Dir / TEXT("Staged");
	const TCHAR* Folders[] = {TEXT("A"), TEXT("B/Deep"), TEXT("C")};
	for (int Index = 0; Index < 36; ++Index)
	{
		const FString Folder = Folders[Index % 3];
		const size_t Size = static_cast<size_t>(700 + 9000 * (Index % 7) + (Index % 5 == 0 ? 400000 : 0));
		Dir.WriteFile(TEXT("Staged/") + Folder + FString::Printf(TEXT("/p%02d.uasset"), Index), Text(Size, static_cast<char>('a' + Index % 20)));
		Dir.WriteFile(TEXT("Staged/") + Folder + FString::Printf(TEXT("/t%02d.txt"), Index), "copied");
	}
	for (const TCHAR* Folder : Folders)
	{
		Dir.WriteFile(TEXT("Staged/") + FString(Folder) + TEXT("/shrinks.uasset"), Text(20000, 'x'));
		Dir.WriteFile(TEXT("Staged/") + FString(Folder) + TEXT("/grows.uasset"), Text(3000, 'y'));
	}
	const std::string Grown = Text(static_cast<size_t>(FCompressAhead::MaxFileSize + 3), 'g');
	const std::string Shrunk = Text(10, 's');

	// After the first package (when the plan exists), changes a folder the walk has not entered yet.
	class FChangingVisitor : public IPlatformFile::FDirectoryVisitor
	{
	public:
		FChangingVisitor(FTempDirectory& InDir, const std::string& InGrown, const std::string& InShrunk)
			: Dir(InDir), Grown(InGrown), Shrunk(InShrunk), Inner(InDir / TEXT("Staged"), InDir / TEXT("Pooled"))
		{
		}
		bool Visit(const TCHAR* Path, bool bIsDirectory) override
		{
			const bool bGoOn = Inner.Visit(Path, bIsDirectory);
			const FString File(Path);
			if (Changed.IsEmpty() && File.EndsWith(TEXT(".uasset")))
			{
				Changed = File.Contains(TEXT("/A/")) ? TEXT("C") : TEXT("A");
				Dir.WriteFile(TEXT("Staged/") + Changed + TEXT("/shrinks.uasset"), Shrunk);
				Dir.WriteFile(TEXT("Staged/") + Changed + TEXT("/grows.uasset"), Grown);
				Dir.WriteFile(TEXT("Staged/") + Changed + TEXT("/appears.uasset"), Text(5000, 'n'));
			}
			return bGoOn;
		}
		FString Changed;

	private:
		FTempDirectory& Dir;
		const std::string& Grown;
		const std::string& Shrunk;
		FCompressCookedFilesVisitor Inner;
	};
	FChangingVisitor Changing(Dir, Grown, Shrunk);
	ASSERT_TRUE(FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(*Staged, Changing));

	FCompression::SetParallelCompression(false);
	const bool bOneThread = Walk(Staged, Dir / TEXT("OneThread"));
	FCompression::SetParallelCompression(true);
	ASSERT_TRUE(bOneThread);

	const std::set<std::string> Files = FilesBelow(Dir / TEXT("OneThread"));
	EXPECT_EQ(FilesBelow(Dir / TEXT("Pooled")), Files);
	EXPECT_EQ(Files.size(), 2u * (36 + 6 + 1) + 36);
	for (const std::string& File : Files)
	{
		const FString Rel = FString::FromUtf8(File.c_str());
		EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("Pooled") / Rel), FTempDirectory::ReadBytes(Dir / TEXT("OneThread") / Rel))
			<< File;
	}
	const FString Changed = Dir / TEXT("Pooled") / Changing.Changed;
	EXPECT_EQ(Unpack(Changed / TEXT("shrinks.uasset.z"), 10), Shrunk);
	EXPECT_EQ(Unpack(Changed / TEXT("grows.uasset.z"), static_cast<int64>(Grown.size())), Grown);
	EXPECT_EQ(Unpack(Changed / TEXT("appears.uasset.z"), 5000), Text(5000, 'n'));
}

TEST(CompressCookedFilesTests, OldTreeIsReplacedFileByFile)
{
	FTempDirectory Dir;
	const FString Staged = Dir / TEXT("Staged");
	const FString Target = Dir / TEXT("Target");
	Dir.WriteFile(TEXT("Target/a.uasset.z"), "stale stream");
	Dir.WriteFile(TEXT("Target/a.uasset.z.uncompressed_size"), "999\r\n");
	Dir.WriteFile(TEXT("Target/gone.uasset.z"), "from an earlier cook");
	Dir.WriteFile(TEXT("Target/notes.txt"), "old notes");
	Dir.WriteFile(TEXT("Target/SaveCompressed.tmp"), "left by a failed move");
	const std::string Asset = Text(200000, 'm');
	Dir.WriteFile(TEXT("Staged/a.uasset"), Asset);
	Dir.WriteFile(TEXT("Staged/notes.txt"), "new notes");

	EXPECT_TRUE(Walk(Staged, Target));

	EXPECT_EQ(Unpack(Target / TEXT("a.uasset.z"), 200000), Asset);
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("a.uasset.z.uncompressed_size")), "200000\r\n");
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("notes.txt")), "new notes");
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("gone.uasset.z")), "from an earlier cook");
	EXPECT_FALSE(std::filesystem::exists((Target / TEXT("SaveCompressed.tmp")).ToUtf8()))
		<< "the temporary of the folder was used and moved away";
}

TEST(CompressCookedFilesTests, PackageThatCannotBeOpenedStopsTheWalk)
{
	FTempDirectory Dir;
	const FString Staged = Dir / TEXT("Staged");
	const FString Target = Dir / TEXT("Target");
	// A file nobody can open: on POSIX a link to nothing (even root can't open it, unlike a file without
	// permissions); on Windows a file another handle holds without sharing.
	for (int Index = 0; Index < 6; ++Index)
	{
		Dir.WriteFile(FString::Printf(TEXT("Staged/Sub%d/p%d.uasset"), Index % 2, Index), Text(1000, 'c'));
		Dir.WriteFile(FString::Printf(TEXT("Staged/Sub%d/t%d.txt"), Index % 2, Index), "text");
	}
	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*(Staged / TEXT("Sub1")));
#ifdef _WIN32
	Dir.WriteFile(TEXT("Staged/Sub1/Broken.uasset"), Text(1000, 'b'));
	const FString Held = Staged / TEXT("Sub1/Broken.uasset");
	const HANDLE Holder = CreateFileW(WindowsApi::Wide(*Held), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
	ASSERT_NE(Holder, INVALID_HANDLE_VALUE);
	struct FClose
	{
		HANDLE Handle;
		~FClose() { CloseHandle(Handle); }
	} CloseAtEnd{Holder};
#else
	ASSERT_EQ(symlink((Dir / TEXT("missing")).ToUtf8().c_str(), (Staged / TEXT("Sub1/Broken.uasset")).ToUtf8().c_str()), 0);
#endif

	FRecordingVisitor Visitor(Staged, Target);
	EXPECT_FALSE(FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(*Staged, Visitor));

	ASSERT_FALSE(Visitor.Visited.empty());
	EXPECT_EQ(Visitor.Visited.back().Path, Staged / TEXT("Sub1/Broken.uasset"));
	EXPECT_FALSE(Visitor.Visited.back().bGoOn);
	// Exactly what was reached before the stop is in the target; the rest never arrives.
	std::set<std::string> Expected;
	for (size_t Index = 0; Index + 1 < Visitor.Visited.size(); ++Index)
	{
		const auto& Call = Visitor.Visited[Index];
		EXPECT_TRUE(Call.bGoOn);
		if (!Call.bIsDirectory)
		{
			const std::string Rel = Call.Path.Mid(Staged.Len() + 1).ToUtf8();
			if (Rel.ends_with(".uasset"))
			{
				Expected.insert(Rel + ".z");
				Expected.insert(Rel + ".z.uncompressed_size");
			}
			else
			{
				Expected.insert(Rel);
			}
		}
	}
	EXPECT_EQ(FilesBelow(Target), Expected) << "and no SaveCompressed.tmp is left behind";
}

TEST(CompressCookedFilesTests, TemporaryThatCannotBeMadeStopsTheWalk)
{
	FTempDirectory Dir;
	const FString Staged = Dir / TEXT("Staged");
	Dir.WriteFile(TEXT("Staged/Blocked/a.umap"), "map");
	// A file where the target folder should be: no writer can be made below it.
	Dir.WriteFile(TEXT("Target/Blocked"), "in the way");

	FCompressCookedFilesVisitor Visitor(Staged, Dir / TEXT("Target"));
	EXPECT_FALSE(Visitor.Visit(*(Staged / TEXT("Blocked/a.umap")), false));
	EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("Target/Blocked")), "in the way");
	EXPECT_TRUE(Visitor.Visit(*(Staged / TEXT("Blocked")), true)) << "folders make nothing and never stop the walk";
}

TEST(CompressCookedFilesTests, PackageOutsideTheRootIsAProgrammingError)
{
	GTEST_FLAG_SET(death_test_style, "threadsafe");
	FTempDirectory Dir;
	const FString Outside = Dir.WriteFile(TEXT("Elsewhere/a.uasset"), "x");
	FCompressCookedFilesVisitor Visitor(Dir / TEXT("Staged"), Dir / TEXT("Target"));
	EXPECT_DEATH(Visitor.Visit(*Outside, false), "FullPath\\.StartsWith\\( StartedRoot \\)");
}

// Run as a child of the kill test below, in a process of its own (so that the compression workers are its
// own threads too): walks one tree into another and says when it starts and when it has ended.
TEST(CompressCookedFilesTests, DISABLED_WalkUntilKilled)
{
	const char* From = std::getenv("TESSEL_WALK_FROM");
	const char* To = std::getenv("TESSEL_WALK_TO");
	ASSERT_TRUE(From && To);
	std::fputs("walk-started\n", stdout);
	std::fflush(stdout);
	Walk(FString::FromNative(From), FString::FromNative(To));
	std::fputs("walk-ended\n", stdout);
	std::fflush(stdout);
}

TEST(CompressCookedFilesTests, KilledWalkLeavesOnlyWholeFilesUnderTheirNames)
{
#ifdef _WIN32
	GTEST_SKIP() << "each walk is a fork of this test ended by SIGKILL, which Windows has not";
#else
	FTempDirectory Dir;
	// Two cooks of the same mod: the same names and sizes, other bytes. The walks take turns into one target.
	std::map<std::string, std::array<std::string, 2>> Sources;
	for (int32 Index = 0; Index < 24; ++Index)
	{
		const size_t Size = Index % 5 == 0 ? 200000 + Index * 1000 : 2000 + Index * 3000;
		const std::string Name = FString::Printf(TEXT("Sub%d/p%d.%s"), Index % 3, Index, Index % 4 == 0 ? TEXT("umap") : TEXT("uasset")).ToUtf8();
		Sources[Name] = {Text(Size, 'a' + Index % 7), Text(Size, 'A' + Index % 11)};
	}
	Sources["Sub0/notes.txt"] = {Text(3000, 'n'), Text(3000, 'N')};
	for (const auto& [Name, Variants] : Sources)
	{
		for (int32 Variant = 0; Variant < 2; ++Variant)
		{
			Dir.WriteFile(FString::Printf(TEXT("Cook%d/"), Variant) + FString::FromUtf8(Name), Variants[Variant]);
		}
	}
	const FString Target = Dir / TEXT("Target");

	// Starts a walk of one cook in a process of its own; true once it has said that it started.
	const auto StartWalk = [&](int32 Variant, pid_t& OutChild, int& OutPipe) {
		int Pipe[2];
		if (pipe(Pipe) != 0)
		{
			return false;
		}
		const std::string Self = FPlatformProcess::ExecutablePath().ToNative();
		const std::string From = (Dir / FString::Printf(TEXT("Cook%d"), Variant)).ToNative();
		const std::string To = Target.ToNative();
		OutChild = fork();
		if (OutChild == 0)
		{
			dup2(Pipe[1], STDOUT_FILENO);
			close(Pipe[0]);
			setenv("TESSEL_WALK_FROM", From.c_str(), 1);
			setenv("TESSEL_WALK_TO", To.c_str(), 1);
			execl(Self.c_str(), Self.c_str(), "--gtest_also_run_disabled_tests",
				  "--gtest_filter=CompressCookedFilesTests.DISABLED_WalkUntilKilled", static_cast<char*>(nullptr));
			_exit(127);
		}
		close(Pipe[1]);
		OutPipe = Pipe[0];
		std::string Said;
		char Byte;
		while (Said.find("walk-started\n") == std::string::npos && read(OutPipe, &Byte, 1) == 1)
		{
			Said += Byte;
		}
		return OutChild > 0 && Said.find("walk-started\n") != std::string::npos;
	};
	const auto RestOfOutput = [](int Pipe) {
		std::string Said;
		char Chunk[4096];
		for (ssize_t Got; (Got = read(Pipe, Chunk, sizeof(Chunk))) > 0;)
		{
			Said.append(Chunk, static_cast<size_t>(Got));
		}
		close(Pipe);
		return Said;
	};

	// One whole walk first, to learn how long one takes.
	pid_t Child = 0;
	int Pipe = -1;
	ASSERT_TRUE(StartWalk(0, Child, Pipe));
	const auto Begin = std::chrono::steady_clock::now();
	ASSERT_NE(RestOfOutput(Pipe).find("walk-ended"), std::string::npos);
	const auto WalkTime = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - Begin);
	int Status = 0;
	ASSERT_EQ(waitpid(Child, &Status, 0), Child);
	ASSERT_TRUE(WIFEXITED(Status) && WEXITSTATUS(Status) == 0);

	std::mt19937 Random(4242);
	int32 KillsInsideAWalk = 0;
	int32 Rounds = 0;
	while (KillsInsideAWalk < 200 && Rounds < 1000)
	{
		const int32 Variant = Rounds++ % 2;
		ASSERT_TRUE(StartWalk(Variant, Child, Pipe));
		std::this_thread::sleep_for(std::chrono::microseconds(Random() % std::max<int64_t>(1, WalkTime.count())));
		kill(Child, SIGKILL);
		const bool bEnded = RestOfOutput(Pipe).find("walk-ended") != std::string::npos;
		ASSERT_EQ(waitpid(Child, &Status, 0), Child);
		ASSERT_TRUE(WIFSIGNALED(Status) || (WIFEXITED(Status) && WEXITSTATUS(Status) == 0 && bEnded)) << Status;
		KillsInsideAWalk += bEnded ? 0 : 1;

		// Every file under its final name is whole: a ".z" decodes to one cook's bytes, a copy is one cook's
		// file, and a size file stands beside its ".z" and says its size.
		for (const std::string& Name : FilesBelow(Target))
		{
			const FString Path = Target / FString::FromUtf8(Name);
			const std::string Base = std::filesystem::path(Name).filename().string();
			if (Base == "SaveCompressed.tmp" || Base.starts_with("."))
			{
				continue; // temporaries of killed writers
			}
			if (Name.ends_with(".z.uncompressed_size"))
			{
				const std::string ZName = Name.substr(0, Name.size() - std::strlen(".uncompressed_size"));
				ASSERT_TRUE(std::filesystem::exists((Target / FString::FromUtf8(ZName)).ToNative())) << Name;
				const std::string Source = ZName.substr(0, ZName.size() - 2);
				ASSERT_EQ(FTempDirectory::ReadBytes(Path), std::to_string(Sources.at(Source)[0].size()) + "\r\n") << Name;
			}
			else if (Name.ends_with(".z"))
			{
				const auto& Variants = Sources.at(Name.substr(0, Name.size() - 2));
				const std::string Bytes = Unpack(Path, static_cast<int64>(Variants[0].size()));
				ASSERT_FALSE(HasFailure()) << Name << " after round " << Rounds;
				ASSERT_TRUE(Bytes == Variants[0] || Bytes == Variants[1]) << Name << " after round " << Rounds;
			}
			else
			{
				const std::string Bytes = FTempDirectory::ReadBytes(Path);
				ASSERT_TRUE(Bytes == Sources.at(Name)[0] || Bytes == Sources.at(Name)[1]) << Name;
			}
		}
	}
	std::cout << "walks: " << Rounds << ", killed inside the walk: " << KillsInsideAWalk << ", one walk: "
			  << WalkTime.count() / 1000 << " ms" << std::endl;
	EXPECT_GE(KillsInsideAWalk, 200);
#endif
}

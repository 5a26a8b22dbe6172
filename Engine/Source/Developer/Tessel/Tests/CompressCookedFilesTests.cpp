#include "HAL/FileManager.h"
#include "HAL/PlatformProcess.h"
#include "Misc/Compression.h"
#include "TempDirectory.h"
#include "TestPrograms.h"
#include "packaging/CompressAhead.h"
#include "packaging/CompressCookedFilesVisitor.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <thread>
#ifdef _WIN32
#include "Windows/WindowsApi.h"
#else
#include <unistd.h>
#endif

namespace
{
	std::set<std::string> FilesBelow(const FString& Root)
	{
		std::set<std::string> Names;
		for (const auto& Entry : FTempDirectory::ReadTree(Root))
		{
			Names.insert(Entry.first);
		}
		return Names;
	}

	// The original bytes as the loader gets them back out of a ".z" file.
	std::string Unpack(const FString& ZPath, int64 Size)
	{
		TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*ZPath));
		if (!Reader)
		{
			return "no " + ZPath.ToUtf8();
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
}

// Packages (".umap", ".uasset", ".sm4" in any letter case) become a ".z" stream with its size beside it, whatever
// else is copied as it is, each over what an earlier cook left under its name. Nothing more: no temporaries, no
// empty folders, the earlier cook's other files untouched, the source as it was.
TEST(CompressCookedFilesTests, PackagesAreCompressedAndEverythingElseCopied)
{
	FTempDirectory Dir;
	const FString Staged = Dir / TEXT("Staged");
	const FString Target = Dir / TEXT("Out/WindowsNoEditor");
	const std::map<std::string, std::string> Packages = {{"Maps/Level.UMAP", Text(300000, 'a')},
														 {"Content/Rock.Uasset", Text(5000, 'k')},
														 {"Content/Shaders.sm4", Text(131072, 'q')},
														 {"Content/Empty.uasset", ""}};
	const std::map<std::string, std::string> Copies = {{"Content/Rock.uexp", "bulk"},
													   {"Content/Old.uasset.z", "already packed"},
													   {"README", "no extension"},
													   {"notes.txt", "new notes"},
													   {"mod.info", std::string("\x04\0\0\0abc\0", 8)}};
	for (const auto* Files : {&Packages, &Copies})
	{
		for (const auto& [Name, Bytes] : *Files)
		{
			Dir.WriteFile(TEXT("Staged/") + FString::FromUtf8(Name), Bytes);
		}
	}
	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*(Staged / TEXT("Hollow/Deeper/Deepest")));
	Dir.WriteFile(TEXT("Out/WindowsNoEditor/Maps/Level.UMAP.z"), "stale stream");
	Dir.WriteFile(TEXT("Out/WindowsNoEditor/Maps/Level.UMAP.z.uncompressed_size"), "999\r\n");
	Dir.WriteFile(TEXT("Out/WindowsNoEditor/notes.txt"), "old notes");
	Dir.WriteFile(TEXT("Out/WindowsNoEditor/gone.uasset.z"), "from an earlier cook");
	Dir.WriteFile(TEXT("Out/WindowsNoEditor/Content/SaveCompressed.tmp"), "left by a failed move");

	EXPECT_TRUE(Walk(Staged, Target));

	std::set<std::string> Expected = {"gone.uasset.z"};
	for (const auto& [Name, Bytes] : Packages)
	{
		const FString ZPath = Target / FString::FromUtf8(Name) + TEXT(".z");
		EXPECT_EQ(Unpack(ZPath, static_cast<int64>(Bytes.size())), Bytes) << Name;
		EXPECT_EQ(FTempDirectory::ReadBytes(ZPath + TEXT(".uncompressed_size")), std::to_string(Bytes.size()) + "\r\n") << Name;
		Expected.insert({Name + ".z", Name + ".z.uncompressed_size"});
	}
	for (const auto& [Name, Bytes] : Copies)
	{
		EXPECT_EQ(FTempDirectory::ReadBytes(Target / FString::FromUtf8(Name)), Bytes) << Name;
		Expected.insert(Name);
	}
	EXPECT_EQ(FilesBelow(Target), Expected);
	EXPECT_FALSE(std::filesystem::exists((Target / TEXT("Hollow")).ToUtf8()));
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("gone.uasset.z")), "from an earlier cook");
	// An empty package still gets a stream: the tag and a zero summary.
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("Content/Empty.uasset.z")).size(), 32u);
	EXPECT_EQ(FilesBelow(Staged).size(), Packages.size() + Copies.size());
}

// Packages are compressed ahead of the walk. Files that shrink, appear or grow past what is held ahead while the
// walk runs must come out as they are when the walk reaches them, byte for byte as one thread would have packaged
// the final tree.
TEST(CompressCookedFilesTests, WalkWithThePoolMakesWhatOneThreadMakesEvenWhenFilesChangeOnTheWay)
{
	FTempDirectory Dir;
	const FString Staged = Dir / TEXT("Staged");
	const TCHAR* Folders[] = {TEXT("A"), TEXT("B/Deep"), TEXT("C")};
	for (int Index = 0; Index < 36; ++Index)
	{
		const FString Folder = TEXT("Staged/") + FString(Folders[Index % 3]);
		const size_t Size = static_cast<size_t>(700 + 9000 * (Index % 7) + (Index % 5 == 0 ? 400000 : 0));
		Dir.WriteFile(Folder + FString::Printf(TEXT("/p%02d.uasset"), Index), Text(Size, static_cast<char>('a' + Index % 20)));
		Dir.WriteFile(Folder + FString::Printf(TEXT("/t%02d.txt"), Index), "copied");
	}
	for (const TCHAR* Folder : Folders)
	{
		Dir.WriteFile(TEXT("Staged/") + FString(Folder) + TEXT("/shrinks.uasset"), Text(20000, 'x'));
		Dir.WriteFile(TEXT("Staged/") + FString(Folder) + TEXT("/grows.uasset"), Text(3000, 'y'));
	}
	const std::string Grown = Text(static_cast<size_t>(FCompressAhead::MaxFileSize + 3), 'g');
	const std::string Shrunk = Text(10, 's');
	// After the first package (when the plan exists), changes a folder the walk has not entered yet.
	FString Changed;
	FCompressCookedFilesVisitor Pooled(Staged, Dir / TEXT("Pooled"));
	ASSERT_TRUE(FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(
		*Staged,
		[&](const TCHAR* Path, bool bIsDirectory)
		{
			const bool bGoOn = Pooled.Visit(Path, bIsDirectory);
			if (Changed.IsEmpty() && FString(Path).EndsWith(TEXT(".uasset")))
			{
				Changed = FString(Path).Contains(TEXT("/A/")) ? TEXT("C") : TEXT("A");
				Dir.WriteFile(TEXT("Staged/") + Changed + TEXT("/shrinks.uasset"), Shrunk);
				Dir.WriteFile(TEXT("Staged/") + Changed + TEXT("/grows.uasset"), Grown);
				Dir.WriteFile(TEXT("Staged/") + Changed + TEXT("/appears.uasset"), Text(5000, 'n'));
			}
			return bGoOn;
		}));
	FCompression::SetParallelCompression(false);
	const bool bOneThread = Walk(Staged, Dir / TEXT("OneThread"));
	FCompression::SetParallelCompression(true);
	ASSERT_TRUE(bOneThread);

	const std::map<std::string, std::string> OneThread = FTempDirectory::ReadTree(Dir / TEXT("OneThread"));
	const std::map<std::string, std::string> PooledFiles = FTempDirectory::ReadTree(Dir / TEXT("Pooled"));
	EXPECT_EQ(OneThread.size(), 2u * (36 + 6 + 1) + 36);
	EXPECT_EQ(PooledFiles.size(), OneThread.size());
	for (const auto& [Name, Bytes] : OneThread)
	{
		EXPECT_TRUE(PooledFiles.contains(Name) && PooledFiles.at(Name) == Bytes) << Name;
	}
	const FString Out = Dir / TEXT("Pooled") / Changed;
	EXPECT_EQ(Unpack(Out / TEXT("shrinks.uasset.z"), 10), Shrunk);
	EXPECT_EQ(Unpack(Out / TEXT("grows.uasset.z"), static_cast<int64>(Grown.size())), Grown);
	EXPECT_EQ(Unpack(Out / TEXT("appears.uasset.z"), 5000), Text(5000, 'n'));
}

// A package that can't be opened stops the walk: exactly what was reached before it is in the target, the rest
// never arrives, and no temporary stays. So does a temporary that can't be made; a folder never stops the walk.
TEST(CompressCookedFilesTests, AFileThatCannotBeOpenedOrWrittenStopsTheWalk)
{
	FTempDirectory Dir;
	const FString Staged = Dir / TEXT("Staged");
	const FString Target = Dir / TEXT("Target");
	for (int Index = 0; Index < 6; ++Index)
	{
		Dir.WriteFile(FString::Printf(TEXT("Staged/Sub%d/p%d.uasset"), Index % 2, Index), Text(1000, 'c'));
		Dir.WriteFile(FString::Printf(TEXT("Staged/Sub%d/t%d.txt"), Index % 2, Index), "text");
	}
	// A file nobody can open: on POSIX a link to nothing (even root can't open it, unlike a file without
	// permissions); on Windows a file another handle holds without sharing.
#ifdef _WIN32
	const FString Held = Dir.WriteFile(TEXT("Staged/Sub1/Broken.uasset"), Text(1000, 'b'));
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
	std::set<std::string> Reached;
	FString Stopped;
	FCompressCookedFilesVisitor Visitor(Staged, Target);
	EXPECT_FALSE(FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(
		*Staged,
		[&](const TCHAR* Path, bool bIsDirectory)
		{
			EXPECT_TRUE(Stopped.IsEmpty()) << "visited after the stop: " << FString(Path);
			const bool bGoOn = Visitor.Visit(Path, bIsDirectory);
			const std::string Rel = FString(Path).Mid(Staged.Len() + 1).ToUtf8();
			Stopped = bGoOn ? FString() : FString(Path);
			if (bGoOn && !bIsDirectory)
			{
				Reached.insert(Rel.ends_with(".uasset") ? Rel + ".z" : Rel);
				Reached.insert(Rel.ends_with(".uasset") ? Rel + ".z.uncompressed_size" : Rel);
			}
			return bGoOn;
		}));
	EXPECT_EQ(Stopped, Staged / TEXT("Sub1/Broken.uasset"));
	EXPECT_EQ(FilesBelow(Target), Reached);

	// A file where the target folder should be: no temporary can be made below it.
	Dir.WriteFile(TEXT("Staged/Blocked/a.umap"), "map");
	Dir.WriteFile(TEXT("Target/Blocked"), "in the way");
	FCompressCookedFilesVisitor Blocked(Staged, Target);
	EXPECT_FALSE(Blocked.Visit(*(Staged / TEXT("Blocked/a.umap")), false));
	EXPECT_EQ(FTempDirectory::ReadBytes(Target / TEXT("Blocked")), "in the way");
	EXPECT_TRUE(Blocked.Visit(*(Staged / TEXT("Blocked")), true));
}

#ifndef _WIN32
// Run as a child of the kill test below, in a process of its own (so that the compression workers are its
// own threads too): walks one tree into another and says when it starts and when it has ended.
TEST(CompressCookedFilesTests, DISABLED_WalkUntilKilled)
{
	const char* From = std::getenv("TESSEL_WALK_FROM");
	const char* To = std::getenv("TESSEL_WALK_TO");
	ASSERT_TRUE(From && To);
	std::puts("walk-started");
	std::fflush(stdout);
	Walk(FString::FromNative(From), FString::FromNative(To));
	std::puts("walk-ended");
	std::fflush(stdout);
}
#endif

TEST(CompressCookedFilesTests, KilledWalkLeavesOnlyWholeFilesUnderTheirNames)
{
#ifdef _WIN32
	GTEST_SKIP() << "each walk is a child of this test ended by SIGKILL, which Windows has not";
#else
	FTempDirectory Dir;
	// Two cooks of the same mod: the same names and sizes, other bytes. The walks take turns into one target.
	std::map<std::string, std::array<std::string, 2>> Sources;
	for (int32 Index = 0; Index < 24; ++Index)
	{
		const size_t Size = Index % 5 == 0 ? 200000 + Index * 1000 : 2000 + Index * 3000;
		const std::string Name =
			FString::Printf(TEXT("Sub%d/p%d.%s"), Index % 3, Index, Index % 4 == 0 ? TEXT("umap") : TEXT("uasset")).ToUtf8();
		Sources[Name] = {Text(Size, 'a' + Index % 7), Text(Size, 'A' + Index % 11)};
	}
	Sources["Sub0/notes.txt"] = {Text(3000, 'n'), Text(3000, 'N')};
	for (const auto& [Name, Variants] : Sources)
	{
		Dir.WriteFile(TEXT("Cook0/") + FString::FromUtf8(Name), Variants[0]);
		Dir.WriteFile(TEXT("Cook1/") + FString::FromUtf8(Name), Variants[1]);
	}
	const FString Target = Dir / TEXT("Target");

	// A walk of one cook in a process of its own, killed Pause after it said that it started.
	const auto Walk = [&](int32 Variant, std::chrono::microseconds Pause)
	{
		return TestPrograms::KillAfter(
			[&]
			{
				setenv("TESSEL_WALK_FROM", (Dir / FString::Printf(TEXT("Cook%d"), Variant)).ToNative().c_str(), 1);
				setenv("TESSEL_WALK_TO", Target.ToNative().c_str(), 1);
				const std::string Self = FPlatformProcess::ExecutablePath().ToNative();
				execl(Self.c_str(), Self.c_str(), "--gtest_also_run_disabled_tests",
					  "--gtest_filter=CompressCookedFilesTests.DISABLED_WalkUntilKilled", static_cast<char*>(nullptr));
			},
			"walk-started\n", Pause);
	};
	const auto Ended = [](const TestPrograms::FKilledChild& Run) { return Run.Said.find("walk-ended\n") != std::string::npos; };

	// One whole walk first, to learn how long one takes.
	const TestPrograms::FKilledChild Whole = Walk(0, std::chrono::hours(1));
	ASSERT_TRUE(Whole.bExitedCleanly && Ended(Whole)) << Whole.Said;
	const auto WalkTime = Whole.RanAfterReady;

	std::mt19937 Random(4242);
	int32 KillsInsideAWalk = 0;
	int32 Rounds = 0;
	while (KillsInsideAWalk < 200 && Rounds < 1000)
	{
		const TestPrograms::FKilledChild Run =
			Walk(Rounds++ % 2, std::chrono::microseconds(Random() % std::max<int64_t>(1, WalkTime.count())));
		ASSERT_TRUE(Run.bKilled || (Run.bExitedCleanly && Ended(Run))) << Run.Said;
		KillsInsideAWalk += Ended(Run) ? 0 : 1;

		// Every file under its final name is whole: a ".z" decodes to one cook's bytes, a copy is one cook's
		// file, and a size file stands beside its ".z" and says its size.
		for (const auto& [Name, Found] : FTempDirectory::ReadTree(Target))
		{
			const std::string Base = std::filesystem::path(Name).filename().string();
			if (Base == "SaveCompressed.tmp" || Base.starts_with("."))
			{
				continue; // temporaries of killed writers
			}
			const std::string Source = Name.substr(0, Name.find(".z"));
			const auto& Variants = Sources.at(Source);
			if (Name.ends_with(".z.uncompressed_size"))
			{
				ASSERT_TRUE(std::filesystem::exists((Target / FString::FromUtf8(Source + ".z")).ToNative())) << Name;
				ASSERT_EQ(Found, std::to_string(Variants[0].size()) + "\r\n") << Name;
			}
			else
			{
				const std::string Bytes =
					Name.ends_with(".z") ? Unpack(Target / FString::FromUtf8(Name), static_cast<int64>(Variants[0].size())) : Found;
				ASSERT_FALSE(HasFailure()) << Name << " after round " << Rounds;
				ASSERT_TRUE(Bytes == Variants[0] || Bytes == Variants[1]) << Name << " after round " << Rounds;
			}
		}
	}
	std::cout << "walks: " << Rounds << ", killed inside the walk: " << KillsInsideAWalk << ", one walk: " << WalkTime.count() / 1000
			  << " ms" << std::endl;
	EXPECT_GE(KillsInsideAWalk, 200);
#endif
}

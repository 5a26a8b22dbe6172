#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "Misc/FileHelper.h"
#include "TempDirectory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#ifdef _WIN32
#include "Windows/WindowsApi.h"
#else
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace
{
	TArray<FString> Sorted(TArray<FString> Names)
	{
		Names.Sort();
		return Names;
	}

	void WriteThroughArchive(const FString& Path, const std::string& Bytes)
	{
		TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*Path));
		ASSERT_TRUE(Writer);
		Writer->Serialize(const_cast<char*>(Bytes.data()), static_cast<int64>(Bytes.size()));
		EXPECT_TRUE(Writer->Close());
	}
}

TEST(FileTests, FindFilesListsBareNamesByWildcardWithoutDescending)
{
	FTempDirectory Dir;
	Dir.WriteFile(TEXT("Mods/Alpha/A.UMAP"), "");
	Dir.WriteFile(TEXT("Mods/Alpha/b.umap"), "");
	Dir.WriteFile(TEXT("Mods/Alpha/c.umap.txt"), "");
	Dir.WriteFile(TEXT("Mods/Alpha/Sub/deep.umap"), "");
#ifdef _WIN32
	const FString Odd = TEXT("Île 'quoted' ~ ÿ"); // Windows forbids the double quote in a name
#else
	const FString Odd = TEXT("Île \"quoted\"");
#endif
	Dir.WriteFile(TEXT("Mods/") + Odd + TEXT("/x.uasset"), "");
	Dir.WriteFile(TEXT("Mods/loose.txt"), "");

	TArray<FString> Found;
	IFileManager::Get().FindFiles(Found, *(Dir / TEXT("Mods/*")), false, true);
	EXPECT_EQ(Sorted(Found), (TArray<FString>{TEXT("Alpha"), Odd}));

	Found.Reset();
	IFileManager::Get().FindFiles(Found, *(Dir / TEXT("Mods/Alpha/*.umap")), true, false);
	EXPECT_EQ(Sorted(Found), (TArray<FString>{TEXT("A.UMAP"), TEXT("b.umap")}));

	Found.Reset();
	IFileManager::Get().FindFiles(Found, *(Dir / TEXT("Mods/Alpha/?.*")), true, true);
	EXPECT_EQ(Sorted(Found), (TArray<FString>{TEXT("A.UMAP"), TEXT("b.umap"), TEXT("c.umap.txt")}));

	// Results are appended, and an absent folder adds nothing.
	IFileManager::Get().FindFiles(Found, *(Dir / TEXT("Nowhere/*")), true, true);
	EXPECT_EQ(Found.Num(), 3);
	// A file where a folder is expected lists as nothing.
	Found.Reset();
	IFileManager::Get().FindFiles(Found, *(Dir / TEXT("Mods/loose.txt/*")), true, true);
	EXPECT_EQ(Found.Num(), 0);
}

TEST(FileTests, WriterReplacesTheFileOnlyWhenItCloses)
{
	FTempDirectory Dir;
	const FString Path = Dir.WriteFile(TEXT("Saved/Mods.db"), "old contents");
#ifndef _WIN32
	chmod(Path.ToUtf8().c_str(), 0640);
#endif

	TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*Path));
	ASSERT_TRUE(Writer);
	std::string Big(200000, 'n');
	Writer->Serialize(Big.data(), static_cast<int64>(Big.size()));
	EXPECT_EQ(Writer->Tell(), 200000);
	EXPECT_EQ(FTempDirectory::ReadBytes(Path), "old contents");
	EXPECT_TRUE(Writer->Close());
	EXPECT_EQ(FTempDirectory::ReadBytes(Path), Big);

#ifndef _WIN32
	struct stat Info;
	ASSERT_EQ(stat(Path.ToUtf8().c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0640u);
#endif

	// No temporary is left beside it.
	TArray<FString> Left;
	IFileManager::Get().FindFiles(Left, *(Dir / TEXT("Saved/*")), true, true);
	EXPECT_EQ(Left, (TArray<FString>{TEXT("Mods.db")}));
}

TEST(FileTests, WriterKilledBeforeCloseLeavesTheOldFileWhole)
{
#ifdef _WIN32
	GTEST_SKIP() << "needs fork to end a writer halfway through";
#else
	FTempDirectory Dir;
	const FString Path = Dir.WriteFile(TEXT("Mods.db"), "the old file");
	const pid_t Child = fork();
	ASSERT_GE(Child, 0);
	if (Child == 0)
	{
		FArchive* Writer = IFileManager::Get().CreateFileWriter(*Path);
		if (!Writer)
		{
			_exit(2);
		}
		std::string Half(1 << 20, 'x');
		Writer->Serialize(Half.data(), static_cast<int64>(Half.size()));
		Writer->Flush();
		_exit(Writer->IsError() ? 3 : 0); // dies without closing
	}
	int Status = 0;
	ASSERT_EQ(waitpid(Child, &Status, 0), Child);
	ASSERT_TRUE(WIFEXITED(Status) && WEXITSTATUS(Status) == 0) << "the child didn't write: " << Status;
	EXPECT_EQ(FTempDirectory::ReadBytes(Path), "the old file");
	// What the child wrote is in the temporary it left, not in the file.
	TArray<FString> Left;
	IFileManager::Get().FindFiles(Left, *(Dir / TEXT(".Mods.db.tmp*")), true, false);
	ASSERT_EQ(Left.Num(), 1);
	EXPECT_EQ(IFileManager::Get().FileSize(*(Dir / Left[0])), int64(1) << 20);
#endif
}

#ifndef _WIN32
namespace
{
	// Runs Body in a child and returns its exit code, or -1 when it didn't exit by itself. Body returns 0 when
	// every check it made held.
	template <typename FBody>
	int RunInChild(FBody Body)
	{
		const pid_t Child = fork();
		if (Child == 0)
		{
			_exit(Body());
		}
		int Status = 0;
		if (Child < 0 || waitpid(Child, &Status, 0) != Child || !WIFEXITED(Status))
		{
			return -1;
		}
		return WEXITSTATUS(Status);
	}

	// Files bigger than Bytes can't be written, as on a full disk; writes past it fail instead of killing us.
	void LimitFileSize(rlim_t Bytes)
	{
		signal(SIGXFSZ, SIG_IGN);
		const rlimit Limit{Bytes, Bytes};
		setrlimit(RLIMIT_FSIZE, &Limit);
	}

	int WriteAndClose(const FString& Path, const std::string& Bytes)
	{
		TUniquePtr<FArchive> Writer(IFileManager::Get().CreateFileWriter(*Path));
		if (!Writer)
		{
			return 10;
		}
		Writer->Serialize(const_cast<char*>(Bytes.data()), static_cast<int64>(Bytes.size()));
		return Writer->Close() ? 0 : 11;
	}
}
#endif

TEST(FileTests, WriterThroughALinkUpdatesTheTargetAndKeepsTheLink)
{
#ifdef _WIN32
	GTEST_SKIP() << "symbolic links need a privilege on Windows that the tool never asks for";
#else
	FTempDirectory Dir;
	const FString Real = Dir.WriteFile(TEXT("Elsewhere/real.db"), "old");
	chmod(Real.ToUtf8().c_str(), 0604);
	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*(Dir / TEXT("Saved")));
	const std::string Link = (Dir / TEXT("Saved/Mods.db")).ToUtf8();
	ASSERT_EQ(symlink("../Elsewhere/real.db", Link.c_str()), 0);

	WriteThroughArchive(Dir / TEXT("Saved/Mods.db"), "new contents");
	struct stat Info;
	ASSERT_EQ(lstat(Link.c_str(), &Info), 0);
	EXPECT_TRUE(S_ISLNK(Info.st_mode)) << "the link was replaced by a file";
	EXPECT_EQ(FTempDirectory::ReadBytes(Real), "new contents");
	ASSERT_EQ(stat(Real.ToUtf8().c_str(), &Info), 0);
	EXPECT_EQ(Info.st_mode & 0777, 0604u);

	// A link whose target doesn't exist yet makes the target.
	const std::string Dangling = (Dir / TEXT("Saved/Later.db")).ToUtf8();
	ASSERT_EQ(symlink((Dir / TEXT("Elsewhere/later.db")).ToUtf8().c_str(), Dangling.c_str()), 0);
	WriteThroughArchive(Dir / TEXT("Saved/Later.db"), "made");
	EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("Elsewhere/later.db")), "made");
	ASSERT_EQ(lstat(Dangling.c_str(), &Info), 0);
	EXPECT_TRUE(S_ISLNK(Info.st_mode));
#endif
}

TEST(FileTests, WriterOnAFullDiskLeavesTheOldFile)
{
#ifdef _WIN32
	GTEST_SKIP() << "fills the disk by a POSIX file size limit in a forked child";
#else
	FTempDirectory Dir;
	const FString Path = Dir.WriteFile(TEXT("Saved/Mods.db"), "the old file");
	const std::string Big(1 << 20, 'b');
	const int Code = RunInChild([&] {
		LimitFileSize(64 * 1024);
		return WriteAndClose(Path, Big);
	});
	EXPECT_EQ(Code, 11) << "the writer must report the failed write at its close";
	EXPECT_EQ(FTempDirectory::ReadBytes(Path), "the old file");
	TArray<FString> Left;
	IFileManager::Get().FindFiles(Left, *(Dir / TEXT("Saved/*")), true, true);
	EXPECT_EQ(Left, (TArray<FString>{TEXT("Mods.db")})) << "a failed write leaves no temporary";
#endif
}

TEST(FileTests, WriterInAFolderThatTakesNoNewFilesWritesTheFileInPlace)
{
#ifdef _WIN32
	GTEST_SKIP() << "folder permissions are POSIX modes here";
#else
	FTempDirectory Dir;
	const FString Path = Dir.WriteFile(TEXT("Saved/Mods.db"), "the old file, long enough to be cut short");
	chmod(Dir.Get().ToUtf8().c_str(), 0755);
	chmod(Path.ToUtf8().c_str(), 0666);
	chmod((Dir / TEXT("Saved")).ToUtf8().c_str(), 0555);
	// Root writes any folder, so the case is made by a child that gives up root.
	const auto AsNobody = [](auto Body) {
		return [Body] {
			if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
			{
				return 20;
			}
			return Body();
		};
	};

	const int Shorter = RunInChild(AsNobody([&] { return WriteAndClose(Path, "shorter"); }));
	EXPECT_EQ(Shorter, 0);
	EXPECT_EQ(FTempDirectory::ReadBytes(Path), "shorter");

	const std::string Longer(100000, 'L');
	const int NoRoom = RunInChild(AsNobody([&] {
		LimitFileSize(50000);
		return WriteAndClose(Path, Longer);
	}));
	EXPECT_EQ(NoRoom, 11);
	EXPECT_EQ(FTempDirectory::ReadBytes(Path), "shorter") << "no room: the old bytes must all stay";

	const int Longest = RunInChild(AsNobody([&] { return WriteAndClose(Path, Longer); }));
	EXPECT_EQ(Longest, 0);
	EXPECT_EQ(FTempDirectory::ReadBytes(Path), Longer);

	TArray<FString> Left;
	IFileManager::Get().FindFiles(Left, *(Dir / TEXT("Saved/*")), true, true);
	EXPECT_EQ(Left, (TArray<FString>{TEXT("Mods.db")}));
	chmod((Dir / TEXT("Saved")).ToUtf8().c_str(), 0755);
#endif
}

TEST(FileTests, WriterMakesMissingFoldersAndRefusesAFolder)
{
	FTempDirectory Dir;
	WriteThroughArchive(Dir / TEXT("a/b/c/file.bin"), "xyz");
	EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("a/b/c/file.bin")), "xyz");
	EXPECT_EQ(IFileManager::Get().CreateFileWriter(*(Dir / TEXT("a/b"))), nullptr);
	EXPECT_EQ(IFileManager::Get().CreateFileReader(*(Dir / TEXT("a/b"))), nullptr);
	EXPECT_EQ(IFileManager::Get().CreateFileReader(*(Dir / TEXT("absent"))), nullptr);
}

TEST(FileTests, ReaderSeeksAndReportsReadsPastTheEnd)
{
	FTempDirectory Dir;
	std::string Bytes;
	for (int Index = 0; Index < 100000; ++Index)
	{
		Bytes += static_cast<char>(Index * 7);
	}
	const FString Path = Dir.WriteFile(TEXT("data.bin"), Bytes);
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path));
	ASSERT_TRUE(Reader);
	EXPECT_TRUE(Reader->IsLoading());
	EXPECT_EQ(Reader->TotalSize(), 100000);

	Reader->Seek(99990);
	uint8 Tail[10];
	Reader->Serialize(Tail, 10);
	EXPECT_EQ(Tail[9], static_cast<uint8>(99999 * 7));
	EXPECT_TRUE(Reader->AtEnd());
	EXPECT_FALSE(Reader->IsError());

	Reader->Seek(1);
	int32 Word = 0;
	*Reader << Word;
	EXPECT_EQ(Word, static_cast<int32>(0x1C150E07)); // bytes 7, 14, 21, 28 little-endian
	EXPECT_EQ(Reader->Tell(), 5);

	Reader->Seek(99999);
	uint8 Past[4] = {9, 9, 9, 9};
	Reader->Serialize(Past, 4);
	EXPECT_TRUE(Reader->IsError());
	EXPECT_EQ(Past[0], static_cast<uint8>(99999 * 7));
	EXPECT_EQ(Past[1], 0);
}

TEST(FileTests, LoadFileToStringDetectsEncodings)
{
	FTempDirectory Dir;
	FString Text;
	ASSERT_TRUE(FFileHelper::LoadFileToString(Text, *Dir.WriteFile(TEXT("le.txt"), std::string("\xFF\xFE" "A\0\xE9\0", 6))));
	EXPECT_EQ(Text, FString(TEXT("Aé")));
	ASSERT_TRUE(FFileHelper::LoadFileToString(Text, *Dir.WriteFile(TEXT("be.txt"), std::string("\xFE\xFF\0A\x04\x16", 6))));
	EXPECT_EQ(Text, FString(TEXT("AЖ")));
	ASSERT_TRUE(FFileHelper::LoadFileToString(Text, *Dir.WriteFile(TEXT("u8.txt"), "\xEF\xBB\xBFZ\xC3\xA9")));
	EXPECT_EQ(Text, FString(TEXT("Zé")));
	ASSERT_TRUE(FFileHelper::LoadFileToString(Text, *Dir.WriteFile(TEXT("plain.txt"), "Z\xC3\xA9")));
	EXPECT_EQ(Text, FString(TEXT("Zé")));
	// Bytes that are no UTF-8 are taken one unit each.
	ASSERT_TRUE(FFileHelper::LoadFileToString(Text, *Dir.WriteFile(TEXT("latin.txt"), "caf\xE9")));
	EXPECT_EQ(Text, FString(TEXT("café")));
	EXPECT_FALSE(FFileHelper::LoadFileToString(Text, *(Dir / TEXT("missing.txt"))));
}

TEST(FileTests, SaveStringToFileChoosesEightBitOrUtf16)
{
	FTempDirectory Dir;
	ASSERT_TRUE(FFileHelper::SaveStringToFile(TEXT("1234\r\n"), *(Dir / TEXT("size.txt"))));
	EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("size.txt")), "1234\r\n");
	ASSERT_TRUE(FFileHelper::SaveStringToFile(TEXT("é\x7F"), *(Dir / TEXT("wide.txt"))));
	EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("wide.txt")), std::string("\xFF\xFE\xE9\0\x7F\0", 6));
	ASSERT_TRUE(FFileHelper::SaveStringToFile(FString(), *(Dir / TEXT("empty.txt"))));
	EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("empty.txt")), "");

	FString Back;
	ASSERT_TRUE(FFileHelper::LoadFileToString(Back, *(Dir / TEXT("wide.txt"))));
	EXPECT_EQ(Back, FString(TEXT("é\x7F")));
}

TEST(FileTests, CopyMoveAndDelete)
{
	FTempDirectory Dir;
	IFileManager& Files = IFileManager::Get();
	IPlatformFile& Platform = FPlatformFileManager::Get().GetPlatformFile();
	const FString Source = Dir.WriteFile(TEXT("src/a.bin"), std::string(300000, 'a'));
	Dir.WriteFile(TEXT("dst/a.bin"), "old");

	EXPECT_EQ(Files.Copy(*(Dir / TEXT("dst/a.bin")), *Source, false), static_cast<uint32>(COPY_Fail));
	EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("dst/a.bin")), "old");
	EXPECT_EQ(Files.Copy(*(Dir / TEXT("dst/a.bin")), *Source), static_cast<uint32>(COPY_OK));
	EXPECT_EQ(FTempDirectory::ReadBytes(Dir / TEXT("dst/a.bin")), std::string(300000, 'a'));
	EXPECT_TRUE(Platform.CopyFile(*(Dir / TEXT("new/deep/b.bin")), *Source));
	EXPECT_FALSE(Platform.CopyFile(*(Dir / TEXT("c.bin")), *(Dir / TEXT("src"))));

	EXPECT_TRUE(Files.Move(*(Dir / TEXT("moved/a.bin")), *Source));
	EXPECT_FALSE(Platform.FileExists(*Source));
	EXPECT_TRUE(Platform.FileExists(*(Dir / TEXT("moved/a.bin"))));

	EXPECT_TRUE(Files.Delete(*(Dir / TEXT("moved/a.bin"))));
	EXPECT_TRUE(Files.Delete(*(Dir / TEXT("moved/a.bin"))));  // absent is fine by default
	EXPECT_FALSE(Files.Delete(*(Dir / TEXT("moved/a.bin")), true));
	EXPECT_FALSE(Platform.DeleteFile(*(Dir / TEXT("moved/a.bin"))));

	EXPECT_FALSE(Files.DeleteDirectory(*(Dir / TEXT("new")), false, false)); // not empty
	EXPECT_TRUE(Files.DeleteDirectory(*(Dir / TEXT("new")), false, true));
	EXPECT_FALSE(Platform.DirectoryExists(*(Dir / TEXT("new"))));
	EXPECT_TRUE(Files.DeleteDirectory(*(Dir / TEXT("new")), false, true));
	EXPECT_FALSE(Files.DeleteDirectory(*(Dir / TEXT("new")), true, true));
}

// A read-only file in the way is replaced on every system, as POSIX replaces it. On Windows a file that
// another program holds for a moment (here a tenth of a second, well inside the two seconds a move keeps
// trying) is replaced once it lets go, by a move and by a writer's commit; one held for good fails and loses
// nothing.
TEST(FileTests, MoveReplacesReadOnlyAndBrieflyHeldFiles)
{
	FTempDirectory Dir;
	IFileManager& Files = IFileManager::Get();
	const FString Target = Dir.WriteFile(TEXT("out/a.z"), "old");
#ifdef _WIN32
	ASSERT_TRUE(SetFileAttributesW(WindowsApi::Wide(*Target), FILE_ATTRIBUTE_READONLY));
#else
	ASSERT_EQ(chmod(Target.ToUtf8().c_str(), 0444), 0);
#endif
	EXPECT_TRUE(Files.Move(*Target, *Dir.WriteFile(TEXT("tmp/one.tmp"), "new")));
	EXPECT_EQ(FTempDirectory::ReadBytes(Target), "new");
	EXPECT_FALSE(FPaths::FileExists(Dir / TEXT("tmp/one.tmp")));
#ifdef _WIN32
	// Held without leave to delete, as a scanner holds a file it reads.
	const auto Hold = [&Target]()
	{ return CreateFileW(WindowsApi::Wide(*Target), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr); };
	const auto LetGoLater = [](HANDLE Held)
	{
		return std::thread([Held]()
						   {
							   std::this_thread::sleep_for(std::chrono::milliseconds(100));
							   CloseHandle(Held);
						   });
	};
	HANDLE Held = Hold();
	ASSERT_NE(Held, INVALID_HANDLE_VALUE);
	std::thread Release = LetGoLater(Held);
	EXPECT_TRUE(Files.Move(*Target, *Dir.WriteFile(TEXT("tmp/two.tmp"), "newer")));
	Release.join();
	EXPECT_EQ(FTempDirectory::ReadBytes(Target), "newer");

	Held = Hold();
	ASSERT_NE(Held, INVALID_HANDLE_VALUE);
	Release = LetGoLater(Held);
	WriteThroughArchive(Target, "written");
	Release.join();
	EXPECT_EQ(FTempDirectory::ReadBytes(Target), "written");

	Held = Hold();
	ASSERT_NE(Held, INVALID_HANDLE_VALUE);
	const FString Kept = Dir.WriteFile(TEXT("tmp/three.tmp"), "kept");
	EXPECT_FALSE(Files.Move(*Target, *Kept));
	CloseHandle(Held);
	EXPECT_EQ(FTempDirectory::ReadBytes(Kept), "kept");
	EXPECT_EQ(FTempDirectory::ReadBytes(Target), "written");
#endif
}

TEST(FileTests, RecursiveWalkVisitsFoldersBeforeTheirContentsAndStopsOnRequest)
{
	FTempDirectory Dir;
	Dir.WriteFile(TEXT("root/a/b/c.uasset"), "");
	Dir.WriteFile(TEXT("root/a/d.umap"), "");
	Dir.WriteFile(TEXT("root/e.txt"), "");
	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*(Dir / TEXT("root/empty")));
#ifndef _WIN32
	// A link back to the top, which the walk must report but not enter.
	symlink((Dir / TEXT("root")).ToUtf8().c_str(), (Dir / TEXT("root/a/loop")).ToUtf8().c_str());
	const bool bLoop = true;
#else
	const bool bLoop = false; // links need a privilege on Windows that the tool never asks for
#endif

	const FString Root = Dir / TEXT("root");
	TArray<FString> Seen;
	TArray<FString> Folders;
	const bool bDone = FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(
		*Root,
		[&](const TCHAR* Path, bool bIsDirectory)
		{
			const FString Relative = FString(Path).Mid(Root.Len() + 1);
			Seen.Add(Relative);
			if (bIsDirectory)
			{
				Folders.Add(Relative);
			}
			EXPECT_TRUE(FString(Path).StartsWith(Root));
			return true;
		});
	EXPECT_TRUE(bDone);
	TArray<FString> ExpectedSeen{TEXT("a"), TEXT("a/b"), TEXT("a/b/c.uasset"), TEXT("a/d.umap"), TEXT("e.txt"), TEXT("empty")};
	TArray<FString> ExpectedFolders{TEXT("a"), TEXT("a/b"), TEXT("empty")};
	if (bLoop)
	{
		ExpectedSeen.Add(TEXT("a/loop"));
		ExpectedFolders.Add(TEXT("a/loop"));
	}
	EXPECT_EQ(Sorted(Seen), Sorted(ExpectedSeen));
	EXPECT_EQ(Sorted(Folders), Sorted(ExpectedFolders));
	EXPECT_LT(Seen.Find(TEXT("a")), Seen.Find(TEXT("a/b")));
	EXPECT_LT(Seen.Find(TEXT("a/b")), Seen.Find(TEXT("a/b/c.uasset")));

	int32 Visits = 0;
	const bool bStopped = !FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(
		*Root, [&](const TCHAR*, bool) { return ++Visits < 2; });
	EXPECT_TRUE(bStopped);
	EXPECT_EQ(Visits, 2);
}

// Deep kit folders make paths longer than Windows' classic limit of 260 units; every operation takes them.
TEST(FileTests, PathsLongerThanTheClassicWindowsLimitWork)
{
	FTempDirectory Dir;
	FString Deep = Dir.Get();
	for (int32 Level = 0; Level < 8; ++Level)
	{
		Deep = Deep / FString(std::u16string(40, static_cast<char16_t>(u'a' + Level)));
	}
	ASSERT_GT(Deep.Len(), 330);
	IPlatformFile& Platform = FPlatformFileManager::Get().GetPlatformFile();
	ASSERT_TRUE(Platform.CreateDirectoryTree(*Deep));
	EXPECT_TRUE(Platform.DirectoryExists(*Deep));

	const FString File = Deep / TEXT("Map.umap");
	ASSERT_TRUE(FFileHelper::SaveStringToFile(TEXT("contents"), *File));
	FString Read;
	EXPECT_TRUE(FFileHelper::LoadFileToString(Read, *File));
	EXPECT_EQ(Read, TEXT("contents"));
	EXPECT_EQ(Platform.FileSize(*File), 8);

	TArray<FString> Found;
	IFileManager::Get().FindFiles(Found, *(Deep / TEXT("*.umap")), true, false);
	EXPECT_EQ(Found, (TArray<FString>{TEXT("Map.umap")}));
	EXPECT_TRUE(Platform.CopyFile(*(Deep / TEXT("Copy.umap")), *File));
	EXPECT_TRUE(IFileManager::Get().Move(*(Deep / TEXT("Moved.umap")), *File));
	EXPECT_FALSE(Platform.FileExists(*File));

	int32 Visited = 0;
	EXPECT_TRUE(Platform.IterateDirectoryRecursively(*Dir.Get(), [&](const TCHAR*, bool) { return ++Visited > 0; }));
	EXPECT_EQ(Visited, 8 + 2);
	EXPECT_TRUE(Platform.DeleteDirectoryRecursively(*(Dir / FString(std::u16string(40, u'a')))));
	EXPECT_FALSE(Platform.DirectoryExists(*Deep));
}

TEST(FileTests, NamesWindowsForbidsFailCleanlyAndLeaveNothingBehind)
{
#ifndef _WIN32
	GTEST_SKIP() << "POSIX file systems take every name without a slash or a zero";
#else
	FTempDirectory Dir;
	const FString Good = Dir.WriteFile(TEXT("good.txt"), "kept");
	for (const TCHAR* Name : {TEXT("a<b.txt"), TEXT("what?.txt"), TEXT("pipe|.txt"), TEXT("star*.umap")})
	{
		const FString Bad = Dir / Name;
		EXPECT_EQ(IFileManager::Get().CreateFileWriter(*Bad), nullptr) << Bad;
		EXPECT_EQ(IFileManager::Get().Copy(*Bad, *Good), static_cast<uint32>(COPY_Fail)) << Bad;
		EXPECT_FALSE(FFileHelper::SaveStringToFile(TEXT("x"), *Bad)) << Bad;
		EXPECT_FALSE(FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*(Bad / TEXT("sub")))) << Bad;
	}
	TArray<FString> Left;
	IFileManager::Get().FindFiles(Left, *(Dir / TEXT("*")), true, true);
	EXPECT_EQ(Left, (TArray<FString>{TEXT("good.txt")})) << "a temporary or a part was left behind";
	EXPECT_EQ(FTempDirectory::ReadBytes(Good), "kept");
#endif
}

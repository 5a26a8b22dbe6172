// The README's main command, as a newcomer runs it, on a fresh copy of the kit in a temporary folder: the kit is
// prepared, the catalogue listed, "Islands" cooked and packaged for both targets in the tool's window, published
// through the stand-in programs, and pictures of the window saved. Every result is checked for real, so that a
// broken demo fails here first.

#include <QImage>
#include <QSet>

#include "CoreMinimal.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "TempDirectory.h"
#include "TestPaths.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/wait.h>

namespace
{
	struct FRun
	{
		int ExitCode = -1;
		std::string Output;
	};

	// Runs the demo with its output captured, and its window settings kept in the temporary folder.
	FRun RunDemo(const FTempDirectory& Work)
	{
		const std::string Dir = Work.Get().ToUtf8();
		const std::string Command = "cd '" + std::string(TestPaths::SourceDir) + "' && env -u DISPLAY -u WAYLAND_DISPLAY -u STEAM_USERNAME "
									"-u STEAM_PASSWORD XDG_CONFIG_HOME='" + Dir +
									"/config' bash Tools/run-demo.sh '" + TestPaths::BuildDir + "' '" + Dir + "/DemoKit' '" + Dir +
									"/demo.png' 2>&1";
		FRun Run;
		FILE* Pipe = popen(Command.c_str(), "r");
		if (!Pipe)
		{
			return Run;
		}
		char Buffer[4096];
		size_t Read = 0;
		while ((Read = fread(Buffer, 1, sizeof(Buffer), Pipe)) > 0)
		{
			Run.Output.append(Buffer, Read);
		}
		const int Status = pclose(Pipe);
		Run.ExitCode = WIFEXITED(Status) ? WEXITSTATUS(Status) : -1;
		return Run;
	}

	// Whether any file below Root holds Needle, as UTF-8 or as UTF-16 little-endian text.
	bool AnyFileHolds(const FString& Root, const std::string& Needle)
	{
		std::string Wide;
		for (char Byte : Needle)
		{
			Wide += Byte;
			Wide += '\0';
		}
		for (const auto& Entry : std::filesystem::recursive_directory_iterator(Root.ToUtf8()))
		{
			if (Entry.is_regular_file())
			{
				const std::string Bytes = FTempDirectory::ReadBytes(FString::FromUtf8(Entry.path().string()));
				if (Bytes.find(Needle) != std::string::npos || Bytes.find(Wide) != std::string::npos)
				{
					return true;
				}
			}
		}
		return false;
	}

	bool IsDrawnWindow(const FString& Path)
	{
		QImage Picture;
		if (!Picture.load(QString::fromStdU16String(Path.GetStd())) || Picture.width() < 800)
		{
			return false;
		}
		QSet<QRgb> Colours;
		for (int Y = 0; Y < Picture.height(); Y += 3)
		{
			for (int X = 0; X < Picture.width(); X += 3)
			{
				Colours.insert(Picture.pixel(X, Y));
			}
		}
		return Colours.size() > 20;
	}

	int64 SizeFileValue(const FString& Path)
	{
		const std::string Text = FTempDirectory::ReadBytes(Path);
		return Text.empty() ? -1 : std::stoll(Text);
	}
}

TEST(DemoTests, TheMainCommandCooksPackagesPublishesAndPicturesIslands)
{
	FTempDirectory Work;
	const FRun Run = RunDemo(Work);
	ASSERT_EQ(Run.ExitCode, 0) << Run.Output;

	// What the author reads: the catalogue, the log of the cook and its result.
	EXPECT_NE(Run.Output.find("Islands  maps: Alpha,Beta"), std::string::npos) << Run.Output;
	EXPECT_NE(Run.Output.find("SkyLanterns  maps: Festival"), std::string::npos);
	EXPECT_NE(Run.Output.find("Cook target platform WindowsServer for mod Islands"), std::string::npos);
	EXPECT_NE(Run.Output.find("Quillon Dev Kit: Job Successful!!"), std::string::npos);
	// A log a person can read: tens of lines, not hundreds.
	const size_t Lines = static_cast<size_t>(std::count(Run.Output.begin(), Run.Output.end(), '\n'));
	EXPECT_LT(Lines, 120u) << Run.Output;

	// Every ".z" of both targets decodes with our loader to the size its size file gives.
	const FString Output = Work / TEXT("DemoKit/ModTools/Output/Islands");
	for (const TCHAR* Target : {TEXT("WindowsNoEditor"), TEXT("WindowsServer")})
	{
		SCOPED_TRACE(FString(Target).ToUtf8());
		int32 Packages = 0;
		for (const auto& Entry : std::filesystem::recursive_directory_iterator((Output / Target).ToUtf8()))
		{
			const FString Path = FString::FromUtf8(Entry.path().string());
			if (!Path.EndsWith(TEXT(".z")))
			{
				continue;
			}
			++Packages;
			const int64 Size = SizeFileValue(Path + TEXT(".uncompressed_size"));
			ASSERT_GT(Size, 0) << Path.ToUtf8();
			TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path));
			ASSERT_TRUE(Reader) << Path.ToUtf8();
			std::string Bytes(static_cast<size_t>(Size), '\0');
			Reader->SerializeCompressed(Bytes.data(), Size, COMPRESS_ZLIB);
			EXPECT_FALSE(Reader->IsError()) << Path.ToUtf8();
			EXPECT_TRUE(Reader->AtEnd()) << Path.ToUtf8();
			EXPECT_NE(Bytes.find("placeholder"), std::string::npos) << Path.ToUtf8();
		}
		EXPECT_EQ(Packages, 3); // Alpha.umap, Beta.umap and Props/Crate.uasset
		EXPECT_TRUE(FPaths::FileExists(Output / Target / TEXT("mod.info")));
		EXPECT_FALSE(FPaths::DirectoryExists(Output / Target / TEXT("123456789"))); // the staging tree is gone
	}
	EXPECT_TRUE(FPaths::FileExists(Output / TEXT("mod.info")));
	EXPECT_TRUE(FPaths::FileExists(Output / TEXT("modmeta.info")));

	// Published through the dialog route: the item file names the new item, the preview was copied beside the
	// packaged tree, the id reached Mods.db when the tool closed, and the password stands in no file.
	EXPECT_NE(Run.Output.find("Steam Authentication: signed in as demo-author"), std::string::npos);
	EXPECT_NE(Run.Output.find("Published: https://steamcommunity.com/sharedfiles/filedetails/?id=2900000001"), std::string::npos)
		<< Run.Output;
	const std::string ItemFile = FTempDirectory::ReadBytes(Work / TEXT("DemoKit/ModTools/ModConfigs/Islands.vdf"));
	EXPECT_NE(ItemFile.find("\"publishedfileid\""), std::string::npos) << ItemFile;
	EXPECT_NE(ItemFile.find("\"2900000001\""), std::string::npos) << ItemFile;
	EXPECT_EQ(FTempDirectory::ReadBytes(Output / TEXT("preview.jpg")), FTempDirectory::ReadBytes(Work / TEXT("DemoKit/Previews/Islands.png")));
	const FString Database = Work / TEXT("DemoKit/Orrery/Saved/Mods.db");
	EXPECT_TRUE(AnyFileHolds(FPaths::GetPath(Database), "\"ItemSeamId\": \"2900000001\""));
	EXPECT_FALSE(AnyFileHolds(Work.Get(), "demo-password"));
	EXPECT_EQ(Run.Output.find("demo-password"), std::string::npos);

	// Both pictures exist and show a drawn window, not an empty one.
	EXPECT_TRUE(IsDrawnWindow(Work / TEXT("demo.png")));
	EXPECT_TRUE(IsDrawnWindow(Work / TEXT("demo-published.png")));
}

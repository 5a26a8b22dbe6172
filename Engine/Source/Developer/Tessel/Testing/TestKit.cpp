#include "TestKit.h"

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include "Windows/WindowsApi.h"
#else
#include <sys/stat.h>
#endif

FTestKit::FTestKit()
{
	Dir.WriteFile(TEXT("Orrery/Orrery.uproject"), "{}\n");
	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*(Dir / TEXT("Engine/Binaries/Win64")));
	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*(Dir / TEXT("ModTools")));
	FPaths::SetKitRoot(Dir.Get());
	FPaths::SetBaseDir(Dir / TEXT("Engine/Binaries/Win64"));
}

FTestKit::~FTestKit()
{
	FPaths::SetBaseDir(FString());
}

FString FTestKit::ModsDir() const
{
	return Dir / TEXT("Orrery/Content/Mods");
}

FString FTestKit::AddMod(const FString& Name, std::initializer_list<const TCHAR*> Files) const
{
	const FString Folder = ModsDir() / Name;
	FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*Folder);
	for (const TCHAR* File : Files)
	{
		Dir.WriteFile(FString(TEXT("Orrery/Content/Mods")) / Name / File, "placeholder");
	}
	return Folder;
}

FString FTestKit::AddPackagedMod(const FString& Name) const
{
	const FString Folder = AddMod(Name, {TEXT("Alpha.umap")});
	const FString Output = FString(TEXT("ModTools/Output")) / Name;
	WriteFile(Output / TEXT("mod.info"), "info");
	WriteFile(Output / TEXT("WindowsNoEditor/Alpha.umap.z"), "cooked");
	return Folder;
}

namespace
{
	// Places a program the build made, runnable, as a kit has it. On Windows the libraries it needs go beside
	// it too, as an installed engine and SteamCMD have theirs.
	void InstallProgram(const FString& To, const FString& From)
	{
		IPlatformFile& Files = FPlatformFileManager::Get().GetPlatformFile();
		Files.CreateDirectoryTree(*FPaths::GetPath(To));
		Files.CopyFile(*To, *From);
#ifdef _WIN32
		TArray<FString> Libraries;
		IFileManager::Get().FindFiles(Libraries, *(FPaths::GetPath(From) / TEXT("*.dll")), true, false);
		for (const FString& Library : Libraries)
		{
			// A link where the file system allows one: a kit per test would otherwise copy the libraries each time.
			const FString Link = FPaths::GetPath(To) / Library;
			const FString Original = FPaths::GetPath(From) / Library;
			if (!CreateHardLinkW(WindowsApi::Wide(*Link), WindowsApi::Wide(*Original), nullptr))
			{
				Files.CopyFile(*Link, *Original);
			}
		}
#else
		chmod(To.ToUtf8().c_str(), 0755);
#endif
	}
}

void FTestKit::InstallCookCommandlet() const
{
	InstallProgram(Dir / TEXT("Engine/Binaries/Win64/UE4Editor.exe"),
				   TestPrograms::Path(TEXT("TesselCookCommandlet.exe"), TestPaths::CookCommandlet));
}

void FTestKit::InstallSteamCmd() const
{
	InstallProgram(Dir / TEXT("ModTools/SteamCMD/steamcmd.exe"), TestPrograms::Path(TEXT("TesselSteamCmd.exe"), TestPaths::SteamCmd));
}

void FTestKit::InstallUploader() const
{
	InstallProgram(Dir / TEXT("ModTools/Uploader/QuillonModUploader.exe"),
				   TestPrograms::Path(TEXT("TesselUploader.exe"), TestPaths::Uploader));
}

void FTestKit::InstallWorkshopTemplate() const
{
	FPlatformFileManager::Get().GetPlatformFile().CopyFile(*(Dir / TEXT("ModTools/SteamVDF.template")),
														   *TestPrograms::Path(TEXT("SteamVDF.template"), TestPaths::WorkshopTemplate));
}

std::string ReadGolden(const char* Name)
{
	const FString Path = TestPrograms::Path(*(FString(TEXT("Golden/")) + Name), (std::string(TestPaths::GoldenDir) + "/" + Name).c_str());
	EXPECT_TRUE(FPaths::FileExists(Path)) << "no golden file " << Path.ToUtf8();
	return FTempDirectory::ReadBytes(Path);
}

#include "TestKit.h"

#include "HAL/PlatformFile.h"

#include <sys/stat.h>

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

void FTestKit::InstallCookCommandlet() const
{
	const FString Exe = Dir / TEXT("Engine/Binaries/Win64/UE4Editor.exe");
	FPlatformFileManager::Get().GetPlatformFile().CopyFile(*Exe, TEXT(TESSEL_COOK_COMMANDLET));
	chmod(Exe.ToUtf8().c_str(), 0755);
}

namespace
{
	void InstallProgram(const FString& To, const TCHAR* From)
	{
		FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*FPaths::GetPath(To));
		FPlatformFileManager::Get().GetPlatformFile().CopyFile(*To, From);
		chmod(To.ToUtf8().c_str(), 0755);
	}
}

void FTestKit::InstallSteamCmd() const
{
	InstallProgram(Dir / TEXT("ModTools/SteamCMD/steamcmd.exe"), TEXT(TESSEL_STEAMCMD));
}

void FTestKit::InstallUploader() const
{
	InstallProgram(Dir / TEXT("ModTools/Uploader/QuillonModUploader.exe"), TEXT(TESSEL_UPLOADER));
}

void FTestKit::InstallWorkshopTemplate() const
{
	FPlatformFileManager::Get().GetPlatformFile().CopyFile(*(Dir / TEXT("ModTools/SteamVDF.template")), TEXT(TESSEL_WORKSHOP_TEMPLATE));
}

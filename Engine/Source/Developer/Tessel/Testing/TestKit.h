#pragma once

#include "CoreMinimal.h"
#include "TempDirectory.h"

// A kit laid out in a temporary folder: Engine, the Orrery project with its content and saved folders, and
// ModTools. The engine's paths point at it for the life of the object.
class FTestKit
{
public:
	FTestKit();
	~FTestKit();

	FString Root() const { return Dir.Get(); }
	FString ModsDir() const;
	// Makes a mod folder (and the given files in it, relative to the folder).
	FString AddMod(const FString& Name, std::initializer_list<const TCHAR*> Files = {}) const;
	FString WriteFile(const FString& Relative, const std::string& Bytes) const { return Dir.WriteFile(Relative, Bytes); }
	// Writes Mods.db as the bytes stand (the tool's own are 16-bit JSON text).
	void WriteModDatabase(const std::string& Bytes) const { WriteFile(TEXT("Orrery/Saved/Mods.db"), Bytes); }
	// A mod folder with one map whose cook has already left its packaged tree (a ".z" and mod.info) under
	// ModTools/Output, so that "Upload" can open once the publication fields are filled.
	FString AddPackagedMod(const FString& Name) const;
	// Places the stand-in cook commandlet where the kit's editor executable stands.
	void InstallCookCommandlet() const;
	// Places the stand-in SteamCMD at ModTools/SteamCMD/steamcmd.exe.
	void InstallSteamCmd() const;
	// Places the stand-in uploader at ModTools/Uploader/QuillonModUploader.exe.
	void InstallUploader() const;
	// Copies the demo kit's item template to ModTools/SteamVDF.template.
	void InstallWorkshopTemplate() const;

private:
	FTempDirectory Dir;
};

// The bytes of the expected file Name under Tests/Golden, exactly as stored; a missing file fails the test that
// asked and gives empty bytes.
std::string ReadGolden(const char* Name);

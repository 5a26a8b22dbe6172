#include "UploadChecks.h"

#include "catalogue/ModFields.h"

#include "CommandOutput.h"
#include "CompressedFileInspection.h"

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "TesselSession.h"

#include <cstring>

namespace
{
	FUploadCheck Passed(const TCHAR* Name, const FString& Finding)
	{
		FUploadCheck Check;
		Check.Name = Name;
		Check.bPassed = true;
		Check.Finding = Finding;
		return Check;
	}

	FUploadCheck Failed(const TCHAR* Name, const FString& Finding, const FString& Advice)
	{
		FUploadCheck Check;
		Check.Name = Name;
		Check.Finding = Finding;
		Check.Advice = Advice;
		return Check;
	}

	FString SetAdvice(const FModSetup& Mod, const TCHAR* Field, const TCHAR* Example)
	{
		return FString::Printf(TEXT("set it: TesselCmd set \"%s\" %s=%s"), *Mod.ModDir, Field, Example);
	}

	FUploadCheck CheckText(const FModSetup& Mod, const TCHAR* Name, const FString& Text, int32 Limit, bool bRequired)
	{
		if (Text.IsEmpty() && bRequired)
		{
			return Failed(Name, TEXT("empty, and \"Upload\" needs it"), SetAdvice(Mod, Name, TEXT("...")));
		}
		if (Text.Len() > Limit)
		{
			return Failed(Name, FString::Printf(TEXT("%d characters, more than the Workshop's %d"), Text.Len(), Limit),
						  FString::Printf(TEXT("shorten it to %d characters or fewer"), Limit));
		}
		return Passed(Name, FString::Printf(TEXT("%d of at most %d characters"), Text.Len(), Limit));
	}

	FUploadCheck CheckPreview(const FModSetup& Mod)
	{
		if (Mod.PreviewImage.IsEmpty())
		{
			return Failed(TEXT("preview"), TEXT("no preview image, and \"Upload\" needs one"),
						  SetAdvice(Mod, TEXT("preview"), TEXT("<image.png>")));
		}
		const int64 Size = IFileManager::Get().FileSize(*Mod.PreviewImage);
		if (Size < 0)
		{
			return Failed(TEXT("preview"), FString::Printf(TEXT("%s: no such file"), *Mod.PreviewImage),
						  SetAdvice(Mod, TEXT("preview"), TEXT("<image.png>")));
		}
		if (Size > MaxWorkshopPreviewBytes)
		{
			return Failed(TEXT("preview"),
						  FString::Printf(TEXT("%s: %lld bytes, more than the Workshop's 1 MB"), *Mod.PreviewImage, Size),
						  TEXT("make the picture smaller (at most 1,048,576 bytes)"));
		}
		const FString Format = DetectImageFormat(Mod.PreviewImage);
		if (Format.IsEmpty())
		{
			return Failed(TEXT("preview"), FString::Printf(TEXT("%s: not a PNG, JPEG or GIF picture"), *Mod.PreviewImage),
						  TEXT("save the picture as PNG, JPEG or GIF"));
		}
		return Passed(TEXT("preview"), FString::Printf(TEXT("%s: %s, %lld bytes"), *Mod.PreviewImage, *Format, Size));
	}

	FUploadCheck CheckPackagedTree(const FModSetup& Mod)
	{
		const FString Output = KitPaths::ModOutputDir() / Mod.ModDir;
		const FString CookAdvice = FString::Printf(TEXT("cook it: TesselCmd cook \"%s\""), *Mod.ModDir);
		// The very test of the "Upload" button.
		if (!FPlatformFileManager::Get().GetPlatformFile().FileExists(*(Output / TEXT("mod.info"))))
		{
			return Failed(TEXT("packaged"), FString::Printf(TEXT("%s/mod.info: missing, the mod is not packaged"), *Output),
						  CookAdvice);
		}
		TArray<FString> Packages;
		FPlatformFileManager::Get().GetPlatformFile().IterateDirectoryRecursively(
			*Output,
			[&Packages](const TCHAR* Path, bool bIsDirectory)
			{
				if (!bIsDirectory && FString(Path).EndsWith(TEXT(".z"), ESearchCase::IgnoreCase))
				{
					Packages.Add(Path);
				}
				return true;
			});
		if (Packages.Num() == 0)
		{
			return Failed(TEXT("packaged"), FString::Printf(TEXT("%s: mod.info but no \".z\" package"), *Output), CookAdvice);
		}
		// Every package decodes whole to the size its size file names, so that a disk that filled up or a copy
		// cut short is found before the upload.
		for (const FString& Package : Packages)
		{
			const FCompressedFileReport Report = InspectCompressedFile(Package);
			if (!Report.IsWhole() || !Report.MatchesSizeFile())
			{
				return Failed(TEXT("packaged"), FString::Printf(TEXT("%s: %s"), *Package, *Report.DescribeProblem()), CookAdvice);
			}
		}
		const int32 Count = Packages.Num();
		return Passed(TEXT("packaged"), FString::Printf(TEXT("%s: mod.info and %d whole packages"), *Output, Count));
	}

	FUploadCheck CheckVisibility(const FModSetup& Mod)
	{
		for (const FString& Label : VisibilityLabels())
		{
			if (Label.Equals(Mod.Visibility, ESearchCase::IgnoreCase))
			{
				return Passed(TEXT("visibility"), Label);
			}
		}
		// The item file then says 0, which the Workshop reads as public.
		FUploadCheck Check = Failed(TEXT("visibility"),
									FString::Printf(TEXT("\"%s\" is none of the three; the item goes up as Public"), *Mod.Visibility),
									SetAdvice(Mod, TEXT("visibility"), TEXT("Public|\"Friends Only\"|Hidden")));
		Check.bBlocksPublish = false;
		Check.bBlocksCheck = false;
		return Check;
	}

	// The cook takes the folder as "-ModDir=<name>" on a command line that it splits at blanks.
	FUploadCheck CheckFolderName(const FModSetup& Mod)
	{
		if (!Mod.ModDir.Contains(TEXT(" ")))
		{
			return Passed(TEXT("folder"), Mod.ModDir);
		}
		return Failed(
			TEXT("folder"),
			FString::Printf(TEXT("\"%s\" has a blank, and the cook splits its folder name there, so it can't be cooked"), *Mod.ModDir),
			FString::Printf(TEXT("rename the folder %s to a name without blanks (the title may keep them)"),
							*(KitPaths::ModsContentDir() / Mod.ModDir)));
	}

	// What would end the item file's quoted texts, or the uploader's arguments, early.
	FString TextBreaker(const FString& Text, bool bTitle)
	{
		if (Text.Contains(TEXT("\"")))
		{
			return TEXT("a double quote");
		}
		if (Text.Contains(TEXT("{")) || Text.Contains(TEXT("}")))
		{
			return TEXT("a brace");
		}
		if (Text.Contains(TEXT("\n")) || Text.Contains(TEXT("\r")))
		{
			return TEXT("a line break");
		}
		if (bTitle && Text.EndsWith(TEXT("\\")))
		{
			return TEXT("a backslash at its end");
		}
		return FString();
	}

	FUploadCheck CheckItemFileTexts(const FModSetup& Mod)
	{
		const struct
		{
			const TCHAR* Name;
			const FString& Text;
		} Fields[] = {{TEXT("title"), Mod.Title}, {TEXT("description"), Mod.Description}, {TEXT("change-notes"), Mod.ChangeNotes}};
		for (const auto& Field : Fields)
		{
			// The id is read back as the first "publishedfileid" in the item file, wherever it stands.
			if (Field.Text.Contains(TEXT("publishedfileid"), ESearchCase::IgnoreCase))
			{
				return Failed(TEXT("item-file"),
							  FString::Printf(TEXT("the %s holds \"publishedfileid\", which the read-back would take for the "
												   "item's id when SteamCMD fails"),
											  Field.Name),
							  FString::Printf(TEXT("reword it: TesselCmd set \"%s\" %s=..."), *Mod.ModDir, Field.Name));
			}
			const FString Breaker = TextBreaker(Field.Text, Field.Name == FString(TEXT("title")));
			if (!Breaker.IsEmpty())
			{
				return Failed(TEXT("item-file"),
							  FString::Printf(TEXT("the %s holds %s, which would break the Workshop item file or merge the "
												   "uploader's arguments"),
											  Field.Name, *Breaker),
							  FString::Printf(TEXT("take it out: TesselCmd set \"%s\" %s=..."), *Mod.ModDir, Field.Name));
			}
		}
		return Passed(TEXT("item-file"), TEXT("the texts fit the Workshop item file"));
	}

	// The uploader is started with the kit's path on a command line it splits at blanks.
	FUploadCheck CheckKitPath()
	{
		const FString Root = FPaths::RootDir();
		if (!Root.Contains(TEXT(" ")))
		{
			return Passed(TEXT("kit-path"), Root);
		}
		FUploadCheck Check = Failed(TEXT("kit-path"),
									FString::Printf(TEXT("%s has a blank, so the kit's uploader can't start and publishing goes "
														 "through SteamCMD"),
													*Root),
									TEXT("move the kit to a folder whose path has no blanks"));
		Check.bBlocksPublish = false;
		Check.bBlocksCheck = false;
		return Check;
	}

	FUploadCheck CheckKitFile(const TCHAR* Name, const FString& Path, const TCHAR* What)
	{
		if (FPlatformFileManager::Get().GetPlatformFile().FileExists(*Path))
		{
			return Passed(Name, Path);
		}
		return Failed(Name, FString::Printf(TEXT("%s: missing"), *Path),
					  FString::Printf(TEXT("put %s there (it comes with the kit)"), What));
	}
}

FString DetectImageFormat(const FString& Path)
{
	TUniquePtr<FArchive> Reader(IFileManager::Get().CreateFileReader(*Path, 0));
	uint8 Head[8] = {};
	if (!Reader || Reader->TotalSize() < static_cast<int64>(sizeof(Head)))
	{
		return FString();
	}
	Reader->Serialize(Head, sizeof(Head));
	if (std::memcmp(Head, "\x89PNG\r\n\x1a\n", 8) == 0)
	{
		return TEXT("PNG");
	}
	if (Head[0] == 0xFF && Head[1] == 0xD8 && Head[2] == 0xFF)
	{
		return TEXT("JPEG");
	}
	if (std::memcmp(Head, "GIF87a", 6) == 0 || std::memcmp(Head, "GIF89a", 6) == 0)
	{
		return TEXT("GIF");
	}
	return FString();
}

TArray<FUploadCheck> RunUploadChecks(const FModSetup& Mod)
{
	TArray<FUploadCheck> Checks;
	for (const FModField& Field : ModFields)
	{
		if (Field.MaxLength > 0)
		{
			Checks.Add(CheckText(Mod, Field.SetNames[0], Mod.*Field.Member, Field.MaxLength, Field.bRequiredToUpload));
		}
	}
	Checks.Add(CheckItemFileTexts(Mod));
	Checks.Add(CheckFolderName(Mod));
	Checks.Add(CheckPreview(Mod));
	Checks.Add(CheckVisibility(Mod));
	Checks.Add(CheckPackagedTree(Mod));

	FUploadCheck Editor = CheckKitFile(TEXT("editor"), KitPaths::EditorExecutable(), TEXT("the editor's executable"));
	Editor.bBlocksPublish = false;
	Checks.Add(Editor);
	Checks.Add(CheckKitFile(TEXT("template"), KitPaths::WorkshopTemplate(), TEXT("the Workshop item template")));
	Checks.Add(CheckKitFile(TEXT("steamcmd"), KitPaths::SteamCmd(), TEXT("SteamCMD")));
	FUploadCheck Uploader = CheckKitFile(TEXT("uploader"), KitPaths::Uploader(), TEXT("the kit's uploader"));
	if (!Uploader.bPassed)
	{
		Uploader.Finding += TEXT("; the upload goes straight to SteamCMD");
		Uploader.bBlocksPublish = false;
		Uploader.bBlocksCheck = false;
	}
	Checks.Add(Uploader);
	Checks.Add(CheckKitPath());
	return Checks;
}

namespace
{
	const TCHAR* Verdict(const FUploadCheck& Check)
	{
		return Check.bPassed ? TEXT("ok  ") : (Check.bBlocksCheck ? TEXT("FAIL") : TEXT("warn"));
	}
}

TArray<TSharedPtr<FJsonValue>> DescribeChecks(const TArray<FUploadCheck>& Checks)
{
	TArray<TSharedPtr<FJsonValue>> Items;
	for (const FUploadCheck& Check : Checks)
	{
		TSharedPtr<FJsonObject> Item = MakeShared<FJsonObject>();
		Item->SetStringField(TEXT("name"), Check.Name);
		Item->SetStringField(TEXT("result"), FString(Verdict(Check)).TrimStartAndEnd().ToLower());
		Item->SetStringField(TEXT("finding"), Check.Finding);
		Item->SetStringField(TEXT("advice"), Check.Advice);
		Items.Add(JsonObject(Item));
	}
	return Items;
}

void PrintChecks(const FCommandOutput& Output, const TArray<FUploadCheck>& Checks)
{
	for (const FUploadCheck& Check : Checks)
	{
		FString Line = FString::Printf(TEXT("%s  %-12s %s"), Verdict(Check), *Check.Name, *Check.Finding);
		if (!Check.Advice.IsEmpty())
		{
			Line += TEXT(": ") + Check.Advice;
		}
		Output.Line(Line);
	}
}

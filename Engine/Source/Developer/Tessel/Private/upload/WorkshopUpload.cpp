#include "upload/WorkshopUpload.h"

#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "KitPaths.h"
#include "Misc/FileHelper.h"
#include "Misc/WindowsArguments.h"

#define LOCTEXT_NAMESPACE "STesselTool"

FString ComposeUploaderCommandLine(const FModSetup& Mod)
{
	FString Arguments;
	auto AddArgument = [&Arguments](const TCHAR* Switch, const FString& Value)
	{ Arguments += FString(Switch) + TEXT(" \"") + Value + TEXT("\" "); };

	// A field left empty leaves its switch out.
	if (!Mod.ItemSeamId.IsEmpty())
	{
		AddArgument(TEXT("-steamid"), Mod.ItemSeamId);
	}
	if (!Mod.PreviewImage.IsEmpty())
	{
		AddArgument(TEXT("-preview"), Mod.PreviewImage);
	}
	if (!Mod.Title.IsEmpty())
	{
		AddArgument(TEXT("-title"), Mod.Title.ReplaceQuotesWithEscapedQuotes());
	}
	if (!Mod.Description.IsEmpty())
	{
		AddArgument(TEXT("-desc"), Mod.Description.ReplaceQuotesWithEscapedQuotes());
	}
	if (!Mod.Visibility.IsEmpty())
	{
		AddArgument(TEXT("-vis"), Mod.Visibility);
	}
	if (!Mod.Tags.IsEmpty())
	{
		AddArgument(TEXT("-tags"), Mod.Tags);
	}
	if (!Mod.ModDir.IsEmpty())
	{
		AddArgument(TEXT("-content"), KitPaths::ModToolsDir() + TEXT("/Output/") + Mod.ModDir);
	}
	if (!Mod.ChangeNotes.IsEmpty())
	{
		AddArgument(TEXT("-changelog"), Mod.ChangeNotes.ReplaceQuotesWithEscapedQuotes());
	}

	// Joined as plain text: the program's path is not quoted, and its trailing blank separates it.
	return KitPaths::Uploader() + TEXT(" ") + Arguments;
}

std::string ToEightBitCommandLine(const FString& CommandLine)
{
	std::string Bytes;
	Bytes.reserve(static_cast<size_t>(CommandLine.Len()));
	for (const TCHAR Unit : CommandLine)
	{
		Bytes += Unit <= 0x7F ? static_cast<char>(Unit) : '?';
	}
	return Bytes;
}

bool SplitUploaderCommandLine(const std::string& EightBitLine, FString& OutProgram, FString& OutParameters)
{
	// Every byte is 7-bit by now, so it is its own character.
	const TArray<FString> Pieces = FWindowsArguments::Split(FString::FromUtf8(EightBitLine));
	if (Pieces.Num() == 0)
	{
		return false;
	}
	OutProgram = Pieces[0];
	OutParameters.Empty();
	for (int32 Index = 1; Index < Pieces.Num(); ++Index)
	{
		OutParameters += (Index > 1 ? TEXT(" ") : TEXT("")) + FWindowsArguments::Quote(Pieces[Index]);
	}
	return true;
}

int32 GetVisibilityNumber(const TArray<TSharedPtr<FString>>& Options, const FString& Visibility)
{
	for (int32 Index = 0; Index < Options.Num(); ++Index)
	{
		if (Options[Index] && Options[Index]->Equals(Visibility, ESearchCase::IgnoreCase))
		{
			return Index;
		}
	}
	return 0;
}

FString FillWorkshopTemplate(const FString& Template, const FModSetup& Mod, int32 VisibilityNumber)
{
	// A VDF string writes each backslash twice, and Windows paths separate with one.
	FString ContentFolder = (KitPaths::ModOutputDir() / Mod.ModDir).Replace(TEXT("\\"), TEXT("/"), ESearchCase::IgnoreCase);
	ContentFolder.RemoveFromEnd(TEXT("/"), ESearchCase::IgnoreCase);
	ContentFolder = ContentFolder.Replace(TEXT("/"), TEXT("\\\\"), ESearchCase::IgnoreCase);

	const FString AdditionalArgs =
		Mod.ItemSeamId.IsEmpty() ? FString() : FString::Printf(TEXT("\"publishedfileid\" \"%s\""), *Mod.ItemSeamId);

	// In this order, each on the result of the one before: a title may bring in a later token.
	FString Text = Template;
	Text = Text.Replace(TEXT("%CONTENTFOLDER%"), ContentFolder, ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%VISIBILITY%"), FString::Printf(TEXT("%d"), VisibilityNumber), ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%TITLE%"), Mod.Title, ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%DESCRIPTION%"), Mod.Description, ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%CHANGENOTE%"), Mod.ChangeNotes, ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%ADDITIONALVDFARGS%"), AdditionalArgs, ESearchCase::IgnoreCase);
	return Text;
}

bool WriteWorkshopItemFile(const FModSetup& Mod, int32 VisibilityNumber)
{
	FString Template;
	if (!FFileHelper::LoadFileToString(Template, *KitPaths::WorkshopTemplate(), 0))
	{
		return false;
	}

	const FString ItemFilePath = KitPaths::WorkshopItemFile(Mod.ModDir);
	const FString PreviewPath = KitPaths::ModOutputDir() / Mod.ModDir / TEXT("preview.jpg");

	// Copied as it is, whatever its format; a failed copy leaves an older preview, and the upload goes on.
	FPlatformFileManager::Get().GetPlatformFile().CopyFile(*PreviewPath, *Mod.PreviewImage);

	FFileHelper::SaveStringToFile(FillWorkshopTemplate(Template, Mod, VisibilityNumber), *ItemFilePath, EEncodingOptions::AutoDetect,
								  &IFileManager::Get());
	return true;
}

FString ComposeSteamCmdParameters(const FString& Username, const FString& Password, const FString& ItemFilePath)
{
	return FString::Printf(TEXT("+login %s %s +workshop_build_item \"%s\" +quit"), *Username, *Password, *ItemFilePath);
}

bool ReadPublishedFileId(const FString& ItemFileText, FString& OutId)
{
	TArray<FString> Lines;
	ItemFileText.ParseIntoArrayLines(Lines);
	for (const FString& Line : Lines)
	{
		if (Line.Find(TEXT("publishedfileid"), ESearchCase::IgnoreCase, ESearchDir::FromStart) == INDEX_NONE)
		{
			continue;
		}
		// Only the first line that names the key counts, even when it holds no number.
		TArray<FString> Pieces;
		Line.ParseIntoArray(Pieces, TEXT("\""), true);
		for (const FString& Piece : Pieces)
		{
			if (Piece.IsNumeric())
			{
				// Kept as text: an id of any length passes without a narrowing conversion.
				OutId = Piece;
				return true;
			}
		}
		return false;
	}
	return false;
}

bool ReadBackPublishedFileId(const FString& ItemFilePath, FString& OutId)
{
	FString ItemFileText;
	return FPlatformFileManager::Get().GetPlatformFile().FileExists(*ItemFilePath) &&
		   FFileHelper::LoadFileToString(ItemFileText, *ItemFilePath, 0) && ReadPublishedFileId(ItemFileText, OutId);
}

FString GetWorkshopItemUrl(const FString& PublishedId)
{
	return FString::Printf(TEXT("https://steamcommunity.com/sharedfiles/filedetails/?id=%s"), *PublishedId);
}

FText DescribeSteamUploadRefusal(ESteamUploadRefusal Refusal)
{
	switch (Refusal)
	{
	case ESteamUploadRefusal::NoUsername:
		return LOCTEXT("NoUsername", "Steam username is required to upload a mod.");
	case ESteamUploadRefusal::NoPassword:
		return LOCTEXT("NoPassword", "Steam password is required to upload a mod.");
	case ESteamUploadRefusal::NoTemplate:
		break;
	}
	return LOCTEXT("NoTemplate", "Steam workshop template is not found.");
}

std::optional<ESteamUploadRefusal> CheckSteamLogin(const FString& Username, const FString& Password, bool bCachedLogin)
{
	if (Username.IsEmpty())
	{
		return ESteamUploadRefusal::NoUsername;
	}
	if (Password.IsEmpty() && !bCachedLogin)
	{
		return ESteamUploadRefusal::NoPassword;
	}
	return std::nullopt;
}

#undef LOCTEXT_NAMESPACE

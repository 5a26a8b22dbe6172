#include "STesselUI.h"

#include "Dialogs/Dialogs.h"
#include "HAL/FileManager.h"
#include "HAL/PlatformFile.h"
#include "Misc/FileHelper.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "STesselTool"

FString STesselTool::GetWorkshopTemplatePath()
{
	return GetModToolsDir() / TEXT("SteamVDF.template");
}

FString STesselTool::GetWorkshopItemFilePath(const FString& ModDir)
{
	return GetModToolsDir() / TEXT("ModConfigs") / (ModDir + TEXT(".vdf"));
}

int32 STesselTool::GetVisibilityNumber(const FString& Visibility) const
{
	for (int32 Index = 0; Index < VisibilityOptions.Num(); ++Index)
	{
		if (VisibilityOptions[Index] && VisibilityOptions[Index]->Equals(Visibility, ESearchCase::IgnoreCase))
		{
			return Index;
		}
	}
	return 0;
}

FString STesselTool::FillWorkshopTemplate(const FString& Template, const FModSetup& Mod) const
{
	// A VDF string writes each backslash twice, and Windows paths separate with one.
	FString ContentFolder = (GetModOutputDir() / Mod.ModDir).Replace(TEXT("\\"), TEXT("/"), ESearchCase::IgnoreCase);
	ContentFolder.RemoveFromEnd(TEXT("/"), ESearchCase::IgnoreCase);
	ContentFolder = ContentFolder.Replace(TEXT("/"), TEXT("\\\\"), ESearchCase::IgnoreCase);

	const FString AdditionalArgs =
		Mod.ItemSeamId.IsEmpty() ? FString() : FString::Printf(TEXT("\"publishedfileid\" \"%s\""), *Mod.ItemSeamId);

	// In this order, each on the result of the one before: a title may bring in a later token.
	FString Text = Template;
	Text = Text.Replace(TEXT("%CONTENTFOLDER%"), ContentFolder, ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%VISIBILITY%"), FString::Printf(TEXT("%d"), GetVisibilityNumber(Mod.Visibility)), ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%TITLE%"), Mod.Title, ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%DESCRIPTION%"), Mod.Description, ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%CHANGENOTE%"), Mod.ChangeNotes, ESearchCase::IgnoreCase);
	Text = Text.Replace(TEXT("%ADDITIONALVDFARGS%"), AdditionalArgs, ESearchCase::IgnoreCase);
	return Text;
}

bool STesselTool::MakeWorkshopItemFile()
{
	check(SelectedMod.IsValid());
	const FModSetup& Mod = *SelectedMod;

	FString Template;
	if (!FFileHelper::LoadFileToString(Template, *GetWorkshopTemplatePath(), 0))
	{
		SGenericDialogWidget::OpenDialog(LOCTEXT("UploadError", "Upload Error"),
										 SNew(STextBlock).Text(LOCTEXT("NoTemplate", "Steam workshop template is not found.")));
		return false;
	}

	const FString ItemFilePath = GetWorkshopItemFilePath(Mod.ModDir);
	const FString PreviewPath = GetModOutputDir() / Mod.ModDir / TEXT("preview.jpg");

	// Copied as it is, whatever its format; a failed copy leaves an older preview, and the upload goes on.
	FPlatformFileManager::Get().GetPlatformFile().CopyFile(*PreviewPath, *Mod.PreviewImage);

	FFileHelper::SaveStringToFile(FillWorkshopTemplate(Template, Mod), *ItemFilePath, EEncodingOptions::AutoDetect,
								  &IFileManager::Get());
	return true;
}

#undef LOCTEXT_NAMESPACE

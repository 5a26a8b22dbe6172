// What the form's widgets read and write: every text box edits the selected record in place, and nothing here
// saves except a tag's check box (through AddTag and RemoveTag).

#include "STesselUI.h"
#include "upload/WorkshopUpload.h"

#include "DesktopPlatformModule.h"
#include "EditorServices.h"
#include "Interfaces/IMainFrameModule.h"
#include "Modules/ModuleManager.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "STesselTool"

namespace
{
	// The engine's way to an editor module: load it unless it is loaded already.
	IModuleInterface* LoadModuleOnce(const TCHAR* Name)
	{
		FModuleManager& Modules = FModuleManager::Get();
		return Modules.IsModuleLoaded(Name) ? Modules.GetModule(Name) : Modules.LoadModule(Name);
	}
}

FText STesselTool::GetModDirText() const
{
	return FText::FromString(SelectedMod->ModDir);
}

FText STesselTool::GetMapsText() const
{
	return FText::FromString(SelectedMod->Maps);
}

FText STesselTool::GetTitleText() const
{
	return FText::FromString(SelectedMod->Title);
}

FText STesselTool::GetDescriptionText() const
{
	return FText::FromString(SelectedMod->Description);
}

FText STesselTool::GetChangeNotesText() const
{
	return FText::FromString(SelectedMod->ChangeNotes);
}

void STesselTool::OnMapsChanged(const FText& InText)
{
	SelectedMod->Maps = InText.ToString();
}

void STesselTool::OnTitleChanged(const FText& InText)
{
	SelectedMod->Title = InText.ToString();
}

void STesselTool::OnDescriptionChanged(const FText& InText)
{
	SelectedMod->Description = InText.ToString();
}

void STesselTool::OnChangeNotesChanged(const FText& InText)
{
	SelectedMod->ChangeNotes = InText.ToString();
}

void STesselTool::OnTestOutputDirChanged(const FText& InText)
{
	TestOutputDir = InText.ToString();
}

FString STesselTool::GetVisibilityString() const
{
	return SelectedMod->Visibility;
}

void STesselTool::OnVisibilitySelected(TSharedPtr<FString> Item, ESelectInfo::Type SelectInfo)
{
	if (Item)
	{
		SelectedMod->Visibility = *Item;
	}
}

TSharedRef<SWidget> STesselTool::MakeVisibilityRow(TSharedPtr<FString> Item)
{
	return SNew(STextBlock).Text(FText::FromString(*Item));
}

bool STesselTool::IsTagActive(const FString& Tag) const
{
	TArray<FString> Items;
	SelectedMod->Tags.ParseIntoArray(Items, TEXT(","), false);
	return Items.ContainsByPredicate([&Tag](const FString& Item) { return Item.Equals(Tag, ESearchCase::IgnoreCase); });
}

void STesselTool::OnTagStateChanged(FString Tag, ECheckBoxState State)
{
	if (State == ECheckBoxState::Unchecked)
	{
		RemoveTag(Tag);
	}
	else if (State == ECheckBoxState::Checked)
	{
		AddTag(Tag);
	}
}

const FSlateBrush* STesselTool::GetPreviewBrush() const
{
	return PreviewBrush ? PreviewBrush.Get() : FCoreStyle::Get().GetBrush(TEXT("Checkerboard"));
}

FReply STesselTool::OnBrowsePreviewImage()
{
	if (!LoadModuleOnce(TEXT("DesktopPlatform")))
	{
		return FReply::Handled();
	}
	IDesktopPlatform* DesktopPlatform = FDesktopPlatformModule::Get();
	if (!DesktopPlatform)
	{
		return FReply::Handled();
	}

	const void* ParentWindowHandle = nullptr;
	if (IMainFrameModule* MainFrame = static_cast<IMainFrameModule*>(LoadModuleOnce(TEXT("MainFrame"))))
	{
		if (TSharedPtr<SWindow> Parent = MainFrame->GetParentWindow())
		{
			ParentWindowHandle = Parent->GetNativeWindowHandle();
		}
	}

	TArray<FString> Files;
	const bool bChosen =
		DesktopPlatform->OpenFileDialog(ParentWindowHandle, LOCTEXT("OpenProjectBrowseTitle", "Select Preview Image").ToString(),
										FPaths::RootDir(), FString(), TEXT("Png Image (.png)|*.png"), 0, Files);
	if (bChosen && Files.Num() > 0)
	{
		FString Path = Files[0];
		if (FPaths::IsRelative(Path))
		{
			Path = FPaths::ConvertRelativePathToFull(Path);
		}
		SelectedMod->PreviewImage = Path;
		RefreshPreviewBrush();
	}
	return FReply::Handled();
}

void STesselTool::RefreshPreviewBrush()
{
	PreviewBrush.Reset();
	if (SelectedMod && !SelectedMod->PreviewImage.IsEmpty())
	{
		// The file is read when the brush is first drawn, not here.
		PreviewBrush = MakeShared<FSlateDynamicImageBrush>(SelectedMod->PreviewImage, FVector2D(128, 128),
														   FLinearColor(1.0f, 1.0f, 1.0f, 1.0f), ESlateBrushTileType::NoTile,
														   ESlateBrushImageType::FullColor);
	}
}

void STesselTool::OnViewItem()
{
	if (SelectedMod)
	{
		// The user's web browser, as the engine's URL launcher opens it.
		IEditorServices::Get().LaunchURL(GetWorkshopItemUrl(SelectedMod->ItemSeamId));
	}
}

EVisibility STesselTool::GetViewItemVisibility() const
{
	return SelectedMod && !SelectedMod->ItemSeamId.IsEmpty() ? EVisibility::Visible : EVisibility::Hidden;
}

#undef LOCTEXT_NAMESPACE

#include "WindowScript.h"

#include "Misc/Paths.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/Input/SHyperlink.h"
#include "Widgets/Layout/SGridPanel.h"
#include "Widgets/Views/STableViewBase.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace
{
	// The tool's two lists in the order of its layout: the mods, then the log.
	TSharedPtr<STableViewBase> ListOf(const TSharedPtr<SWidget>& Tool, int32 Which)
	{
		TArray<TSharedRef<SWidget>> Lists = FindWidgetsByType(Tool.ToSharedRef(), TEXT("SListView"));
		return Lists.IsValidIndex(Which) ? TSharedPtr<STableViewBase>(StaticCastSharedRef<STableViewBase>(Lists[Which])) : nullptr;
	}

	template <typename WidgetType = SButton>
	TSharedPtr<WidgetType> FindByKey(const TSharedPtr<SWidget>& Root, const TCHAR* Key)
	{
		TSharedPtr<SWidget> Found = Root ? FindWidgetByKey(Root.ToSharedRef(), Key) : nullptr;
		return Found ? StaticCastSharedPtr<WidgetType>(Found) : nullptr;
	}

	// The text box a person finds beside a label of a form: the widget in the other column of the label's row.
	TSharedPtr<SEditableTextBase> TextBoxBeside(const TSharedPtr<SWidget>& Root, const TCHAR* LabelKey)
	{
		for (const TSharedRef<SWidget>& Widget : FindWidgetsByType(Root.ToSharedRef(), TEXT("SGridPanel")))
		{
			const TArray<SGridPanel::FSlot>& Slots = static_cast<const SGridPanel&>(*Widget).GetSlots();
			for (const SGridPanel::FSlot& Label : Slots)
			{
				if (Label.Widget->GetTextKey() != LabelKey)
				{
					continue;
				}
				for (const SGridPanel::FSlot& Other : Slots)
				{
					if (Other.Row == Label.Row && Other.Column != Label.Column)
					{
						return StaticCastSharedPtr<SEditableTextBase>(Other.Widget);
					}
				}
			}
		}
		return nullptr;
	}
}

FWindowScript::FWindowScript(FHost InHost, const FString& InModDir, const FString& InPicturePath)
	: Host(std::move(InHost)), ModDir(InModDir), PicturePath(InPicturePath)
{
}

std::unique_ptr<FWindowScript> FWindowScript::FromCommandLine(FHost InHost)
{
	const TCHAR* CommandLine = FCommandLine::Get();
	FString CookModDir;
	FString PicturePath;
	if (!FParse::Value(CommandLine, TEXT("-Cook="), CookModDir, false) || !FParse::Value(CommandLine, TEXT("-Screenshot="), PicturePath, false))
	{
		return nullptr;
	}
	auto Script = std::make_unique<FWindowScript>(std::move(InHost), CookModDir, PicturePath);
	if (FParse::Param(CommandLine, TEXT("Publish")))
	{
		// The login comes from the environment, never from the command line, where others could read it.
		FPublication Publication;
		FParse::Value(CommandLine, TEXT("-PublishTitle="), Publication.Title, false);
		FParse::Value(CommandLine, TEXT("-PublishDescription="), Publication.Description, false);
		FParse::Value(CommandLine, TEXT("-PublishPreview="), Publication.PreviewImage, false);
		const std::u8string Here = std::filesystem::current_path().u8string();
		Publication.PreviewImage = FPaths::ConvertRelativePathToFull(FString::FromUtf8(std::string(Here.begin(), Here.end())), Publication.PreviewImage);
		Publication.SteamUsername = FString::FromUtf8(std::getenv("STEAM_USERNAME") ? std::getenv("STEAM_USERNAME") : "");
		Publication.SteamPassword = FString::FromUtf8(std::getenv("STEAM_PASSWORD") ? std::getenv("STEAM_PASSWORD") : "");
		Script->SetPublication(Publication);
	}
	return Script;
}

void FWindowScript::SetPublication(const FPublication& InPublication)
{
	Publication = InPublication;
	bPublish = true;
}

void FWindowScript::OnDialog(const FString& Title, const FString& Body)
{
	// Printed later, after the last lines of the log.
	DialogTitle = Title;
	DialogBody = Body;
}

void FWindowScript::OnModalWindow(const TSharedRef<SWindow>& LoginWindow)
{
	// The login dialog, filled in as a person types, then "Accept".
	TSharedPtr<SWidget> Content = LoginWindow->GetContent();
	TSharedPtr<SEditableTextBase> User = Content ? TextBoxBeside(Content, TEXT("SteamUsername")) : nullptr;
	TSharedPtr<SEditableTextBase> Password = Content ? TextBoxBeside(Content, TEXT("SteamPassword")) : nullptr;
	TSharedPtr<SButton> Accept = FindByKey(Content, TEXT("Accept"));
	if (!User || !Password || !Accept)
	{
		std::fprintf(stderr, "The login dialog has no user name, password or Accept\n");
		LoginWindow->RequestDestroyWindow();
		return;
	}
	User->SetTextFromUser(Publication.SteamUsername);
	Password->SetTextFromUser(Publication.SteamPassword);
	std::printf("Steam Authentication: signed in as %s\n", Publication.SteamUsername.ToUtf8().c_str());
	std::fflush(stdout);
	Accept->Click();
}

bool FWindowScript::AnswerFileDialog(TArray<FString>& OutFiles) const
{
	OutFiles = {Publication.PreviewImage};
	return true;
}

void FWindowScript::OnLaunchUrl(const FString& Url)
{
	ItemUrl = Url;
}

void FWindowScript::MirrorLog()
{
	TSharedPtr<STableViewBase> Log = ListOf(Host.FindTool(), 1);
	if (!Log)
	{
		return;
	}
	// A cook or an upload starts by emptying the log; the mirror starts over with it.
	if (Log->GetNumRowsShown() < LinesShown)
	{
		LinesShown = 0;
	}
	for (; LinesShown < Log->GetNumRowsShown(); ++LinesShown)
	{
		std::puts(Log->GetRowText(LinesShown).ToUtf8().c_str());
	}
	std::fflush(stdout);
}

bool FWindowScript::SavePicture(const FString& Path)
{
	if (!Host.SavePicture(Path))
	{
		return false;
	}
	std::printf("Picture of the tool saved to %s\n", Path.ToUtf8().c_str());
	return true;
}

void FWindowScript::Step()
{
	if (bFinished)
	{
		return;
	}
	TSharedPtr<SWidget> Tool = Host.FindTool();
	if (!Tool)
	{
		Finish(1, "The tool's tab is not open");
		return;
	}
	switch (Stage)
	{
	case EStage::SelectMod:
	{
		TSharedPtr<STableViewBase> Mods = ListOf(Tool, 0);
		for (int32 Row = 0; Mods && Row < Mods->GetNumRowsShown(); ++Row)
		{
			if (Mods->GetRowText(Row).Equals(ModDir, ESearchCase::IgnoreCase))
			{
				Mods->ClickRow(Row);
				Stage = EStage::PressCook;
				return;
			}
		}
		if (++Frames > 60)
		{
			std::fprintf(stderr, "No mod folder named %s\n", ModDir.ToUtf8().c_str());
			Finish(1, nullptr);
		}
		return;
	}
	case EStage::PressCook:
	{
		TSharedPtr<SButton> CookMap = FindByKey(Tool, TEXT("CookMapMod"));
		TSharedPtr<SButton> CookMod = FindByKey(Tool, TEXT("CookMod"));
		if (!CookMap || !CookMod)
		{
			Finish(1, "The form has no cook buttons");
			return;
		}
		// The click goes through the button itself, guard and all.
		(CookMap->IsEnabled() ? CookMap : CookMod)->Click();
		Stage = EStage::WaitForRun;
		return;
	}
	case EStage::WaitForRun:
	{
		MirrorLog();
		TSharedPtr<SButton> Cancel = FindByKey(Tool, TEXT("CancelJob"));
		if (Cancel && !Cancel->IsEnabled())
		{
			Stage = EStage::SettleAfterCook;
			Frames = 0;
		}
		return;
	}
	case EStage::SettleAfterCook:
		// A few frames so that the last lines and the guards are drawn before the picture.
		MirrorLog();
		if (++Frames < 10)
		{
			return;
		}
		std::printf("%s: %s\n", DialogTitle.ToUtf8().c_str(), DialogBody.ToUtf8().c_str());
		if (!SavePicture(PicturePath))
		{
			Finish(1, "Could not save the picture");
			return;
		}
		if (DialogBody != TEXT("Job Successful!!"))
		{
			Finish(1, nullptr);
			return;
		}
		if (!bPublish)
		{
			Finish(0, nullptr);
			return;
		}
		Stage = EStage::FillForm;
		return;
	case EStage::FillForm:
	{
		TSharedPtr<SEditableTextBase> Title = TextBoxBeside(Tool, TEXT("ModTitle"));
		TSharedPtr<SEditableTextBase> Description = TextBoxBeside(Tool, TEXT("ModDescription"));
		TSharedPtr<SButton> Browse = FindByKey(Tool, TEXT("SelectPreviewImage"));
		if (!Title || !Description || !Browse)
		{
			Finish(1, "The form has no title, description or Browse...");
			return;
		}
		std::printf("\nPublishing %s as \"%s\"\n", ModDir.ToUtf8().c_str(), Publication.Title.ToUtf8().c_str());
		Title->SetTextFromUser(Publication.Title);
		Description->SetTextFromUser(Publication.Description);
		Browse->Click();
		Stage = EStage::PressUpload;
		return;
	}
	case EStage::PressUpload:
	{
		TSharedPtr<SButton> Upload = FindByKey(Tool, TEXT("UploadMod"));
		if (!Upload || !Upload->IsEnabled())
		{
			Finish(1, "\"Upload\" is not enabled");
			return;
		}
		// Blocks, as the tool does, until the uploader and SteamCMD have ended; what they print follows ours.
		std::fflush(stdout);
		Upload->Click();
		Stage = EStage::SettleAfterUpload;
		Frames = 0;
		return;
	}
	case EStage::SettleAfterUpload:
	{
		MirrorLog();
		if (++Frames < 10)
		{
			return;
		}
		// The link shows once the item has an id; following it names the item's page.
		TSharedPtr<SHyperlink> Link = FindByKey<SHyperlink>(Tool, TEXT("ViewItem"));
		if (Link)
		{
			Link->Navigate();
		}
		if (ItemUrl.IsEmpty())
		{
			Finish(1, "The mod was not published");
			return;
		}
		std::printf("Published: %s\n", ItemUrl.ToUtf8().c_str());
		const FString Published = PicturePath.EndsWith(TEXT(".png")) ? PicturePath.LeftChop(4) + TEXT("-published.png") : PicturePath + TEXT("-published.png");
		Finish(SavePicture(Published) ? 0 : 1, nullptr);
		return;
	}
	}
}

void FWindowScript::Finish(int ExitCode, const char* Message)
{
	bFinished = true;
	if (Message)
	{
		std::fprintf(stderr, "%s\n", Message);
	}
	std::fflush(stdout);
	Host.Quit(ExitCode);
}

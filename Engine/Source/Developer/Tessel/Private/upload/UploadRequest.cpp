#include "STesselUI.h"

#include "Dialogs/Dialogs.h"
#include "Editor/EditorEngine.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SGridPanel.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "upload/WorkshopUpload.h"

#define LOCTEXT_NAMESPACE "STesselTool"

FReply STesselTool::OnUploadClicked()
{
	if (RunUploaderRoute())
	{
		return FReply::Handled();
	}

	bSteamAuthConfirmed = false;
	ShowSteamAuthDialog();
	if (!bSteamAuthConfirmed)
	{
		return FReply::Handled();
	}
	UploadWithSteamCredentials();
	return FReply::Handled();
}

void STesselTool::UploadWithSteamCredentials()
{
	// Checked only now, after the dialog: the user who sees an error clicks "Upload" again.
	// The window always asks for the password: it never logs in on cached credentials.
	if (const std::optional<ESteamUploadRefusal> Refusal = CheckSteamLogin(SteamUsername, SteamPassword, false))
	{
		SGenericDialogWidget::OpenDialog(LOCTEXT("UploadError", "Upload Error"),
										 SNew(STextBlock).Text(DescribeSteamUploadRefusal(*Refusal)));
		return;
	}
	if (MakeWorkshopItemFile())
	{
		RunSteamCmd();
	}
}

// clang-format off
void STesselTool::ShowSteamAuthDialog()
{
	// The window exists before its content, so that the buttons' handlers always find it in SteamAuthWindow.
	SteamAuthWindow = SNew(SWindow)
						  .Title(LOCTEXT("SteamAuth", "Steam Authentication"))
						  .SizingRule(ESizingRule::Autosized)
						  .AutoCenter(EAutoCenter::PreferredWorkArea)
						  .SupportsMinimize(false)
						  .SupportsMaximize(false);

	SteamAuthWindow->SetContent(
		SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.FillHeight(1.0f)
		.Padding(10.0f)
		[
			SNew(SGridPanel)
			.FillColumn(0, 0.3f)
			.FillColumn(1, 0.7f)
			+ SGridPanel::Slot(0, 0)
			.Padding(5.0f)
			[
				SNew(STextBlock)
				.Text(LOCTEXT("SteamUsername", "UserName"))
			]
			+ SGridPanel::Slot(1, 0)
			.Padding(5.0f)
			[
				SNew(SEditableTextBox)
				.Text(this, &STesselTool::GetSteamUsernameText)
				.OnTextChanged(this, &STesselTool::OnSteamUsernameChanged)
			]
			+ SGridPanel::Slot(0, 1)
			.Padding(5.0f)
			[
				SNew(STextBlock)
				.Text(LOCTEXT("SteamPassword", "Password"))
			]
			+ SGridPanel::Slot(1, 1)
			.Padding(5.0f)
			[
				SNew(SEditableTextBox)
				.IsPassword(true)
				.Text(this, &STesselTool::GetSteamPasswordText)
				.OnTextChanged(this, &STesselTool::OnSteamPasswordChanged)
			]
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.HAlign(HAlign_Center)
		.Padding(10.0f)
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			[
				SNew(SButton)
				.Text(LOCTEXT("Accept", "Accept"))
				.OnClicked(this, &STesselTool::OnSteamAuthAccept)
			]
			+ SHorizontalBox::Slot()
			.AutoWidth()
			[
				SNew(SButton)
				.Text(LOCTEXT("Decline", "Decline"))
				.OnClicked(this, &STesselTool::OnSteamAuthDecline)
			]
		]);

	GEditor->EditorAddModalWindow(SteamAuthWindow.ToSharedRef());
}
// clang-format on

FText STesselTool::GetSteamUsernameText() const
{
	return FText::FromString(SteamUsername);
}

FText STesselTool::GetSteamPasswordText() const
{
	return FText::FromString(SteamPassword);
}

void STesselTool::OnSteamUsernameChanged(const FText& NewText)
{
	SteamUsername = NewText.ToString();
}

void STesselTool::OnSteamPasswordChanged(const FText& NewText)
{
	SteamPassword = NewText.ToString();
}

FReply STesselTool::OnSteamAuthAccept()
{
	return AnswerSteamAuth(true);
}

FReply STesselTool::OnSteamAuthDecline()
{
	return AnswerSteamAuth(false);
}

FReply STesselTool::AnswerSteamAuth(bool bConfirmed)
{
	bSteamAuthConfirmed = bConfirmed;
	if (SteamAuthWindow)
	{
		SteamAuthWindow->RequestDestroyWindow();
	}
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE

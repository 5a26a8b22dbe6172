#pragma once

#include "CoreMinimal.h"
#include "Styling/SlateBrush.h"
#include "EditorStyleSet.h"
#include "Widgets/Images/SThrobber.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/SWindow.h"
#include "Widgets/Views/SListView.h"
#include "catalogue/ModSetup.h"
#include "cook/CookOptions.h"

// The content of the tool tab: the mod catalogue, the selection, the log and the Steam credentials of this run.
class STesselTool : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(STesselTool) {}
	SLATE_END_ARGS()

	~STesselTool() override;
	void Construct(const FArguments& InArgs);
	bool WantsTick() const override { return true; }
	void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

	// Path helpers; none depends on the tool's state.
	static FString GetModToolsDir();
	static FString GetModOutputDir();
	static FString GetModDatabasePath();
	static FString GetModsContentDir();

	// Merges the mod folders on disk with the records of the database and selects the first record.
	void RefreshModList(bool bRebuildDetails);
	FReply OnRefreshClicked();

	// Cook requests: each button queues one job for each target.
	void StartCook(ECookKind Kind);
	FReply OnCookMapClicked();
	FReply OnCookGameModClicked();
	FReply OnCookTotalConversionClicked();
	FReply OnCookMapExtensionClicked();

	// Replaces ModList with the records of the file at Path and, when it parses, SteamUsername.
	void LoadModDatabase(const FString& Path);
	// Writes every record and the Steam user name; with no records the file is left as it is, and a file that
	// didn't load is kept aside first.
	FReply SaveModDatabase();
	FReply OnResetGuidClicked();
	FReply OnResetPublisherIdClicked();
	void AddTag(const FString& Tag);
	void RemoveTag(const FString& Tag);

	// The whole widget tree, built anew into the child slot.
	void BuildLayout();
	TSharedRef<SWidget> BuildDetailsPanel();
	TSharedRef<ITableRow> OnGenerateModRow(TSharedPtr<FModSetup> Item, const TSharedRef<STableViewBase>& OwnerTable);
	TSharedRef<ITableRow> OnGenerateLogRow(TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& OwnerTable);
	void OnModSelectionChanged(TSharedPtr<FModSetup> Item, ESelectInfo::Type SelectInfo);
	FReply OnClearLogsClicked();
	bool CanClearLogs() const;
	FReply OnCancelClicked();
	bool CanCancel() const;
	EVisibility GetStatusVisibility() const;

	// The details panel: bound getters, change handlers and guards of the form.
	FText GetModDirText() const;
	FText GetMapsText() const;
	FText GetTitleText() const;
	FText GetDescriptionText() const;
	FText GetChangeNotesText() const;
	void OnMapsChanged(const FText& InText);
	void OnTitleChanged(const FText& InText);
	void OnDescriptionChanged(const FText& InText);
	void OnChangeNotesChanged(const FText& InText);
	void OnTestOutputDirChanged(const FText& InText);
	FString GetVisibilityString() const;
	void OnVisibilitySelected(TSharedPtr<FString> Item, ESelectInfo::Type SelectInfo);
	TSharedRef<SWidget> MakeVisibilityRow(TSharedPtr<FString> Item);
	bool IsTagActive(const FString& Tag) const;
	void OnTagStateChanged(FString Tag, ECheckBoxState State);
	const FSlateBrush* GetPreviewBrush() const;
	FReply OnBrowsePreviewImage();
	void RefreshPreviewBrush();
	bool CanCookMap() const;
	bool CanResetPublisherId() const;
	bool CanUpload() const;
	void OnViewItem();
	EVisibility GetViewItemVisibility() const;

	// Workshop upload: the uploader program first; unless it publishes, the Steam login dialog, then the item
	// file and SteamCMD.
	FReply OnUploadClicked();
	FText GetSteamUsernameText() const;
	FText GetSteamPasswordText() const;
	void OnSteamUsernameChanged(const FText& NewText);
	void OnSteamPasswordChanged(const FText& NewText);
	FReply OnSteamAuthAccept();
	FReply OnSteamAuthDecline();

	TArray<TSharedPtr<FString>> LogMessages;
	bool bSteamAuthConfirmed = false;
	TArray<TSharedPtr<FModSetup>> ModList;
	TSharedPtr<FModSetup> SelectedMod;
	TSharedPtr<FSlateDynamicImageBrush> PreviewBrush;
	TArray<TSharedPtr<FString>> VisibilityOptions;
	TSharedPtr<SScrollBox> DetailsScrollBox;
	TSharedPtr<SListView<TSharedPtr<FString>>> LogListView;
	TSharedPtr<SWindow> SteamAuthWindow;
	TSharedPtr<SCircularThrobber> StatusThrobber;
	TSharedPtr<SListView<TSharedPtr<FModSetup>>> ModListView;
	FString SteamUsername;
	FString SteamPassword;
	FString TestOutputDir;

private:
	// Opens the dialog that ends a run: success when some log line says so.
	void ShowResultDialog();
	// Stores the dialog's answer and closes it.
	FReply AnswerSteamAuth(bool bConfirmed);
	// Makes a new SteamAuthWindow and shows it modally; bSteamAuthConfirmed is false unless "Accept" closed it.
	void ShowSteamAuthDialog();
	// Everything after an accepted dialog, with SteamUsername and SteamPassword as they stand: the two checks
	// (each with its error dialog), the item file, SteamCMD and the readback of the published id.
	void UploadWithSteamCredentials();
	// Runs the uploader program on the selected record; true when its exit code is a published id, which is
	// then in ItemSeamId and saved.
	bool RunUploaderRoute();
	// Fills the template into the item file and copies the preview beside the content; false, after the
	// error dialog, when the template can't be read.
	bool MakeWorkshopItemFile();
	// Runs SteamCMD on the selected record's item file, waits for it, and takes the published id back.
	void RunSteamCmd();

	// The last load found a file it couldn't parse; the first save keeps it before replacing it.
	bool bModDatabaseUnreadable = false;
	// The tick's hand for lines on their way into the log; kept so that its room is reused tick after tick.
	TArray<FString> TakenLines;
};

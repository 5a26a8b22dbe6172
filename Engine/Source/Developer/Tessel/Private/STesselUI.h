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
#include "cook/CookJob.h"

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
	static FString GetEditorExecutablePath();
	void StartCook(ECookKind Kind);
	FReply OnCookMapClicked();
	FReply OnCookGameModClicked();
	FReply OnCookTotalConversionClicked();
	FReply OnCookMapExtensionClicked();

	// Replaces ModList with the records of the file at Path and, when it parses, SteamUsername.
	void LoadModDatabase(const FString& Path);
	enum class EModDatabaseRead : uint8
	{
		Read,
		Unopenable,
		Unreadable,
	};
	// Adds the records of the database file at Path to OutMods and sets OutSteamUsername, only when it parses;
	// otherwise OutError says why: the file can't be opened, or the reader's message with line and column.
	static EModDatabaseRead ReadModDatabase(const FString& Path, TArray<TSharedPtr<FModSetup>>& OutMods, FString& OutSteamUsername,
											FString& OutError);
	// Writes every record and the Steam user name; with no records the file is left as it is.
	FReply SaveModDatabase();
	// Copies a database file that failed to load to the first free name of "Mods.db.unreadable",
	// "Mods.db.unreadable.2", ..., so that a save can replace it without losing what it held. True when the
	// copy is made or there is no file any more.
	static bool KeepUnreadableModDatabase(const FString& Path);
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
	// The three visibilities in the order of the drop-down; a visibility's position is its number in the item file.
	static const TArray<FString>& GetVisibilityLabels();
	// The ten Workshop tags in the order of their check boxes; a tag's stored value is its label.
	static const TArray<FString>& GetTagLabels();
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
	// The address of the selected item's page on the Workshop.
	FString GetWorkshopItemUrl() const;
	// Opens the dialog that ends a run: success when some log line says so.
	void ShowResultDialog();

	// Workshop upload
	// What came of the login dialog's route, for callers that report it (the command-line tool).
	enum class ESteamUploadResult : uint8
	{
		NoUsername,
		NoPassword,
		NoTemplate,
		SteamCmdRan,
	};
	// The click on "Upload": the uploader program first; unless it publishes, the Steam login dialog, then
	// the item file and SteamCMD.
	FReply OnUploadClicked();
	FText GetSteamUsernameText() const;
	FText GetSteamPasswordText() const;
	void OnSteamUsernameChanged(const FText& NewText);
	void OnSteamPasswordChanged(const FText& NewText);
	FReply OnSteamAuthAccept();
	FReply OnSteamAuthDecline();
	// Stores the dialog's answer and closes it.
	FReply AnswerSteamAuth(bool bConfirmed);
	// Makes a new SteamAuthWindow and shows it modally; bSteamAuthConfirmed is false unless "Accept" closed it.
	void ShowSteamAuthDialog();
	// Everything after an accepted dialog, with SteamUsername and SteamPassword as they stand: the two checks
	// (each with its error dialog), the item file, SteamCMD and the readback of the published id.
	ESteamUploadResult UploadWithSteamCredentials();
	// Runs the uploader program on the selected record; true when its exit code is a published id, which is
	// then in ItemSeamId and saved.
	bool RunUploaderRoute();
	static FString GetUploaderPath();
	// The uploader's whole command line for a record: unquoted program path, then the switches with values.
	static FString ComposeUploaderCommandLine(const FModSetup& Mod);
	// The command line as the program is given it: one byte a character, "?" for each above 0x7F.
	static std::string ToEightBitCommandLine(const FString& CommandLine);
	// Fills the template into the item file and copies the preview beside the content; false, after the
	// error dialog, when the template can't be read.
	bool MakeWorkshopItemFile();
	// The template's text with the six tokens replaced from the record.
	FString FillWorkshopTemplate(const FString& Template, const FModSetup& Mod) const;
	// Position of the visibility text among VisibilityOptions, ignoring case; 0 for any other text.
	int32 GetVisibilityNumber(const FString& Visibility) const;
	static FString GetWorkshopTemplatePath();
	static FString GetWorkshopItemFilePath(const FString& ModDir);
	static FString GetSteamCmdPath();
	// SteamCMD's arguments: the login, the build of the item file, and the end.
	static FString ComposeSteamCmdParameters(const FString& Username, const FString& Password, const FString& ItemFilePath);
	// Runs SteamCMD on the selected record's item file, waits for it, and takes the published id back.
	void RunSteamCmd();
	// The id on the first line that names "publishedfileid": its first numeric piece between double quotes.
	static bool ReadPublishedFileId(const FString& ItemFileText, FString& OutId);

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
	// SteamCMD logs in with the user name alone, on credentials it cached at an earlier login on this machine;
	// never set by the window, which always asks for the password.
	bool bSteamCachedLogin = false;
	FString TestOutputDir;
	// The last load found a file it couldn't parse; the first save keeps it before replacing it.
	bool bModDatabaseUnreadable = false;
	// The tick's hand for lines on their way into the log; kept so that its room is reused tick after tick.
	TArray<FString> TakenLines;
};

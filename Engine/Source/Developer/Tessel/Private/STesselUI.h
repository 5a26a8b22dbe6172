#pragma once

#include "CoreMinimal.h"
#include "Input/Reply.h"
#include "catalogue/ModSetup.h"

// The content of the tool tab: the mod catalogue, the selection, the log and the Steam credentials of this run.
class STesselTool
{
public:
	STesselTool() = default;
	virtual ~STesselTool() = default;

	void Construct();

	// Path helpers; none depends on the tool's state.
	static FString GetModToolsDir();
	static FString GetModOutputDir();
	static FString GetModDatabasePath();
	static FString GetModsContentDir();

	// Merges the mod folders on disk with the records of the database and selects the first record.
	void RefreshModList(bool bRebuildDetails);
	FReply OnRefreshClicked();

	// Replaces ModList with the records of the file at Path and, when it parses, SteamUsername.
	void LoadModDatabase(const FString& Path);
	// Writes every record and the Steam user name; with no records the file is left as it is.
	FReply SaveModDatabase();
	FReply OnResetGuidClicked();
	FReply OnResetPublisherIdClicked();
	void AddTag(const FString& Tag);
	void RemoveTag(const FString& Tag);

	TArray<TSharedPtr<FString>> LogMessages;
	bool bSteamAuthConfirmed = false;
	TArray<TSharedPtr<FModSetup>> ModList;
	TSharedPtr<FModSetup> SelectedMod;
	TArray<TSharedPtr<FString>> VisibilityOptions;
	FString SteamUsername;
	FString SteamPassword;
	FString TestOutputDir;

private:
	// The widget steps of a refresh; they act only once the widgets exist.
	void RebuildAfterRefresh(bool bRebuildDetails);
	void RefreshPreviewBrush();
};

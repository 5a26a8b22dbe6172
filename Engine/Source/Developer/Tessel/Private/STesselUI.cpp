#include "STesselUI.h"

#define LOCTEXT_NAMESPACE "STesselTool"

void STesselTool::Construct()
{
	bSteamAuthConfirmed = false;
	VisibilityOptions.Add(MakeShared<FString>(TEXT("Public")));
	VisibilityOptions.Add(MakeShared<FString>(TEXT("Friends Only")));
	VisibilityOptions.Add(MakeShared<FString>(TEXT("Hidden")));
	RefreshModList(false);
}

void STesselTool::RebuildAfterRefresh(bool /*bRebuildDetails*/)
{
	// No widgets yet: nothing to rebuild or select.
}

void STesselTool::RefreshPreviewBrush()
{
	// No preview brush yet.
}

#undef LOCTEXT_NAMESPACE

#include "STesselUI.h"

#include "HAL/PlatformFile.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SSplitter.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SHeaderRow.h"
#include "Widgets/Views/STableRow.h"
#include "catalogue/ModFields.h"
#include "cook/CookJob.h"

#define LOCTEXT_NAMESPACE "STesselTool"

void STesselTool::Construct(const FArguments& InArgs)
{
	bSteamAuthConfirmed = false;
	for (const FString& Label : VisibilityLabels())
	{
		VisibilityOptions.Add(MakeShared<FString>(Label));
	}
	RefreshModList(false);
	BuildLayout();
}

STesselTool::~STesselTool()
{
	// Edits reach the file when the tab closes; with no records the file stays as it was.
	SaveModDatabase();
	const FString SteamAppId = FPaths::ConvertRelativePathToFull(TEXT("steam_appid.txt"));
	FPlatformFileManager::Get().GetPlatformFile().DeleteFile(*SteamAppId);
}

// clang-format off
void STesselTool::BuildLayout()
{
	const FSlateBrush* GroupBorder = FEditorStyle::GetBrush(TEXT("ToolPanel.GroupBorder"));
	ChildSlot
	[
		SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.FillHeight(1.0f)
		[
			SNew(SSplitter)
			+ SSplitter::Slot()
			.Value(0.3f)
			[
				SNew(SBorder)
				.BorderImage(GroupBorder)
				.Padding(FMargin(3.0f))
				[
					SNew(SVerticalBox)
					+ SVerticalBox::Slot()
					.FillHeight(1.0f)
					.Padding(4.0f)
					[
						SAssignNew(ModListView, SListView<TSharedPtr<FModSetup>>)
						.ListItemsSource(&ModList)
						.ItemHeight(18.0f)
						.SelectionMode(ESelectionMode::SingleToggle)
						.OnGenerateRow(this, &STesselTool::OnGenerateModRow)
						.OnSelectionChanged(this, &STesselTool::OnModSelectionChanged)
						.HeaderRow
						(
							SNew(SHeaderRow)
							+ SHeaderRow::Column(TEXT("Mods")).DefaultLabel(LOCTEXT("Mods", "Mods"))
						)
					]
					+ SVerticalBox::Slot()
					.AutoHeight()
					[
						SNew(SHorizontalBox)
						+ SHorizontalBox::Slot()
						[
							SNew(SButton)
							.HAlign(HAlign_Center)
							.Text(LOCTEXT("RefreshMods", "Refresh"))
							.OnClicked(this, &STesselTool::OnRefreshClicked)
						]
						+ SHorizontalBox::Slot()
						[
							SNew(SButton)
							.HAlign(HAlign_Center)
							.Text(LOCTEXT("SaveMods", "Save All"))
							.OnClicked(this, &STesselTool::SaveModDatabase)
						]
					]
				]
			]
			+ SSplitter::Slot()
			.Value(0.7f)
			[
				SNew(SSplitter)
				.Orientation(Orient_Vertical)
				+ SSplitter::Slot()
				.Value(0.7f)
				[
					SAssignNew(DetailsScrollBox, SScrollBox)
					+ SScrollBox::Slot()
					[
						BuildDetailsPanel()
					]
				]
				+ SSplitter::Slot()
				.Value(0.3f)
				[
					SNew(SBorder)
					.BorderImage(GroupBorder)
					.Padding(FMargin(2.0f))
					[
						SNew(SVerticalBox)
						+ SVerticalBox::Slot()
						.FillHeight(1.0f)
						[
							SAssignNew(LogListView, SListView<TSharedPtr<FString>>)
							.ListItemsSource(&LogMessages)
							.ItemHeight(18.0f)
							.SelectionMode(ESelectionMode::SingleToggle)
							.OnGenerateRow(this, &STesselTool::OnGenerateLogRow)
							.AlwaysShowScrollbar(true)
							.HeaderRow
							(
								SNew(SHeaderRow)
								+ SHeaderRow::Column(TEXT("Log")).DefaultLabel(LOCTEXT("Log", "Status"))
							)
						]
						+ SVerticalBox::Slot()
						.AutoHeight()
						[
							SNew(SHorizontalBox)
							+ SHorizontalBox::Slot()
							.AutoWidth()
							.Padding(2.0f)
							[
								SNew(SButton)
								.Text(LOCTEXT("ClearLog", "Clear Logs"))
								.IsEnabled(this, &STesselTool::CanClearLogs)
								.OnClicked(this, &STesselTool::OnClearLogsClicked)
							]
							+ SHorizontalBox::Slot()
							.AutoWidth()
							.Padding(2.0f)
							[
								SNew(SButton)
								.Text(LOCTEXT("CancelJob", "Cancel"))
								.IsEnabled(this, &STesselTool::CanCancel)
								.OnClicked(this, &STesselTool::OnCancelClicked)
							]
							+ SHorizontalBox::Slot()
							.AutoWidth()
							.Padding(2.0f)
							[
								SAssignNew(StatusThrobber, SCircularThrobber)
								.Radius(10.0f)
								.Visibility(this, &STesselTool::GetStatusVisibility)
							]
						]
					]
				]
			]
		]
	];
}
// clang-format on

// clang-format off
TSharedRef<ITableRow> STesselTool::OnGenerateModRow(TSharedPtr<FModSetup> Item, const TSharedRef<STableViewBase>& OwnerTable)
{
	return SNew(STableRow<TSharedPtr<FModSetup>>, OwnerTable)
	[
		SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(0.0f)
		[
			SNew(STextBlock).Text(FText::FromString(Item->ModDir))
		]
	];
}
// clang-format on

// clang-format off
TSharedRef<ITableRow> STesselTool::OnGenerateLogRow(TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& OwnerTable)
{
	return SNew(STableRow<TSharedPtr<FString>>, OwnerTable)
	[
		SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(0.0f)
		[
			SNew(STextBlock).Text(FText::FromString(*Item))
		]
	];
}
// clang-format on

void STesselTool::OnModSelectionChanged(TSharedPtr<FModSetup> Item, ESelectInfo::Type SelectInfo)
{
	// A click that clears the row leaves the selection and the form as they are.
	if (!Item)
	{
		return;
	}
	SelectedMod = Item;
	BuildLayout();
	RefreshPreviewBrush();
}

FReply STesselTool::OnClearLogsClicked()
{
	LogMessages.Empty();
	if (LogListView)
	{
		LogListView->RequestListRefresh();
	}
	return FReply::Handled();
}

bool STesselTool::CanClearLogs() const
{
	return LogMessages.Num() > 0;
}

bool STesselTool::CanCancel() const
{
	return ActiveJobs.Num() > 0;
}

EVisibility STesselTool::GetStatusVisibility() const
{
	return ActiveJobs.Num() > 0 ? EVisibility::Visible : EVisibility::Hidden;
}

#undef LOCTEXT_NAMESPACE

// The form of the selected mod: a banner, the Cooking group and the Uploading group, each a grid of labels on
// the left (three tenths of the width) and widgets on the right; or, with no mod at all, a line that says how
// to make one.

#include "STesselUI.h"
#include "catalogue/ModFields.h"

#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SHyperlink.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SGridPanel.h"
#include "Widgets/Layout/SHeader.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "STesselTool"

// The widget trees keep the shape of the form they build.
// clang-format off

namespace
{
	// Every cell of both grids: nothing at the sides, 5 above and below.
	const FMargin CellPadding(0.0f, 5.0f);

	TSharedRef<SGridPanel> MakeGroupGrid()
	{
		return SNew(SGridPanel).FillColumn(0, 0.3f).FillColumn(1, 0.7f);
	}

	// A group of the form: a header over its grid, on the tool's panel background.
	TSharedRef<SWidget> MakeGroup(const FText& Title, const TSharedRef<SGridPanel>& Grid)
	{
		return SNew(SBorder)
			.BorderImage(FEditorStyle::GetBrush(TEXT("ToolPanel.GroupBorder")))
			.Padding(FMargin(2.0f))
			[
				SNew(SVerticalBox)
				+ SVerticalBox::Slot()
				.AutoHeight()
				[
					SNew(SHeader)
					[
						SNew(STextBlock).Text(Title)
					]
				]
				+ SVerticalBox::Slot()
				.AutoHeight()
				.Padding(2.0f)
				[
					Grid
				]
			];
	}

	void AddLabel(const TSharedRef<SGridPanel>& Grid, int32 Row, const FText& Label)
	{
		Grid->AddSlot(0, Row).Padding(CellPadding)[SNew(STextBlock).Text(Label)];
	}

	// A button in a box of fixed width, as the form's button rows have them.
	TSharedRef<SWidget> MakeBoxedButton(float Width, const FText& Label, const TAttribute<bool>& Enabled, const FOnClicked& OnClicked)
	{
		return SNew(SBox)
			.WidthOverride(Width)
			[
				SNew(SButton)
				.HAlign(HAlign_Center)
				.Text(Label)
				.IsEnabled(Enabled)
				.OnClicked(OnClicked)
			];
	}
}

TSharedRef<SWidget> STesselTool::BuildDetailsPanel()
{
	if (!SelectedMod)
	{
		return SNew(SVerticalBox)
			+ SVerticalBox::Slot()
			.HAlign(HAlign_Center)
			.VAlign(VAlign_Center)
			.Padding(10.0f)
			[
				SNew(STextBlock)
				.Justification(ETextJustify::Center)
				.Text(LOCTEXT("NoMods", "No Mods Available to Upload.\n Create a new map within a new subfolder of the 'Mods' folder, and then click refresh to Cook & Upload to Steam."))
			];
	}

	STesselTool* Self = this;
	auto Bind = [Self](bool (STesselTool::*Guard)() const) { return TAttribute<bool>::Create(Self, Guard); };
	auto Click = [Self](FReply (STesselTool::*Handler)()) { return FOnClicked::CreateSP(Self, Handler); };

	// Cooking ----------------------------------------------------------------------------------------------------
	TSharedRef<SGridPanel> Cooking = MakeGroupGrid();
	// Rows are counted as they are added, so that a row put in between moves the later ones by itself.
	int32 Row = 0;

	AddLabel(Cooking, Row, LOCTEXT("ModDir", "Mod Directory"));
	Cooking->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			SNew(SEditableText).Text(this, &STesselTool::GetModDirText)
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(5.0f, 0.0f, 0.0f, 0.0f)
		[
			SNew(SHyperlink)
			.Text(LOCTEXT("ViewItem", "View Item on Steam Workshop"))
			.Style(&FEditorStyle::Get(), TEXT("NavigationHyperlink"))
			.OnNavigate(this, &STesselTool::OnViewItem)
			.Visibility(this, &STesselTool::GetViewItemVisibility)
		]
	];

	++Row;
	AddLabel(Cooking, Row, LOCTEXT("ModMaps", "Maps"));
	Cooking->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SEditableTextBox)
		.Text(this, &STesselTool::GetMapsText)
		.OnTextChanged(this, &STesselTool::OnMapsChanged)
	];

	++Row;
	AddLabel(Cooking, Row, LOCTEXT("ModTestCookDir", "Test Mod Output Directory (EX:C:\\Steam\\steamapps\\common\\MERROW\\Orrery\\Content\\Mods)"));
	Cooking->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SEditableTextBox).OnTextChanged(this, &STesselTool::OnTestOutputDirChanged)
	];

	++Row;
	Cooking->AddSlot(0, Row).Padding(CellPadding)[SNew(SSpacer)];
	Cooking->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			MakeBoxedButton(100.0f, LOCTEXT("CookMapMod", "Cook Map"), Bind(&STesselTool::CanCookMap), Click(&STesselTool::OnCookMapClicked))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			MakeBoxedButton(100.0f, LOCTEXT("CookMod", "Cook Game Mod"), true, Click(&STesselTool::OnCookGameModClicked))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			MakeBoxedButton(170.0f, LOCTEXT("CookIslandExtension", "Cook Map Extension"), true, Click(&STesselTool::OnCookMapExtensionClicked))
		]
	];

	// Uploading --------------------------------------------------------------------------------------------------
	TSharedRef<SGridPanel> Uploading = MakeGroupGrid();
	Row = 0;

	AddLabel(Uploading, Row, LOCTEXT("PreviewImage", "Preview Image"));
	Uploading->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			[
				SNew(SBox)
				.WidthOverride(128.0f)
				.HeightOverride(128.0f)
				[
					SNew(SImage).Image(this, &STesselTool::GetPreviewBrush)
				]
			]
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, 5.0f, 0.0f, 0.0f)
		[
			SNew(SHorizontalBox)
			+ SHorizontalBox::Slot()
			.AutoWidth()
			[
				SNew(SButton)
				.Text(LOCTEXT("SelectPreviewImage", "Browse..."))
				.OnClicked(this, &STesselTool::OnBrowsePreviewImage)
			]
		]
	];

	++Row;
	AddLabel(Uploading, Row, LOCTEXT("ModTitle", "Title"));
	Uploading->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SEditableTextBox)
		.Text(this, &STesselTool::GetTitleText)
		.OnTextChanged(this, &STesselTool::OnTitleChanged)
	];

	++Row;
	AddLabel(Uploading, Row, LOCTEXT("ModDescription", "Description"));
	Uploading->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SMultiLineEditableTextBox)
		.AutoWrapText(true)
		.Text(this, &STesselTool::GetDescriptionText)
		.OnTextChanged(this, &STesselTool::OnDescriptionChanged)
	];

	++Row;
	AddLabel(Uploading, Row, LOCTEXT("ModVisibilty", "Visibility"));
	Uploading->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SComboBox<TSharedPtr<FString>>)
		.OptionsSource(&VisibilityOptions)
		.OnGenerateWidget(this, &STesselTool::MakeVisibilityRow)
		.OnSelectionChanged(this, &STesselTool::OnVisibilitySelected)
		[
			SNew(STextBlock).Text(TAttribute<FText>::CreateLambda([Self] { return FText::FromString(Self->GetVisibilityString()); }))
		]
	];

	// One row for each tag: its label on the left of the cell and its check box in the cell's middle.
	++Row;
	AddLabel(Uploading, Row, LOCTEXT("ModTags", "Tags:"));
	const TArray<FString>& Tags = TagLabels();
	for (int32 Index = 0; Index < Tags.Num(); ++Index, ++Row)
	{
		const FString Tag = Tags[Index];
		if (Index > 0)
		{
			Uploading->AddSlot(0, Row).Padding(CellPadding)[SNew(SSpacer)];
		}
		Uploading->AddSlot(1, Row).Padding(CellPadding).HAlign(HAlign_Left)[SNew(STextBlock).Text(FText(TEXT(LOCTEXT_NAMESPACE), TEXT("TagMod"), Tag))];
		Uploading->AddSlot(1, Row).Padding(CellPadding).HAlign(HAlign_Center)
		[
			SNew(SCheckBox)
			.IsChecked(IsTagActive(Tag) ? ECheckBoxState::Checked : ECheckBoxState::Unchecked)
			.OnCheckStateChanged_Lambda([Self, Tag](ECheckBoxState State) { Self->OnTagStateChanged(Tag, State); })
		];
	}

	AddLabel(Uploading, Row, LOCTEXT("ModChangeNotes", "Change Notes"));
	Uploading->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SMultiLineEditableTextBox)
		.AutoWrapText(true)
		.Text(this, &STesselTool::GetChangeNotesText)
		.OnTextChanged(this, &STesselTool::OnChangeNotesChanged)
	];

	++Row;
	Uploading->AddSlot(0, Row).Padding(CellPadding)[SNew(SSpacer)];
	Uploading->AddSlot(1, Row).Padding(CellPadding)
	[
		SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		[
			MakeBoxedButton(100.0f, LOCTEXT("UploadMod", "Upload"), Bind(&STesselTool::CanUpload), Click(&STesselTool::OnUploadClicked))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(10.0f, 0.0f, 0.0f, 0.0f)
		[
			MakeBoxedButton(100.0f, LOCTEXT("ResetPub", "Reset Publisher Id"), Bind(&STesselTool::CanResetPublisherId),
							Click(&STesselTool::OnResetPublisherIdClicked))
		]
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.Padding(10.0f, 0.0f, 0.0f, 0.0f)
		[
			MakeBoxedButton(100.0f, LOCTEXT("ResetGUID", "Reset Mod Guid"), true, Click(&STesselTool::OnResetGuidClicked))
		]
	];

	return SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SNew(SBorder)
			.BorderImage(FEditorStyle::GetBrush(TEXT("ToolPanel.GroupBorder")))
			.Padding(FMargin(2.0f))
			[
				SNew(SHorizontalBox)
				+ SHorizontalBox::Slot()
				.AutoWidth()
				.HAlign(HAlign_Left)
				[
					SNew(SImage).Image(FEditorStyle::GetBrush(TEXT("Merrow.MerrowLogo")))
				]
				+ SHorizontalBox::Slot()
				.FillWidth(1.0f)
				.HAlign(HAlign_Left)
				.VAlign(VAlign_Center)
				.Padding(5.0f)
				[
					SNew(STextBlock)
					.Text(LOCTEXT("Title", "Quillon Dev Kit"))
					.TextStyle(&FCoreStyle::Get(), TEXT("EmbossedText"))
				]
			]
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, 5.0f, 0.0f, 0.0f)
		[
			MakeGroup(LOCTEXT("CookingLabel", "Cooking"), Cooking)
		]
		+ SVerticalBox::Slot()
		.FillHeight(1.0f)
		.Padding(0.0f, 5.0f, 0.0f, 0.0f)
		[
			MakeGroup(LOCTEXT("UploadingLabel", "Uploading"), Uploading)
		];
}

// clang-format on

#undef LOCTEXT_NAMESPACE

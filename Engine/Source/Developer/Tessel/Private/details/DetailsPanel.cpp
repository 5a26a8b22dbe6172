#include "STesselUI.h"

#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "STesselTool"

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

	// The record as it stands, read-only, until the editing form takes this place.
	TSharedRef<SGridPanel> Grid = SNew(SGridPanel).FillColumn(0, 0.3f).FillColumn(1, 0.7f);
	int32 Row = 0;
	auto AddRow = [&](const FText& Label, FString FModSetup::*Field)
	{
		TSharedPtr<FModSetup> Record = SelectedMod;
		Grid->AddSlot(0, Row).Padding(0.0f, 5.0f)[SNew(STextBlock).Text(Label)];
		Grid->AddSlot(1, Row).Padding(0.0f, 5.0f)
		[
			SNew(STextBlock).Text(TAttribute<FText>::CreateLambda([Record, Field] { return FText::FromString((*Record).*Field); }))
		];
		++Row;
	};
	AddRow(LOCTEXT("ModDir", "Mod Directory"), &FModSetup::ModDir);
	AddRow(LOCTEXT("ModMaps", "Maps"), &FModSetup::Maps);
	AddRow(LOCTEXT("ModTitle", "Title"), &FModSetup::Title);
	AddRow(LOCTEXT("ModDescription", "Description"), &FModSetup::Description);
	AddRow(LOCTEXT("ModVisibilty", "Visibility"), &FModSetup::Visibility);
	AddRow(LOCTEXT("ModTags", "Tags:"), &FModSetup::Tags);
	AddRow(LOCTEXT("ModChangeNotes", "Change Notes"), &FModSetup::ChangeNotes);

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
			Grid
		];
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

#undef LOCTEXT_NAMESPACE

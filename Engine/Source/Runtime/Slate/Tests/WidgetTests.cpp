#include "SlateTestMain.h"
#include "SlateTestWindow.h"

#include "Framework/Docking/TabManager.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SListView.h"
#include "Widgets/Views/STableRow.h"

#include <fstream>
#include <memory>

#define LOCTEXT_NAMESPACE "WidgetTests"

using namespace SlateTest;

TESSEL_WIDGET_TEST_MAIN()

namespace
{
	TSharedRef<ITableRow> MakeTextRow(TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& Owner, int32* Calls)
	{
		++*Calls;
		return SNew(STableRow<TSharedPtr<FString>>, Owner)[SNew(STextBlock).Text(FText::FromString(*Item))];
	}
}

TEST(WidgetTests, BoundAttributesAreAskedAgainEveryFrame)
{
	FString Shown = TEXT("first");
	bool bEnabled = false;
	EVisibility Visibility = EVisibility::Visible;
	TSharedPtr<STextBlock> Text;
	TSharedPtr<SButton> Button;
	TSharedPtr<STextBlock> Neighbour;
	TSharedRef<SWidget> Root = SNew(SHorizontalBox)
		+ SHorizontalBox::Slot().AutoWidth()[SAssignNew(Text, STextBlock).Text(TAttribute<FText>::CreateLambda([&] { return FText::FromString(Shown); }))]
		+ SHorizontalBox::Slot().AutoWidth()[SAssignNew(Button, SButton)
												 .Text(LOCTEXT("Go", "Go"))
												 .IsEnabled(TAttribute<bool>::CreateLambda([&] { return bEnabled; }))
												 .Visibility(TAttribute<EVisibility>::CreateLambda([&] { return Visibility; }))]
		+ SHorizontalBox::Slot().AutoWidth()[SAssignNew(Neighbour, STextBlock).Text(LOCTEXT("Right", "right"))];
	FTestWindow Window(Root);

	EXPECT_EQ(GetShownText(*Text), FString(TEXT("first")));
	EXPECT_FALSE(IsEnabledOnScreen(*Button));
	Shown = TEXT("second");
	bEnabled = true;
	TickFrames(1);
	EXPECT_EQ(GetShownText(*Text), FString(TEXT("second")));
	EXPECT_TRUE(IsEnabledOnScreen(*Button));

	// Hidden keeps the button's place in the row, Collapsed gives it up. The new label's size reaches the
	// outer layouts over a few frames; the place is measured once they have settled.
	TickFrames(5);
	const int32 NeighbourX = GetGeometry(*Neighbour).X;
	EXPECT_TRUE(IsShown(*Button));
	Visibility = EVisibility::Hidden;
	TickFrames();
	EXPECT_FALSE(IsShown(*Button));
	EXPECT_EQ(GetGeometry(*Neighbour).X, NeighbourX);
	Visibility = EVisibility::Collapsed;
	TickFrames();
	EXPECT_FALSE(IsShown(*Button));
	EXPECT_LT(GetGeometry(*Neighbour).X, NeighbourX);
	EXPECT_EQ(FindWidgetByKey(Root, TEXT("Go")), TSharedPtr<SWidget>(Button));
}

TEST(WidgetTests, ARowOfAutoSlotsKeepsItsLayoutFromFrameToFrame)
{
	TSharedPtr<SHorizontalBox> Row;
	TSharedPtr<STextBlock> A;
	TSharedPtr<STextBlock> B;
	TSharedRef<SWidget> Root = SAssignNew(Row, SHorizontalBox)
		+ SHorizontalBox::Slot().AutoWidth()[SAssignNew(A, STextBlock).Text(LOCTEXT("A", "a"))]
		+ SHorizontalBox::Slot().AutoWidth()[SAssignNew(B, STextBlock).Text(LOCTEXT("B", "b"))];
	FTestWindow Window(Root);
	// The two slots stand side by side at the row's left, each at its natural width, with the room left over
	// after them.
	const FSlateTestRect RowAt = GetGeometry(*Row);
	const FSlateTestRect AAt = GetSlotGeometry(*A);
	const FSlateTestRect BAt = GetSlotGeometry(*B);
	EXPECT_EQ(AAt.X, RowAt.X);
	EXPECT_EQ(BAt.X, AAt.Right());
	EXPECT_EQ(AAt.Width, GetPreferredSize(*A).Width);
	EXPECT_EQ(BAt.Width, GetPreferredSize(*B).Width);
	EXPECT_LT(BAt.Right(), RowAt.Right() - 100);
	TickFrames(50);
	EXPECT_EQ(GetSlotGeometry(*A), AAt);
	EXPECT_EQ(GetSlotGeometry(*B), BAt);

	// A slot added later stands right after the others, still at the left.
	TSharedPtr<STextBlock> C;
	Row->AddSlot().AutoWidth()[SAssignNew(C, STextBlock).Text(LOCTEXT("C", "c"))];
	TickFrames(5);
	EXPECT_EQ(GetSlotGeometry(*A), AAt);
	EXPECT_EQ(GetSlotGeometry(*B), BAt);
	const FSlateTestRect CAt = GetSlotGeometry(*C);
	EXPECT_EQ(CAt.X, BAt.Right());
	EXPECT_EQ(CAt.Width, GetPreferredSize(*C).Width);
	EXPECT_LT(CAt.Right(), RowAt.Right() - 100);
}

TEST(WidgetTests, ButtonsCallTheirHandlerOnlyWhenEnabled)
{
	int32 Clicks = 0;
	bool bEnabled = true;
	TSharedPtr<SButton> Button;
	TSharedRef<SWidget> Root = SAssignNew(Button, SButton)
		.Text(LOCTEXT("Press", "Press"))
		.IsEnabled(TAttribute<bool>::CreateLambda([&] { return bEnabled; }))
		.OnClicked_Lambda([&] { ++Clicks; return FReply::Handled(); });
	FTestWindow Window(Root);
	Click(*Button);
	EXPECT_EQ(Clicks, 1);
	bEnabled = false;
	TickFrames(1);
	Click(*Button);
	EXPECT_FALSE(Button->Click().IsEventHandled());
	EXPECT_EQ(Clicks, 1);
}

TEST(WidgetTests, ListViewMakesRowsOnlyForWhatShowsAndGrowsByAppending)
{
	TArray<TSharedPtr<FString>> Items;
	for (int32 Index = 0; Index < 100000; ++Index)
	{
		Items.Add(MakeShared<FString>(FString::Printf(TEXT("line %d"), Index)));
	}
	int32 RowsMade = 0;
	TSharedPtr<SListView<TSharedPtr<FString>>> List;
	TSharedRef<SWidget> Root = SAssignNew(List, SListView<TSharedPtr<FString>>)
		.ListItemsSource(&Items)
		.ItemHeight(18.0f)
		.OnGenerateRow_Lambda([&](TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& Owner)
							  { return MakeTextRow(Item, Owner, &RowsMade); });
	FTestWindow Window(Root);
	EXPECT_EQ(GetListRowCount(*List), 100000);
	EXPECT_LT(RowsMade, 200);
	EXPECT_EQ(GetListRowText(*List, 0), FString(TEXT("line 0")));

	FSlateListWatch Changes(*List);
	Items.Add(MakeShared<FString>(TEXT("appended")));
	List->RequestListRefresh();
	List->RequestScrollIntoView(Items.Last());
	TickFrames();
	EXPECT_EQ(Changes.GetRowsInserted(), 1);
	EXPECT_EQ(Changes.GetResets(), 0);
	EXPECT_EQ(GetListRowCount(*List), 100001);
	EXPECT_TRUE(List->IsItemVisible(Items.Last()));
	EXPECT_FALSE(List->IsItemVisible(Items[0]));
	EXPECT_LT(RowsMade, 400);

	// Emptying and refilling is no append: the model starts over.
	Items.Empty();
	Items.Add(MakeShared<FString>(TEXT("fresh")));
	List->RequestListRefresh();
	TickFrames();
	EXPECT_EQ(Changes.GetResets(), 1);
	EXPECT_EQ(GetListRowText(*List, 0), FString(TEXT("fresh")));
}

TEST(WidgetTests, SelectionByCodeRaisesTheEventAndAToggleClickClearsIt)
{
	TArray<TSharedPtr<FString>> Items{MakeShared<FString>(TEXT("a")), MakeShared<FString>(TEXT("b"))};
	TArray<TPair<TSharedPtr<FString>, ESelectInfo::Type>> Events;
	int32 RowsMade = 0;
	TSharedPtr<SListView<TSharedPtr<FString>>> List;
	TSharedRef<SWidget> Root = SAssignNew(List, SListView<TSharedPtr<FString>>)
		.ListItemsSource(&Items)
		.SelectionMode(ESelectionMode::SingleToggle)
		.OnGenerateRow_Lambda([&](TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& Owner)
							  { return MakeTextRow(Item, Owner, &RowsMade); })
		.OnSelectionChanged_Lambda([&](TSharedPtr<FString> Item, ESelectInfo::Type Info) { Events.Add({Item, Info}); });
	FTestWindow Window(Root);

	List->SetSelection(Items[1], ESelectInfo::Direct);
	ASSERT_EQ(Events.Num(), 1);
	EXPECT_EQ(Events[0].Key, Items[1]);
	EXPECT_EQ(Events[0].Value, ESelectInfo::Direct);

	// A real click on the selected row clears the selection; a click on another row selects it.
	ClickListRow(*List, 1);
	ASSERT_EQ(Events.Num(), 2);
	EXPECT_FALSE(Events[1].Key.IsValid());
	EXPECT_EQ(Events[1].Value, ESelectInfo::OnMouseClick);
	EXPECT_EQ(List->GetNumItemsSelected(), 0);
	List->ClickRow(0);
	ASSERT_EQ(Events.Num(), 3);
	EXPECT_EQ(Events[2].Key, Items[0]);
	EXPECT_TRUE(List->IsItemSelected(Items[0]));
}

TEST(WidgetTests, ATreeReplacedFromInsideItsOwnEventLivesUntilTheEventReturns)
{
	// A compound widget whose list rebuilds the whole child slot from its selection event, as the tool does.
	class SRebuilder : public SCompoundWidget
	{
	public:
		SLATE_BEGIN_ARGS(SRebuilder) {}
		SLATE_END_ARGS()
		void Construct(const FArguments&)
		{
			Items = {MakeShared<FString>(TEXT("x")), MakeShared<FString>(TEXT("y"))};
			Build();
		}
		void Build()
		{
			ChildSlot[SAssignNew(List, SListView<TSharedPtr<FString>>)
						  .ListItemsSource(&Items)
						  .SelectionMode(ESelectionMode::SingleToggle)
						  .OnGenerateRow_Lambda([this](TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& Owner)
												{ return MakeTextRow(Item, Owner, &Rows); })
						  .OnSelectionChanged_Lambda([this](TSharedPtr<FString>, ESelectInfo::Type)
													 {
														 ++Rebuilds;
														 Build();
													 })];
		}
		TArray<TSharedPtr<FString>> Items;
		TSharedPtr<SListView<TSharedPtr<FString>>> List;
		int32 Rows = 0;
		int32 Rebuilds = 0;
	};

	TSharedRef<SRebuilder> Rebuilder = SNew(SRebuilder);
	FTestWindow Window(Rebuilder);
	for (int32 Round = 0; Round < 5; ++Round)
	{
		TWeakPtr<SWidget> OldList = Rebuilder->List;
		ASSERT_TRUE(IsShown(*Rebuilder->List));
		ClickListRow(*Rebuilder->List, Round % 2);
		TickFrames();
		EXPECT_EQ(Rebuilder->Rebuilds, Round + 1);
		EXPECT_FALSE(OldList.IsValid()); // the old list went once its event had returned
	}
}

TEST(WidgetTests, CheckBoxesEditableTextsAndComboBoxes)
{
	TArray<ECheckBoxState> States;
	TArray<FString> Typed;
	FString Bound = TEXT("from getter");
	TArray<TSharedPtr<FString>> Options{MakeShared<FString>(TEXT("Public")), MakeShared<FString>(TEXT("Hidden"))};
	TSharedPtr<FString> Chosen;
	TSharedPtr<SCheckBox> Box;
	TSharedPtr<SEditableTextBox> Line;
	TSharedPtr<SEditableTextBox> Password;
	TSharedPtr<SComboBox<TSharedPtr<FString>>> Combo;
	TSharedRef<SWidget> Root = SNew(SVerticalBox)
		+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Box, SCheckBox).OnCheckStateChanged_Lambda([&](ECheckBoxState State) { States.Add(State); })]
		+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Line, SEditableTextBox)
												.Text(TAttribute<FText>::CreateLambda([&] { return FText::FromString(Bound); }))
												.OnTextChanged_Lambda([&](const FText& Text) { Typed.Add(Text.ToString()); })]
		+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Password, SEditableTextBox).IsPassword(true)]
		+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Combo, SComboBox<TSharedPtr<FString>>)
												.OptionsSource(&Options)
												.OnGenerateWidget_Lambda([](TSharedPtr<FString> Option) -> TSharedRef<SWidget> { return SNew(STextBlock).Text(FText::FromString(*Option)); })
												.OnSelectionChanged_Lambda([&](TSharedPtr<FString> Option, ESelectInfo::Type) { Chosen = Option; })
												[SNew(STextBlock).Text(LOCTEXT("Vis", "Visibility"))]];
	FTestWindow Window(Root);

	Click(*Box);
	Box->ToggleCheckedState();
	ASSERT_EQ(States.Num(), 2);
	EXPECT_EQ(States[0], ECheckBoxState::Checked);
	EXPECT_EQ(States[1], ECheckBoxState::Unchecked);
	EXPECT_FALSE(IsChecked(*Box));

	EXPECT_EQ(GetShownText(*Line), FString(TEXT("from getter")));
	Focus(*Line);
	TypeText(*Line, TEXT("!"));
	ASSERT_EQ(Typed.Num(), 1);
	EXPECT_EQ(Typed[0], FString(TEXT("from getter!")));
	Bound = TEXT("changed by code");
	TickFrames(1);
	EXPECT_EQ(GetShownText(*Line), FString(TEXT("changed by code")));
	EXPECT_EQ(Typed.Num(), 1); // text set by the getter is no user change
	EXPECT_FALSE(IsMasked(*Line));
	EXPECT_TRUE(IsMasked(*Password));

	EXPECT_EQ(Combo->NumOptions(), 2);
	EXPECT_EQ(Combo->GetOptionText(1), FString(TEXT("Hidden")));
	Combo->ChooseOption(1);
	EXPECT_EQ(Chosen, Options[1]);
}

TEST(WidgetTests, DynamicImagesLoadWhenDrawnAndUnreadableFilesShowNothing)
{
	const std::string Path = testing::TempDir() + "tessel-image.png";
	ASSERT_TRUE(WriteSolidPng(FString(Path), 8, 8, 0xFFFF0000));
	FSlateDynamicImageBrush Good(FString(Path), FVector2D(128, 128));
	FSlateDynamicImageBrush Missing(TEXT("/no/such/picture.png"), FVector2D(128, 128));
	std::ofstream(testing::TempDir() + "tessel-broken.png") << "not a picture";
	FSlateDynamicImageBrush Broken(FString(testing::TempDir() + "tessel-broken.png"), FVector2D(128, 128));
	const FSlateBrush* Current = &Good;
	TSharedPtr<SImage> Image;
	TSharedRef<SWidget> Root = SAssignNew(Image, SImage).Image(TAttribute<const FSlateBrush*>::CreateLambda([&] { return Current; }));
	FTestWindow Window(Root);
	EXPECT_TRUE(Image->HasPicture());
	Current = &Missing;
	TickFrames(1);
	EXPECT_FALSE(Image->HasPicture());
	Current = &Broken;
	TickFrames(1);
	EXPECT_FALSE(Image->HasPicture());
}

TEST(WidgetTests, NomadTabsAreSpawnedByTheirRegisteredSpawner)
{
	TSharedRef<FGlobalTabmanager> Tabs = FGlobalTabmanager::Get();
	int32 Spawned = 0;
	Tabs->RegisterNomadTabSpawner(TEXT("TestTab"), FOnSpawnTab::CreateLambda([&](const FSpawnTabArgs& Args)
		{
			++Spawned;
			TSharedRef<SDockTab> Tab = SNew(SDockTab).TabRole(ETabRole::NomadTab);
			Tab->SetContent(SNew(STextBlock).Text(FText::FromString(Args.TabId)));
			return Tab;
		})).SetDisplayName(LOCTEXT("TestTabTitle", "Test tab"));
	ASSERT_TRUE(Tabs->HasTabSpawner(TEXT("TestTab")));
	TSharedPtr<SDockTab> Tab = Tabs->InvokeTab(TEXT("TestTab"));
	ASSERT_TRUE(Tab);
	EXPECT_EQ(Spawned, 1);
	EXPECT_EQ(Tab->GetTabRole(), ETabRole::NomadTab);
	EXPECT_EQ(Tab->GetTabLabel().ToString(), FString(TEXT("Test tab")));
	EXPECT_EQ(Tab->GetContent()->GetDisplayText(), FString(TEXT("TestTab")));
	EXPECT_TRUE(Tabs->UnregisterNomadTabSpawner(TEXT("TestTab")));
	EXPECT_FALSE(Tabs->InvokeTab(TEXT("TestTab")));
}

#undef LOCTEXT_NAMESPACE

// The headless backend: widgets keep every behaviour the tool relies on (clicks, typing, selection, bound
// attributes, keys, ticking) while nothing is drawn and no native widget is ever made.

#include "Framework/Application/SlateApplication.h"
#include "Widgets/Images/SThrobber.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SWindow.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SListView.h"
#include "Widgets/Views/STableRow.h"

#include <gtest/gtest.h>

#define LOCTEXT_NAMESPACE "HeadlessWidgetTests"

namespace
{
	struct FHeadlessApplication
	{
		FHeadlessApplication()
		{
			int ArgC = 0;
			FSlateApplication::Create(ArgC, nullptr);
		}
		~FHeadlessApplication() { FSlateApplication::Shutdown(); }
	};

	void ExpectNothingNative(const TSharedRef<SWidget>& Root)
	{
		TArray<TSharedRef<SWidget>> Stack{Root};
		int32 Seen = 0;
		while (Stack.Num() > 0)
		{
			TSharedRef<SWidget> Widget = Stack.Pop();
			++Seen;
			EXPECT_EQ(Widget->GetNativeWidget(), nullptr) << Widget->GetTypeName();
			EXPECT_FALSE(Widget->HasNativeWidget());
			for (const TSharedRef<SWidget>& Child : Widget->GetChildren())
			{
				Stack.Add(Child);
			}
		}
		EXPECT_GT(Seen, 1);
	}
}

TEST(HeadlessWidgetTests, WidgetsBehaveWithNothingDrawn)
{
	FHeadlessApplication Application;
	FString Shown = TEXT("first");
	bool bEnabled = false;
	int32 Clicks = 0;
	FString Typed;
	ECheckBoxState Checked = ECheckBoxState::Unchecked;
	TSharedPtr<STextBlock> Text;
	TSharedPtr<SButton> Button;
	TSharedPtr<SEditableText> Edit;
	TSharedPtr<SCheckBox> Box;
	TSharedPtr<SCircularThrobber> Throbber;
	TSharedPtr<SVerticalBox> Column;
	TSharedRef<SWindow> Window = SNew(SWindow).Title(LOCTEXT("Title", "Tool"))
		[SAssignNew(Column, SVerticalBox)
		 + SVerticalBox::Slot()[SAssignNew(Text, STextBlock).Text(TAttribute<FText>::CreateLambda([&] { return FText::FromString(Shown); }))]
		 + SVerticalBox::Slot()[SAssignNew(Button, SButton)
									.Text(LOCTEXT("Go", "Go"))
									.IsEnabled(TAttribute<bool>::CreateLambda([&] { return bEnabled; }))
									.OnClicked_Lambda([&] { ++Clicks; return FReply::Handled(); })]
		 + SVerticalBox::Slot()[SAssignNew(Edit, SEditableText)
									.Text(FText::FromString(TEXT("start")))
									.OnTextChanged_Lambda([&](const FText& NewText) { Typed = NewText.ToString(); })]
		 + SVerticalBox::Slot()[SAssignNew(Box, SCheckBox).OnCheckStateChanged_Lambda([&](ECheckBoxState State) { Checked = State; })]
		 + SVerticalBox::Slot()[SAssignNew(Throbber, SCircularThrobber).Period(1.0f)]];

	ExpectNothingNative(Window);
	EXPECT_EQ(FindWidgetByKey(Window, TEXT("Go")), TSharedPtr<SWidget>(Button));
	EXPECT_EQ(FindWidgetByKey(Window, TEXT("Title")), TSharedPtr<SWidget>(Window));

	// Attributes are asked each time: a bound text shows its getter's answer, a disabled button refuses.
	EXPECT_EQ(Text->GetDisplayText(), FString(TEXT("first")));
	Shown = TEXT("second");
	FSlateApplication::Get().Tick(0.25f);
	EXPECT_EQ(Text->GetDisplayText(), FString(TEXT("second")));
	EXPECT_FALSE(Button->Click().IsEventHandled());
	bEnabled = true;
	EXPECT_TRUE(Button->Click().IsEventHandled());
	EXPECT_EQ(Clicks, 1);

	EXPECT_EQ(Edit->GetShownText(), FString(TEXT("start")));
	Edit->SetTextFromUser(TEXT("typed"));
	EXPECT_EQ(Typed, FString(TEXT("typed")));
	EXPECT_EQ(Edit->GetShownText(), FString(TEXT("typed")));
	Box->ToggleCheckedState();
	EXPECT_EQ(Checked, ECheckBoxState::Checked);
	EXPECT_TRUE(Box->IsChecked());

	// Time goes on for the widgets that tick.
	EXPECT_NEAR(Throbber->GetPhase(), 0.25, 1e-9);
	FSlateApplication::Get().Tick(0.5f);
	EXPECT_NEAR(Throbber->GetPhase(), 0.75, 1e-9);

	// Children come and go without a layout to keep.
	EXPECT_EQ(Column->GetChildren().Num(), 5);
	Column->ClearChildren();
	EXPECT_EQ(Column->GetChildren().Num(), 0);
	Column->AddSlot()[SNew(STextBlock).Text(LOCTEXT("Again", "again"))];
	EXPECT_EQ(Column->GetChildren().Num(), 1);
	Window->RequestDestroyWindow();
	EXPECT_TRUE(Window->IsDestroyRequested());
}

TEST(HeadlessWidgetTests, ListsSelectAndMakeRowsWithNothingShown)
{
	FHeadlessApplication Application;
	TArray<TSharedPtr<FString>> Items{MakeShared<FString>(TEXT("Alpha")), MakeShared<FString>(TEXT("Beta"))};
	TArray<TSharedPtr<FString>> Selections;
	TSharedPtr<SListView<TSharedPtr<FString>>> List;
	SAssignNew(List, SListView<TSharedPtr<FString>>)
		.ListItemsSource(&Items)
		.SelectionMode(ESelectionMode::SingleToggle)
		.OnGenerateRow_Lambda([](TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& Owner)
							  { return SNew(STableRow<TSharedPtr<FString>>, Owner)[SNew(STextBlock).Text(FText::FromString(*Item))]; })
		.OnSelectionChanged_Lambda([&](TSharedPtr<FString> Item, ESelectInfo::Type) { Selections.Add(Item); });

	EXPECT_EQ(List->GetRowText(1), FString(TEXT("Beta")));
	List->ClickRow(1);
	EXPECT_EQ(List->GetSelectedItems(), (TArray<TSharedPtr<FString>>{Items[1]}));
	// A second click on the selected row clears the selection in the toggling mode.
	List->ClickRow(1);
	EXPECT_EQ(List->GetNumItemsSelected(), 0);
	EXPECT_EQ(Selections, (TArray<TSharedPtr<FString>>{Items[1], nullptr}));

	Items.Add(MakeShared<FString>(TEXT("Gamma")));
	List->RequestListRefresh();
	List->RequestScrollIntoView(Items.Last());
	FSlateApplication::Get().Tick();
	EXPECT_EQ(List->GetRowText(2), FString(TEXT("Gamma")));
	// Nothing is on a screen, so no item counts as visible.
	EXPECT_FALSE(List->IsItemVisible(Items.Last()));
	List->ClickRow(7); // past the end: ignored
	EXPECT_EQ(Selections.Num(), 2);
}

#undef LOCTEXT_NAMESPACE

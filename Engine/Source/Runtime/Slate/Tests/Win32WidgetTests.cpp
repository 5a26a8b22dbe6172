// The Win32 backend on a real display (under Wine in the test command): windows placed by the shared layout,
// input sent as the system sends it (messages to the controls, frames ticked by the test), a tree rebuilt inside
// a list's own event, and bad input (a picture that can't be decoded, a window closed inside its modal loop).

#include "EditorServices.h"
#include "Framework/Application/SlateApplication.h"
#include "SlateWin32.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/Layout/SBox.h"
#include "Styling/SlateBrush.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SWindow.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SListView.h"
#include "Widgets/Views/STableRow.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

using namespace SlateWin32;

namespace
{
	void Frames(int Count = 3)
	{
		for (int Frame = 0; Frame < Count; ++Frame)
		{
			FSlateApplication::Get().Tick();
		}
	}

	// A shown top-level window holding Content, as the host holds the tool's tab.
	struct FShown
	{
		explicit FShown(const TSharedRef<SWidget>& Content)
		{
			Window = SNew(SWindow).ClientSize(FVector2D(400, 300))[Content];
			Native = static_cast<HWND>(Window->GetNativeWindowHandle());
			ShowWindow(Native, SW_SHOW);
			Frames();
		}
		~FShown()
		{
			DestroyWindow(Native);
			Frames();
		}
		TSharedPtr<SWindow> Window;
		HWND Native = nullptr;
	};

	RECT PlaceInWindow(HWND Child, HWND Top)
	{
		RECT Place;
		GetWindowRect(Child, &Place);
		MapWindowPoints(nullptr, Top, reinterpret_cast<POINT*>(&Place), 2);
		return Place;
	}

	void Type(HWND Edit, const wchar_t* Text)
	{
		SetFocus(Edit);
		for (const wchar_t* Each = Text; *Each; ++Each)
		{
			SendMessageW(Edit, WM_CHAR, *Each, 1);
		}
	}
}

TEST(Win32WidgetTests, WindowsStandWhereTheLayoutPutsThemAndHearTheirControls)
{
	int32 Clicks = 0;
	FString Typed;
	TSharedPtr<SButton> Button;
	TSharedPtr<SEditableTextBox> Line;
	TSharedPtr<SMultiLineEditableTextBox> Notes;
	TSharedRef<SVerticalBox> Column = SNew(SVerticalBox)
		+ SVerticalBox::Slot().AutoHeight().Padding(10, 5)
		[
			SAssignNew(Button, SButton).Text(FText::FromString(TEXT("Cook Map"))).OnClicked_Lambda([&] { ++Clicks; return FReply::Handled(); })
		]
		+ SVerticalBox::Slot().AutoHeight()[SAssignNew(Line, SEditableTextBox).OnTextChanged_Lambda([&](const FText& Text) { Typed = Text.ToString(); })]
		+ SVerticalBox::Slot().FillHeight(1.0f)[SAssignNew(Notes, SMultiLineEditableTextBox).OnTextChanged_Lambda([&](const FText& Text) { Typed = Text.ToString(); })];
	FShown Shown(Column);

	// The window (its 8 pixels of margin included) places the column; the column places the button inside its
	// slot's padding, as wide as the column and as high as the button asks.
	const float Scale = GetScale();
	HWND ButtonWindow = FindHwnd(*Button);
	ASSERT_TRUE(ButtonWindow);
	ASSERT_TRUE(IsWindowVisible(ButtonWindow));
	const RECT Place = PlaceInWindow(ButtonWindow, Shown.Native);
	RECT Client;
	GetClientRect(Shown.Native, &Client);
	EXPECT_EQ(Place.left, static_cast<LONG>(18 * Scale));
	EXPECT_EQ(Place.top, static_cast<LONG>(13 * Scale));
	EXPECT_EQ(Place.right, Client.right - static_cast<LONG>(18 * Scale));
	EXPECT_EQ(Place.bottom - Place.top, static_cast<LONG>(Button->ComputeDesiredSize(Scale).Height));
	EXPECT_EQ(GetWindowTextOf(ButtonWindow), FString(TEXT("Cook Map")));
	// Tab walks the controls in the layout's order: button, line, notes.
	EXPECT_EQ(GetNextDlgTabItem(Shown.Native, ButtonWindow, FALSE), FindHwnd(*Line));
	EXPECT_EQ(GetNextDlgTabItem(Shown.Native, FindHwnd(*Line), FALSE), FindHwnd(*Notes));

	// A click as the control reports it reaches the button's handler; a greyed-out button hears none.
	SendMessageW(ButtonWindow, BM_CLICK, 0, 0);
	EXPECT_EQ(Clicks, 1);
	Button->SetEnabled(false);
	Frames();
	EXPECT_FALSE(IsWindowEnabled(ButtonWindow));
	SendMessageW(ButtonWindow, BM_CLICK, 0, 0);
	EXPECT_EQ(Clicks, 1);

	// Typing reaches the handler key by key; a multi-line box hands its lines on with LF, as the widgets keep them.
	Type(FindHwnd(*Line), L"Isles");
	EXPECT_EQ(Typed, FString(TEXT("Isles")));
	Type(FindHwnd(*Notes), L"one\rtwo");
	EXPECT_EQ(Typed, FString(TEXT("one\ntwo")));
	// Text set by the code shows with the system's CR LF and tells no handler.
	Typed.Empty();
	Notes->SetTextFromUser(TEXT("a\nb"));
	EXPECT_EQ(GetWindowTextOf(FindHwnd(*Notes)), FString(TEXT("a\r\nb")));
	EXPECT_EQ(Notes->GetShownText(), FString(TEXT("a\nb")));
}

TEST(Win32WidgetTests, ABoxFilledBeforeItHasAWidthShowsItsTextFromTheStart)
{
	// A box made with its text has no width yet, and its cursor stands after the text; once placed, the text is
	// read from its first letter, and typing still goes on at the end.
	FString Typed;
	TSharedRef<SEditableTextBox> Maps = SNew(SEditableTextBox)
		.Text(FText::FromString(TEXT("Alpha,Beta")))
		.OnTextChanged_Lambda([&](const FText& Text) { Typed = Text.ToString(); });
	FShown Shown(Maps);
	HWND Edit = FindHwnd(*Maps);
	ASSERT_TRUE(Edit);
	const LRESULT First = SendMessageW(Edit, EM_CHARFROMPOS, 0, MAKELPARAM(static_cast<int>(4 * GetScale()), 5));
	EXPECT_EQ(LOWORD(First), 0);
	Type(Edit, L"!");
	EXPECT_EQ(Typed, FString(TEXT("Alpha,Beta!")));
}

TEST(Win32WidgetTests, ALabelBesideATallerBoxStandsCentredAtItsOwnHeight)
{
	// As a form's label beside a picture: the system draws a label's lines from its top, so the label's window
	// is only as tall as its text, in the middle of the row.
	TSharedRef<STextBlock> Label = SNew(STextBlock).Text(FText::FromString(TEXT("Preview Image")));
	TSharedRef<SHorizontalBox> Row = SNew(SHorizontalBox)
		+ SHorizontalBox::Slot().AutoWidth()[Label]
		+ SHorizontalBox::Slot().AutoWidth()[SNew(SBox).WidthOverride(128).HeightOverride(128)];
	FShown Shown(SNew(SVerticalBox) + SVerticalBox::Slot().AutoHeight()[Row]);
	const RECT Place = PlaceInWindow(FindHwnd(*Label), Shown.Native);
	const RECT Whole = PlaceInWindow(FindHwnd(*Row), Shown.Native);
	const LONG Own = static_cast<LONG>(Label->ComputeDesiredSize(GetScale()).Height);
	EXPECT_EQ(Place.bottom - Place.top, Own);
	EXPECT_NEAR((Place.top + Place.bottom) / 2.0, (Whole.top + Whole.bottom) / 2.0, 1.0);
}

TEST(Win32WidgetTests, ArrowKeysSelectRowsAndATreeRebuiltInTheListsOwnEventLives)
{
	TArray<TSharedPtr<FString>> Items;
	for (int32 Index = 0; Index < 50; ++Index)
	{
		Items.Add(MakeShared<FString>(FString::Printf(TEXT("Mod %d"), Index)));
	}
	TSharedRef<SVerticalBox> Holder = SNew(SVerticalBox);
	TArray<FString> Chosen;
	std::function<void()> Build;
	Build = [&]()
	{
		TSharedRef<SListView<TSharedPtr<FString>>> List = SNew(SListView<TSharedPtr<FString>>)
			.ListItemsSource(&Items)
			.ItemHeight(16.0f)
			.SelectionMode(ESelectionMode::Single)
			.OnGenerateRow_Lambda([](TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& Owner)
								  { return SNew(STableRow<TSharedPtr<FString>>, Owner)[SNew(STextBlock).Text(FText::FromString(*Item))]; })
			.OnSelectionChanged_Lambda([&](TSharedPtr<FString> Item, ESelectInfo::Type)
									   {
										   Chosen.Add(Item ? *Item : FString(TEXT("none")));
										   // The tool rebuilds its whole tree here: the list that sent the event goes.
										   Build();
									   });
		Holder->ClearChildren();
		Holder->AddSlot()[List];
	};
	Build();
	FShown Shown(Holder);
	auto ListWindow = [&] { return FindHwnd(*Holder->GetChildren()[0]); };
	HWND First = ListWindow();
	ASSERT_TRUE(First);

	// A click on the third row selects it; the keys then go on in the rebuilt list, from that row.
	const int Row = static_cast<int>(16 * GetScale());
	SendMessageW(First, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(5, 2 * Row + Row / 2));
	Frames();
	ASSERT_EQ(Chosen.Num(), 1);
	EXPECT_EQ(Chosen[0], FString(TEXT("Mod 2")));
	HWND Second = ListWindow();
	EXPECT_NE(Second, First);
	EXPECT_EQ(GetFocus(), Second);
	SendMessageW(GetFocus(), WM_KEYDOWN, VK_DOWN, 0);
	Frames();
	SendMessageW(GetFocus(), WM_KEYDOWN, VK_END, 0);
	Frames();
	ASSERT_EQ(Chosen.Num(), 3);
	EXPECT_EQ(Chosen[1], FString(TEXT("Mod 3")));
	EXPECT_EQ(Chosen[2], FString(TEXT("Mod 49")));
	EXPECT_FALSE(IsWindow(First)) << "the first list's window goes once its event has returned";
}

TEST(Win32WidgetTests, APictureThatCantBeDecodedAndAWindowClosedInItsLoop)
{
	const FString Broken = FPaths::ConvertRelativePathToFull(TEXT("broken-preview.png"));
	std::ofstream(Broken.ToUtf8()) << "not a picture";
	FSlateDynamicImageBrush Brush(Broken, FVector2D(64, 64));
	TSharedRef<SImage> Image = SNew(SImage).Image(&Brush);
	{
		FShown Shown(Image);
		EXPECT_FALSE(Image->HasPicture());
		EXPECT_TRUE(IsWindowVisible(FindHwnd(*Image)));
	}

	// The window's own close button ends the modal loop it runs in.
	TSharedRef<SWindow> Login = SNew(SWindow).Title(FText::FromString(TEXT("Steam Login"))).SizingRule(ESizingRule::Autosized)
		[SNew(STextBlock).Text(FText::FromString(TEXT("User name")))];
	bool bPosted = false;
	Post([&] { bPosted = PostMessageW(static_cast<HWND>(Login->GetNativeWindowHandle()), WM_CLOSE, 0, 0) != FALSE; });
	IEditorServices::Get().RunModalWindow(Login);
	EXPECT_TRUE(bPosted);
	EXPECT_TRUE(Login->IsDestroyRequested());
}

int main(int ArgC, char** ArgV)
{
	::testing::InitGoogleTest(&ArgC, ArgV);
	FSlateApplication::Create(ArgC, ArgV);
	const int Result = RUN_ALL_TESTS();
	FSlateApplication::FlushDeferredDeletes();
	FSlateApplication::Shutdown();
	return Result;
}

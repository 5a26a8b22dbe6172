// The native half of each widget kind on Win32.

#include "SlateWin32.h"

#include "Widgets/Images/SImage.h"
#include "Widgets/Images/SThrobber.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SCheckBox.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SEditableText.h"
#include "Widgets/Input/SHyperlink.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SGridPanel.h"
#include "Widgets/Layout/SHeader.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SSpacer.h"
#include "Widgets/Layout/SSplitter.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SWindow.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SHeaderRow.h"

#include <commctrl.h>
#include <wincodec.h>
#include <windowsx.h>

#include <algorithm>
#include <cmath>

using namespace SlateWin32;

namespace
{
	template <typename WidgetType>
	WidgetType* OwnerOf(HWND Window)
	{
		FWin32Node* Node = NodeOf(Window);
		return Node ? static_cast<WidgetType*>(Node->Owner) : nullptr;
	}

	// Runs Work on the widget of Window, kept alive for the call, if it is still there.
	template <typename WidgetType, typename WorkType>
	void WithOwner(HWND Window, WorkType&& Work)
	{
		if (WidgetType* Widget = OwnerOf<WidgetType>(Window))
		{
			TSharedRef<SWidget> KeepAlive = Widget->AsShared();
			Work(*Widget);
		}
	}

	// Text of an edit box, CR LF as the box keeps it to LF as the widgets keep it, and back.
	std::wstring ToBoxLines(const std::wstring& Text)
	{
		std::wstring Result;
		Result.reserve(Text.size());
		for (size_t Index = 0; Index < Text.size(); ++Index)
		{
			if (Text[Index] == L'\n' && (Index == 0 || Text[Index - 1] != L'\r'))
			{
				Result += L'\r';
			}
			Result += Text[Index];
		}
		return Result;
	}

	std::wstring FromBoxLines(const std::wstring& Text)
	{
		std::wstring Result;
		Result.reserve(Text.size());
		for (size_t Index = 0; Index < Text.size(); ++Index)
		{
			if (!(Text[Index] == L'\r' && Index + 1 < Text.size() && Text[Index + 1] == L'\n'))
			{
				Result += Text[Index];
			}
		}
		return Result;
	}

	std::wstring WindowWideText(HWND Window)
	{
		std::wstring Text(static_cast<size_t>(GetWindowTextLengthW(Window)) + 1, L'\0');
		Text.resize(static_cast<size_t>(GetWindowTextW(Window, Text.data(), static_cast<int>(Text.size()))));
		return Text;
	}

	HFONT FontOf(HWND Window)
	{
		HFONT Font = reinterpret_cast<HFONT>(SendMessageW(Window, WM_GETFONT, 0, 0));
		return Font ? Font : GetFont();
	}

	// Pictures: decoded by the system's imaging components into a 32-bit bitmap with its alpha premultiplied.
	struct FPicture
	{
		HBITMAP Bitmap = nullptr;
		int Width = 0;
		int Height = 0;
		~FPicture()
		{
			if (Bitmap)
			{
				DeleteObject(Bitmap);
			}
		}
	};

	// A path of the toolkit's own resources (":/slate/...") is a file under Resources beside the program.
	std::wstring ResolvePicturePath(const FString& Path)
	{
		std::wstring Wanted = Wide(Path);
		if (Wanted.rfind(L":/", 0) != 0)
		{
			return Wanted;
		}
		wchar_t Program[MAX_PATH] = {};
		GetModuleFileNameW(nullptr, Program, MAX_PATH);
		std::wstring Folder(Program);
		Folder = Folder.substr(0, Folder.find_last_of(L"\\/") + 1);
		std::wstring Rest = Wanted.substr(2);
		std::replace(Rest.begin(), Rest.end(), L'/', L'\\');
		return Folder + L"Resources\\" + Rest;
	}

	std::shared_ptr<FPicture> LoadPicture(const FString& Path)
	{
		IWICImagingFactory* Factory = nullptr;
		if (Path.IsEmpty() || FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&Factory))))
		{
			return nullptr;
		}
		std::shared_ptr<FPicture> Picture;
		IWICBitmapDecoder* Decoder = nullptr;
		IWICBitmapFrameDecode* Frame = nullptr;
		IWICFormatConverter* Converter = nullptr;
		UINT Width = 0;
		UINT Height = 0;
		if (SUCCEEDED(Factory->CreateDecoderFromFilename(ResolvePicturePath(Path).c_str(), nullptr, GENERIC_READ,
														 WICDecodeMetadataCacheOnDemand, &Decoder)) &&
			SUCCEEDED(Decoder->GetFrame(0, &Frame)) && SUCCEEDED(Factory->CreateFormatConverter(&Converter)) &&
			SUCCEEDED(Converter->Initialize(Frame, GUID_WICPixelFormat32bppPBGRA, WICBitmapDitherTypeNone, nullptr, 0.0,
											WICBitmapPaletteTypeCustom)) &&
			SUCCEEDED(Converter->GetSize(&Width, &Height)) && Width > 0 && Height > 0 && Width < 16384 && Height < 16384)
		{
			BITMAPINFO Info{};
			Info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
			Info.bmiHeader.biWidth = static_cast<LONG>(Width);
			Info.bmiHeader.biHeight = -static_cast<LONG>(Height);
			Info.bmiHeader.biPlanes = 1;
			Info.bmiHeader.biBitCount = 32;
			Info.bmiHeader.biCompression = BI_RGB;
			void* Bits = nullptr;
			HBITMAP Bitmap = CreateDIBSection(nullptr, &Info, DIB_RGB_COLORS, &Bits, nullptr, 0);
			if (Bitmap && SUCCEEDED(Converter->CopyPixels(nullptr, Width * 4, Width * Height * 4, static_cast<BYTE*>(Bits))))
			{
				Picture = std::make_shared<FPicture>();
				Picture->Bitmap = Bitmap;
				Picture->Width = static_cast<int>(Width);
				Picture->Height = static_cast<int>(Height);
			}
			else if (Bitmap)
			{
				DeleteObject(Bitmap);
			}
		}
		for (IUnknown* Each : {static_cast<IUnknown*>(Converter), static_cast<IUnknown*>(Frame), static_cast<IUnknown*>(Decoder),
							   static_cast<IUnknown*>(Factory)})
		{
			if (Each)
			{
				Each->Release();
			}
		}
		return Picture;
	}

	void DrawPicture(HDC Context, const FPicture& Picture, const RECT& Target)
	{
		HDC Source = CreateCompatibleDC(Context);
		HGDIOBJ Former = SelectObject(Source, Picture.Bitmap);
		SetStretchBltMode(Context, HALFTONE);
		BLENDFUNCTION Blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
		AlphaBlend(Context, Target.left, Target.top, Target.right - Target.left, Target.bottom - Target.top, Source, 0, 0,
				   Picture.Width, Picture.Height, Blend);
		SelectObject(Source, Former);
		DeleteDC(Source);
	}

	// The grey and white squares that stand for "no image".
	void DrawCheckerboard(HDC Context, const RECT& Area, float Scale)
	{
		const int Square = std::max(4, static_cast<int>(8 * Scale));
		HBRUSH Light = CreateSolidBrush(RGB(255, 255, 255));
		HBRUSH Dark = CreateSolidBrush(RGB(200, 200, 200));
		for (int Y = Area.top; Y < Area.bottom; Y += Square)
		{
			for (int X = Area.left; X < Area.right; X += Square)
			{
				const RECT Cell{X, Y, std::min<LONG>(X + Square, Area.right), std::min<LONG>(Y + Square, Area.bottom)};
				FillRect(Context, &Cell, (((X - Area.left) / Square + (Y - Area.top) / Square) % 2) ? Dark : Light);
			}
		}
		DeleteObject(Light);
		DeleteObject(Dark);
	}

	COLORREF SwatchColour(const FString& Name)
	{
		// The hue of the name's hash, at the saturation and value the Qt backend gives its swatches.
		const double Hue = static_cast<double>(GetTypeHash(Name) % 360);
		const double Saturation = 60.0 / 255.0;
		const double Value = 200.0 / 255.0;
		const double Chroma = Value * Saturation;
		const double Part = Chroma * (1.0 - std::fabs(std::fmod(Hue / 60.0, 2.0) - 1.0));
		double R = 0, G = 0, B = 0;
		const int Sector = static_cast<int>(Hue / 60.0);
		switch (Sector)
		{
		case 0: R = Chroma; G = Part; break;
		case 1: R = Part; G = Chroma; break;
		case 2: G = Chroma; B = Part; break;
		case 3: G = Part; B = Chroma; break;
		case 4: R = Part; B = Chroma; break;
		default: R = Chroma; B = Part; break;
		}
		const double Base = Value - Chroma;
		return RGB(static_cast<int>((R + Base) * 255), static_cast<int>((G + Base) * 255), static_cast<int>((B + Base) * 255));
	}
}

// Panels: plain windows that hold children.
FNativeWidget* SCompoundWidget::CreateNativeWidget()
{
	HWND Panel = MakePanel();
	AttachedChild = ChildSlot.Widget;
	return ToNative(Panel);
}

void SCompoundWidget::AttachChild()
{
	// The former child's window is hidden by the next layout; the widget itself destroys it when it goes.
	AttachedChild = ChildSlot.Widget;
}

FNativeWidget* SBox::CreateNativeWidget()
{
	return SCompoundWidget::CreateNativeWidget();
}

FNativeWidget* SBorder::CreateNativeWidget()
{
	HWND Panel = ToHwnd(SCompoundWidget::CreateNativeWidget());
	NodeOf(Panel)->Paint = [](HDC Context, const RECT& Area)
	{
		FillRect(Context, &Area, GetSysColorBrush(COLOR_BTNFACE));
		FrameRect(Context, &Area, GetSysColorBrush(COLOR_BTNSHADOW));
	};
	return ToNative(Panel);
}

FNativeWidget* SHeader::CreateNativeWidget()
{
	// The content over a sunken rule along the bottom.
	HWND Panel = ToHwnd(SCompoundWidget::CreateNativeWidget());
	NodeOf(Panel)->Paint = [](HDC Context, const RECT& Area)
	{
		FillRect(Context, &Area, GetSysColorBrush(COLOR_BTNFACE));
		RECT Rule{Area.left, Area.bottom - 2, Area.right, Area.bottom};
		DrawEdge(Context, &Rule, EDGE_ETCHED, BF_TOP);
	};
	NodeOf(Panel)->Measure = [](float Scale) { return FSlateLayoutSize{0.0f, 2.0f}; };
	return ToNative(Panel);
}

FNativeWidget* SSpacer::CreateNativeWidget()
{
	return ToNative(MakePanel());
}

FNativeWidget* SHeaderRow::CreateNativeWidget()
{
	// The list draws its header itself; a header row on its own is a band of bold labels.
	HWND Panel = MakePanel();
	NodeOf(Panel)->Paint = [this](HDC Context, const RECT& Area)
	{
		FillRect(Context, &Area, GetSysColorBrush(COLOR_BTNFACE));
		HGDIOBJ Former = SelectObject(Context, GetFont(true));
		SetBkMode(Context, TRANSPARENT);
		RECT Text = Area;
		Text.left += static_cast<LONG>(4 * GetScale());
		const std::wstring Shown = Wide(GetDisplayText());
		DrawTextW(Context, Shown.c_str(), -1, &Text, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
		SelectObject(Context, Former);
	};
	NodeOf(Panel)->Measure = [this](float Scale)
	{
		FSlateLayoutSize Size = MeasureText(GetDisplayText(), GetFont(true));
		return FSlateLayoutSize{Size.Width + 8 * Scale, Size.Height + 4 * Scale};
	};
	return ToNative(Panel);
}

FNativeWidget* SBoxPanel::CreateNativeWidget()
{
	AttachedSlots = Slots.Num();
	return ToNative(MakePanel());
}

void SBoxPanel::AttachPendingSlots()
{
	// The layout places every slot on each frame; new slots need nothing more.
	AttachedSlots = Slots.Num();
}

void SBoxPanel::ClearChildren()
{
	Slots.Empty();
	AttachedSlots = 0;
	bTrailingStretch = false;
}

FNativeWidget* SGridPanel::CreateNativeWidget()
{
	// The columns share the width by their fill values whatever the cells hold: a long label wraps in its column
	// instead of being cut.
	for (const FSlot& Slot : Slots)
	{
		if (Slot.Widget && Slot.Widget->GetTypeName() == TEXT("STextBlock") && !Slot.Widget->HasNativeWidget())
		{
			StaticCastSharedPtr<STextBlock>(Slot.Widget)->SetAutoWrapText(true);
		}
	}
	return ToNative(MakePanel());
}

// The scroll box's window has the vertical scroll bar; the layout moves the content up by the offset.
FNativeWidget* SScrollBox::CreateNativeWidget()
{
	HWND Panel = MakePanel(WS_VSCROLL);
	AttachedSlots = Slots.Num();
	FWin32Node* Node = NodeOf(Panel);
	Node->OnMessage = [Panel](UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)
	{
		SScrollBox* Box = OwnerOf<SScrollBox>(Panel);
		if (!Box || (Message != WM_VSCROLL && Message != WM_MOUSEWHEEL && Message != WM_SIZE))
		{
			return false;
		}
		RECT Client;
		GetClientRect(Panel, &Client);
		const float Scale = GetScale();
		const float Line = 20.0f * Scale;
		float Offset = Box->GetScrollOffset();
		if (Message == WM_MOUSEWHEEL)
		{
			Offset -= GET_WHEEL_DELTA_WPARAM(WParam) / 120.0f * 3.0f * Line;
		}
		else if (Message == WM_VSCROLL)
		{
			SCROLLINFO Info{sizeof(SCROLLINFO), SIF_ALL};
			GetScrollInfo(Panel, SB_VERT, &Info);
			switch (LOWORD(WParam))
			{
			case SB_LINEUP: Offset -= Line; break;
			case SB_LINEDOWN: Offset += Line; break;
			case SB_PAGEUP: Offset -= Client.bottom; break;
			case SB_PAGEDOWN: Offset += Client.bottom; break;
			case SB_THUMBTRACK:
			case SB_THUMBPOSITION: Offset = static_cast<float>(Info.nTrackPos); break;
			case SB_TOP: Offset = 0; break;
			case SB_BOTTOM: Offset = 1e9f; break;
			default: break;
			}
		}
		Box->SetScrollOffset(Offset, static_cast<float>(Client.bottom), Scale);
		const int Content = static_cast<int>(Box->ComputeDesiredSize(Scale).Height);
		SCROLLINFO Info{sizeof(SCROLLINFO), SIF_RANGE | SIF_PAGE | SIF_POS, 0, std::max(0, Content - 1),
						static_cast<UINT>(std::max<LONG>(0, Client.bottom)), static_cast<int>(Box->GetScrollOffset())};
		SetScrollInfo(Panel, SB_VERT, &Info, TRUE);
		Result = 0;
		return Message != WM_SIZE;
	};
	return ToNative(Panel);
}

void SScrollBox::AttachPendingSlots()
{
	AttachedSlots = Slots.Num();
	// The scroll bar follows the content's height and the room, whenever either changed.
	HWND Panel = FindHwnd(*this);
	FWin32Node* Node = NodeOf(Panel);
	if (!Node || !Node->bPlaced)
	{
		return;
	}
	RECT Client;
	GetClientRect(Panel, &Client);
	const float Scale = GetScale();
	const int Content = static_cast<int>(ComputeDesiredSize(Scale).Height);
	if (Content != Node->ScrollRange || Client.bottom != Node->ScrollPage)
	{
		Node->ScrollRange = Content;
		Node->ScrollPage = Client.bottom;
		SetScrollOffset(ScrollOffset, static_cast<float>(Client.bottom), Scale);
		SCROLLINFO Info{sizeof(SCROLLINFO), SIF_RANGE | SIF_PAGE | SIF_POS, 0, std::max(0, Content - 1),
						static_cast<UINT>(std::max<LONG>(0, Client.bottom)), static_cast<int>(ScrollOffset)};
		SetScrollInfo(Panel, SB_VERT, &Info, TRUE);
	}
}

void SScrollBox::ClearChildren()
{
	Slots.Empty();
	AttachedSlots = 0;
	ScrollOffset = 0.0f;
}

// The splitter's window is the room between its children: dragging there moves the handle under the mouse.
FNativeWidget* SSplitter::CreateNativeWidget()
{
	HWND Panel = MakePanel();
	struct FDrag
	{
		int32 Handle = INDEX_NONE;
		int Last = 0;
	};
	auto Drag = std::make_shared<FDrag>();
	NodeOf(Panel)->OnMessage = [Panel, Drag](UINT Message, WPARAM, LPARAM LParam, LRESULT& Result)
	{
		SSplitter* Splitter = OwnerOf<SSplitter>(Panel);
		if (!Splitter)
		{
			return false;
		}
		const bool bHorizontal = Splitter->GetOrientation() == Orient_Horizontal;
		const int At = bHorizontal ? GET_X_LPARAM(LParam) : GET_Y_LPARAM(LParam);
		RECT Client;
		GetClientRect(Panel, &Client);
		const float Length = static_cast<float>(bHorizontal ? Client.right : Client.bottom);
		switch (Message)
		{
		case WM_SETCURSOR:
			SetCursor(LoadCursorW(nullptr, bHorizontal ? IDC_SIZEWE : IDC_SIZENS));
			Result = TRUE;
			return true;
		case WM_LBUTTONDOWN:
		{
			TArray<FSlateArrangedChild> Placed;
			Splitter->ArrangeChildren(static_cast<float>(Client.right), static_cast<float>(Client.bottom), GetScale(), Placed);
			for (int32 Index = 0; Index + 1 < Placed.Num(); ++Index)
			{
				const float End = bHorizontal ? Placed[Index].X + Placed[Index].Width : Placed[Index].Y + Placed[Index].Height;
				if (At >= End - 2 && At <= End + SSplitter::HandleThickness * GetScale() + 2)
				{
					Drag->Handle = Index;
					Drag->Last = At;
					SetCapture(Panel);
				}
			}
			Result = 0;
			return true;
		}
		case WM_MOUSEMOVE:
			if (Drag->Handle != INDEX_NONE && GetCapture() == Panel)
			{
				Splitter->MoveHandle(Drag->Handle, static_cast<float>(At - Drag->Last), Length);
				Drag->Last = At;
				LayoutRoot(GetAncestor(Panel, GA_ROOT));
			}
			Result = 0;
			return true;
		case WM_LBUTTONUP:
		case WM_CAPTURECHANGED:
			Drag->Handle = INDEX_NONE;
			if (Message == WM_LBUTTONUP && GetCapture() == Panel)
			{
				ReleaseCapture();
			}
			Result = 0;
			return true;
		default:
			return false;
		}
	};
	return ToNative(Panel);
}

// Labels.
FNativeWidget* STextBlock::CreateNativeWidget()
{
	const bool bEmbossed = TextStyleName == TEXT("EmbossedText");
	const DWORD Align = Justification == ETextJustify::Center ? SS_CENTER : Justification == ETextJustify::Right ? SS_RIGHT : SS_LEFT;
	HWND Label = MakeControl(L"STATIC", FString(), SS_NOPREFIX | (bAutoWrap ? Align : (Align == SS_LEFT ? SS_LEFTNOWORDWRAP : Align)));
	FWin32Node* Node = NodeOf(Label);
	// The system draws a label's lines from the top of its window; in a taller slot the label stands centred at
	// its own height, as labels read beside a taller box on the other backend.
	Node->bFixedHeight = true;
	if (bEmbossed)
	{
		// Raised lettering: a larger bold face over a lighter copy of itself, a pixel down and right.
		SendMessageW(Label, WM_SETFONT, reinterpret_cast<WPARAM>(GetFont(true, 1.25f)), FALSE);
		Node->bRaised = true;
		Node->OnMessage = [Label](UINT Message, WPARAM, LPARAM, LRESULT& Result)
		{
			if (Message != WM_PAINT)
			{
				return false;
			}
			PAINTSTRUCT Paint;
			HDC Context = BeginPaint(Label, &Paint);
			RECT Area;
			GetClientRect(Label, &Area);
			FillRect(Context, &Area, GetSysColorBrush(COLOR_BTNFACE));
			HGDIOBJ Former = SelectObject(Context, FontOf(Label));
			SetBkMode(Context, TRANSPARENT);
			const std::wstring Shown = WindowWideText(Label);
			const int Offset = std::max(1, static_cast<int>(GetScale()));
			RECT Shadow{Area.left + Offset, Area.top + Offset, Area.right + Offset, Area.bottom + Offset};
			SetTextColor(Context, GetSysColor(COLOR_BTNHIGHLIGHT));
			DrawTextW(Context, Shown.c_str(), -1, &Shadow, DT_NOPREFIX | DT_SINGLELINE);
			SetTextColor(Context, GetSysColor(COLOR_BTNTEXT));
			DrawTextW(Context, Shown.c_str(), -1, &Area, DT_NOPREFIX | DT_SINGLELINE);
			SelectObject(Context, Former);
			EndPaint(Label, &Paint);
			Result = 0;
			return true;
		};
	}
	Node->Measure = [Label](float Scale)
	{
		STextBlock* Text = OwnerOf<STextBlock>(Label);
		const FString Shown = Text ? Text->ShownText : FString();
		const HFONT Font = FontOf(Label);
		if (!Text || !Text->bAutoWrap)
		{
			return MeasureText(Shown, Font);
		}
		// A wrapping label asks for its line up to about forty letters (a long hint or path is meant to wrap), and
		// for the height its text takes at the width it was last given.
		const FSlateLayoutSize Line = MeasureText(Shown, Font);
		const float Width = std::min(Line.Width, 40.0f * AverageCharWidth(Font)) + 1.0f;
		const float Given = NodeOf(Label)->LastWidth;
		const FSlateLayoutSize Wrapped = MeasureText(Shown, Font, static_cast<int>(Given > 0.0f ? Given : Width));
		return FSlateLayoutSize{Width, Wrapped.Height};
	};
	SetNativeWidget(ToNative(Label));
	bShownOnce = false;
	RefreshAttributes();
	return ToNative(Label);
}

void STextBlock::RefreshAttributes()
{
	if (HWND Label = FindHwnd(*this))
	{
		const FString Now = Text.Get().ToString();
		if (!bShownOnce || Now != ShownText)
		{
			ShownText = Now;
			bShownOnce = true;
			bShownWrapped = bAutoWrap;
			SetWindowTextW(Label, Wide(Now).c_str());
		}
	}
	SWidget::RefreshAttributes();
}

FNativeWidget* SHyperlink::CreateNativeWidget()
{
	HWND Link = MakeControl(L"STATIC", Text.Get().ToString(), SS_NOPREFIX | SS_NOTIFY | SS_LEFTNOWORDWRAP);
	FWin32Node* Node = NodeOf(Link);
	static HFONT Underlined = [] {
		LOGFONTW Face{};
		GetObjectW(GetFont(), sizeof(Face), &Face);
		Face.lfUnderline = TRUE;
		return CreateFontIndirectW(&Face);
	}();
	SendMessageW(Link, WM_SETFONT, reinterpret_cast<WPARAM>(Underlined), FALSE);
	// The blue of a link, as the system draws its own (some systems, Wine among them, give the hot-track colour
	// a grey).
	Node->TextColour = RGB(0, 102, 204);
	Node->Measure = [Link](float) { return MeasureText(GetWindowTextOf(Link), FontOf(Link)); };
	Node->OnCommand = [Link](UINT Code)
	{
		if (Code == STN_CLICKED)
		{
			WithOwner<SHyperlink>(Link, [](SHyperlink& Self) { Self.Navigate(); });
		}
	};
	Node->OnMessage = [](UINT Message, WPARAM, LPARAM, LRESULT& Result)
	{
		if (Message == WM_SETCURSOR)
		{
			SetCursor(LoadCursorW(nullptr, IDC_HAND));
			Result = TRUE;
			return true;
		}
		return false;
	};
	return ToNative(Link);
}

// Buttons.
FNativeWidget* SButton::CreateNativeWidget()
{
	// Drawn by the widget: a flat face inside a line, the line blue while the button has the keys, the face darker
	// while it is held down; the label gets all the width inside the line.
	HWND Button = MakeControl(L"BUTTON", FString(), BS_OWNERDRAW | WS_TABSTOP | WS_CLIPCHILDREN);
	FWin32Node* Node = NodeOf(Button);
	Node->bFixedHeight = true;
	Node->DrawItem = [Button](const DRAWITEMSTRUCT& Item)
	{
		const bool bPressed = (Item.itemState & ODS_SELECTED) != 0;
		const bool bDisabled = (Item.itemState & ODS_DISABLED) != 0;
		const bool bFocused = (Item.itemState & ODS_FOCUS) != 0;
		RECT Area = Item.rcItem;
		const COLORREF Face = GetSysColor(COLOR_BTNFACE);
		const COLORREF Shade = GetSysColor(COLOR_BTNSHADOW);
		HBRUSH Fill = CreateSolidBrush(bPressed ? RGB((GetRValue(Face) + GetRValue(Shade)) / 2, (GetGValue(Face) + GetGValue(Shade)) / 2,
													  (GetBValue(Face) + GetBValue(Shade)) / 2)
												: RGB(std::min(255, GetRValue(Face) + 12), std::min(255, GetGValue(Face) + 12),
													  std::min(255, GetBValue(Face) + 12)));
		FillRect(Item.hDC, &Area, Fill);
		DeleteObject(Fill);
		const int Line = ButtonFrame;
		HBRUSH Edge = CreateSolidBrush(GetSysColor(bFocused && !bDisabled ? COLOR_HIGHLIGHT : COLOR_BTNSHADOW));
		for (int Step = 0; Step < Line; ++Step)
		{
			FrameRect(Item.hDC, &Area, Edge);
			InflateRect(&Area, -1, -1);
		}
		DeleteObject(Edge);
		const std::wstring Label = WindowWideText(Button);
		HGDIOBJ Former = SelectObject(Item.hDC, FontOf(Button));
		SetBkMode(Item.hDC, TRANSPARENT);
		SetTextColor(Item.hDC, GetSysColor(bDisabled ? COLOR_GRAYTEXT : COLOR_BTNTEXT));
		DrawTextW(Item.hDC, Label.c_str(), static_cast<int>(Label.size()), &Area, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
		SelectObject(Item.hDC, Former);
	};
	Node->Measure = [Button](float Scale)
	{
		const FSlateLayoutSize Text = MeasureText(GetWindowTextOf(Button), FontOf(Button));
		return FSlateLayoutSize{Text.Width > 0 ? Text.Width + 16.0f * Scale : 0.0f, std::max(Text.Height + 8.0f * Scale, 23.0f * Scale)};
	};
	Node->OnCommand = [Button](UINT Code)
	{
		if (Code == BN_CLICKED)
		{
			WithOwner<SButton>(Button, [](SButton& Self) { Self.Click(); });
		}
	};
	// Content inside the button stands inside its frame.
	ChildSlot.Padding(FMargin(4, 2, 4, 2));
	AttachedChild = ChildSlot.Widget;
	SetNativeWidget(ToNative(Button));
	RefreshAttributes();
	return ToNative(Button);
}

void SButton::RefreshAttributes()
{
	if (HWND Button = FindHwnd(*this); Button && Text.IsSet())
	{
		const FString Now = Text.Get().ToString();
		if (Now != ShownText || GetWindowTextLengthW(Button) == 0)
		{
			ShownText = Now;
			SetWindowTextW(Button, Wide(Now).c_str());
		}
	}
	SWidget::RefreshAttributes();
}

FNativeWidget* SCheckBox::CreateNativeWidget()
{
	HWND Box = MakeControl(L"BUTTON", FString(), BS_CHECKBOX | WS_TABSTOP);
	FWin32Node* Node = NodeOf(Box);
	Node->bFixedHeight = true;
	Node->Measure = [](float Scale)
	{
		const float Side = static_cast<float>(GetSystemMetrics(SM_CXMENUCHECK)) + 4.0f * Scale;
		return FSlateLayoutSize{Side, Side};
	};
	Node->OnCommand = [Box](UINT Code)
	{
		if (Code == BN_CLICKED)
		{
			WithOwner<SCheckBox>(Box, [](SCheckBox& Self) { Self.ToggleCheckedState(); });
		}
	};
	// The box alone, as the other backend draws it: content is not shown.
	AttachedChild = nullptr;
	SetNativeWidget(ToNative(Box));
	RefreshAttributes();
	return ToNative(Box);
}

void SCheckBox::RefreshAttributes()
{
	if (HWND Box = FindHwnd(*this))
	{
		const WPARAM Wanted = GetCheckedState() == ECheckBoxState::Checked ? BST_CHECKED : BST_UNCHECKED;
		if (static_cast<WPARAM>(SendMessageW(Box, BM_GETCHECK, 0, 0)) != Wanted)
		{
			bUpdatingNative = true;
			SendMessageW(Box, BM_SETCHECK, Wanted, 0);
			bUpdatingNative = false;
		}
	}
	SWidget::RefreshAttributes();
}

// A button that shows the chosen option and drops a menu of the others.
FNativeWidget* SComboBoxBase::CreateNativeWidget()
{
	HWND Button = MakeControl(L"BUTTON", FString(), BS_PUSHBUTTON | WS_TABSTOP | WS_CLIPCHILDREN);
	FWin32Node* Node = NodeOf(Button);
	ChildSlot.Padding(FMargin(6, 2, 18, 2)).HAlign(HAlign_Left).VAlign(VAlign_Center);
	AttachedChild = ChildSlot.Widget;
	Node->Measure = [](float Scale) { return FSlateLayoutSize{40.0f * Scale, 24.0f * Scale}; };
	Node->OnCommand = [Button](UINT Code)
	{
		if (Code != BN_CLICKED)
		{
			return;
		}
		WithOwner<SComboBoxBase>(Button,
								 [Button](SComboBoxBase& Combo)
								 {
									 HMENU Menu = CreatePopupMenu();
									 for (int32 Index = 0; Index < Combo.NumOptions(); ++Index)
									 {
										 AppendMenuW(Menu, MF_STRING, static_cast<UINT_PTR>(Index + 1), Wide(Combo.GetOptionText(Index)).c_str());
									 }
									 RECT Place;
									 GetWindowRect(Button, &Place);
									 const int Chosen = TrackPopupMenu(Menu, TPM_RETURNCMD | TPM_LEFTALIGN | TPM_TOPALIGN, Place.left,
																	   Place.bottom, 0, Button, nullptr);
									 DestroyMenu(Menu);
									 if (Chosen > 0)
									 {
										 Combo.ChooseOption(Chosen - 1);
									 }
								 });
	};
	// The drop arrow at the right end.
	Node->OnMessage = [Button](UINT Message, WPARAM, LPARAM, LRESULT& Result)
	{
		if (Message != WM_PAINT)
		{
			return false;
		}
		DefSubclassProc(Button, Message, 0, 0);
		HDC Context = GetDC(Button);
		RECT Area;
		GetClientRect(Button, &Area);
		const float Scale = GetScale();
		const int Middle = (Area.top + Area.bottom) / 2;
		const int Right = Area.right - static_cast<int>(7 * Scale);
		const int Half = static_cast<int>(4 * Scale);
		POINT Arrow[3] = {{Right - 2 * Half, Middle - Half / 2}, {Right, Middle - Half / 2}, {Right - Half, Middle + Half / 2}};
		HGDIOBJ FormerBrush = SelectObject(Context, GetSysColorBrush(COLOR_BTNTEXT));
		HGDIOBJ FormerPen = SelectObject(Context, GetStockObject(NULL_PEN));
		Polygon(Context, Arrow, 3);
		SelectObject(Context, FormerBrush);
		SelectObject(Context, FormerPen);
		ReleaseDC(Button, Context);
		Result = 0;
		return true;
	};
	return ToNative(Button);
}

// Text boxes. What a box holds, with a multi-line box's CR LF as the widgets keep it: LF.
namespace
{
	FString BoxText(HWND Edit)
	{
		const bool bLines = (GetWindowLongW(Edit, GWL_STYLE) & ES_MULTILINE) != 0;
		return FromWide(bLines ? FromBoxLines(WindowWideText(Edit)) : WindowWideText(Edit));
	}
}

FNativeWidget* SEditableTextBase::CreateLineEdit(bool bFrame)
{
	// A text that nobody hears change only shows a value: it can be selected and copied, not edited.
	DWORD Style = ES_AUTOHSCROLL | WS_TABSTOP | (OnTextChanged.IsBound() ? 0 : ES_READONLY) | (bIsPassword ? ES_PASSWORD : 0);
	HWND Edit = MakeControl(L"EDIT", Shown, Style, bFrame ? WS_EX_CLIENTEDGE : 0);
	// Typing goes on after the text shown, as in a line edit the other backend fills.
	SendMessageW(Edit, EM_SETSEL, static_cast<WPARAM>(Shown.Len()), static_cast<LPARAM>(Shown.Len()));
	FWin32Node* Node = NodeOf(Edit);
	// A box scrolls its text to keep the cursor in view, also while it has no width yet: once it has one, it
	// shows its text from the start again, as far as the cursor allows.
	Node->OnMessage = [Edit](UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)
	{
		if (Message != WM_SIZE)
		{
			return false;
		}
		Result = DefSubclassProc(Edit, Message, WParam, LParam);
		DWORD Start = 0;
		DWORD End = 0;
		SendMessageW(Edit, EM_GETSEL, reinterpret_cast<WPARAM>(&Start), reinterpret_cast<LPARAM>(&End));
		SendMessageW(Edit, EM_SETSEL, 0, 0);
		SendMessageW(Edit, EM_SCROLLCARET, 0, 0);
		SendMessageW(Edit, EM_SETSEL, Start, End);
		SendMessageW(Edit, EM_SCROLLCARET, 0, 0);
		return true;
	};
	Node->bFixedHeight = true;
	Node->Measure = [Edit, bFrame](float Scale)
	{
		const FSlateLayoutSize Line = MeasureText(GetWindowTextOf(Edit), FontOf(Edit));
		const float Height = MeasureText(TEXT("Ag"), FontOf(Edit)).Height + (bFrame ? 8.0f : 2.0f) * Scale;
		// A text without a frame reads as a label: as wide as what it shows.
		return FSlateLayoutSize{bFrame ? 60.0f * Scale : Line.Width + 12.0f * Scale, Height};
	};
	Node->OnCommand = [Edit](UINT Code)
	{
		if (Code == EN_CHANGE)
		{
			WithOwner<SEditableTextBase>(Edit, [Edit](SEditableTextBase& Box) { Box.TakeTypedText(BoxText(Edit)); });
		}
	};
	return ToNative(Edit);
}

FNativeWidget* SEditableTextBase::CreatePlainTextEdit()
{
	DWORD Style = ES_MULTILINE | ES_WANTRETURN | ES_AUTOVSCROLL | WS_VSCROLL | WS_TABSTOP | (bAutoWrap ? 0 : ES_AUTOHSCROLL | WS_HSCROLL);
	HWND Edit = MakeControl(L"EDIT", FString(), Style, WS_EX_CLIENTEDGE);
	SetWindowTextW(Edit, ToBoxLines(Wide(Shown)).c_str());
	FWin32Node* Node = NodeOf(Edit);
	Node->Measure = [](float Scale) { return FSlateLayoutSize{60.0f * Scale, 60.0f * Scale}; };
	Node->OnCommand = [Edit](UINT Code)
	{
		if (Code == EN_CHANGE)
		{
			WithOwner<SEditableTextBase>(Edit, [Edit](SEditableTextBase& Box) { Box.TakeTypedText(BoxText(Edit)); });
		}
	};
	// Tab moves on through the form, as in every other box of it; a description has no use for tab characters.
	Node->OnMessage = [](UINT Message, WPARAM WParam, LPARAM LParam, LRESULT& Result)
	{
		if (Message == WM_GETDLGCODE)
		{
			const MSG* Key = reinterpret_cast<const MSG*>(LParam);
			if (Key && Key->message == WM_KEYDOWN && Key->wParam == VK_TAB)
			{
				Result = 0;
				return true;
			}
			Result = DLGC_WANTCHARS | DLGC_WANTARROWS | DLGC_HASSETSEL | (Key && Key->wParam == VK_RETURN ? DLGC_WANTMESSAGE : 0);
			return true;
		}
		if (Message == WM_CHAR && WParam == L'\t')
		{
			Result = 0;
			return true;
		}
		return false;
	};
	return ToNative(Edit);
}

void SEditableTextBase::ShowText(const FString& NewText)
{
	Shown = NewText;
	HWND Edit = FindHwnd(*this);
	if (!Edit)
	{
		return;
	}
	const bool bLines = (GetWindowLongW(Edit, GWL_STYLE) & ES_MULTILINE) != 0;
	const std::wstring Wanted = bLines ? ToBoxLines(Wide(NewText)) : Wide(NewText);
	if (WindowWideText(Edit) == Wanted)
	{
		return;
	}
	// Text that changed under the user's hands keeps the cursor where it was, as far as the new text reaches.
	DWORD Start = 0;
	SendMessageW(Edit, EM_GETSEL, reinterpret_cast<WPARAM>(&Start), 0);
	bUpdatingNative = true;
	SetWindowTextW(Edit, Wanted.c_str());
	bUpdatingNative = false;
	const DWORD Cursor = std::min<DWORD>(Start, static_cast<DWORD>(Wanted.size()));
	SendMessageW(Edit, EM_SETSEL, Cursor, Cursor);
}

// Pictures.
namespace
{
	struct FImageState
	{
		std::shared_ptr<FPicture> Picture;
		FSlateLayoutSize Size{16, 16};
		bool bTiled = false;
		bool bCheckerboard = false;
		COLORREF Swatch = CLR_INVALID;
	};
}

FNativeWidget* SImage::CreateNativeWidget()
{
	HWND Panel = MakePanel();
	auto Image = std::make_shared<FImageState>();
	FWin32Node* Node = NodeOf(Panel);
	Node->Measure = [Image](float Scale) { return FSlateLayoutSize{Image->Size.Width * Scale, Image->Size.Height * Scale}; };
	Node->OnMessage = [](UINT Message, WPARAM, LPARAM, LRESULT& Result)
	{
		if (Message == WM_NCHITTEST)
		{
			Result = HTTRANSPARENT;
			return true;
		}
		return false;
	};
	// A picture at the brush's size, centred, in as many device pixels as the screen has; a tiled brush or the
	// stand-in for a missing picture fills the whole area.
	Node->Paint = [Image](HDC Context, const RECT& Area)
	{
		FillRect(Context, &Area, GetSysColorBrush(COLOR_BTNFACE));
		const float Scale = GetScale();
		if (Image->bCheckerboard)
		{
			DrawCheckerboard(Context, Area, Scale);
			return;
		}
		const int Width = std::min<int>(Area.right, static_cast<int>(Image->Size.Width * Scale));
		const int Height = std::min<int>(Area.bottom, static_cast<int>(Image->Size.Height * Scale));
		RECT Target{(Area.right - Width) / 2, (Area.bottom - Height) / 2, 0, 0};
		Target.right = Target.left + Width;
		Target.bottom = Target.top + Height;
		if (Image->Swatch != CLR_INVALID)
		{
			HBRUSH Brush = CreateSolidBrush(Image->Swatch);
			FillRect(Context, &Target, Brush);
			DeleteObject(Brush);
		}
		else if (Image->Picture && Image->bTiled)
		{
			for (int Y = 0; Y < Area.bottom; Y += Image->Picture->Height)
			{
				for (int X = 0; X < Area.right; X += Image->Picture->Width)
				{
					DrawPicture(Context, *Image->Picture, RECT{X, Y, X + Image->Picture->Width, Y + Image->Picture->Height});
				}
			}
		}
		else if (Image->Picture)
		{
			// Kept in proportion within the brush's size.
			const double Fit = std::min(Width / static_cast<double>(Image->Picture->Width), Height / static_cast<double>(Image->Picture->Height));
			const int DrawnWidth = static_cast<int>(Image->Picture->Width * Fit);
			const int DrawnHeight = static_cast<int>(Image->Picture->Height * Fit);
			const RECT Drawn{(Area.right - DrawnWidth) / 2, (Area.bottom - DrawnHeight) / 2, (Area.right - DrawnWidth) / 2 + DrawnWidth,
							 (Area.bottom - DrawnHeight) / 2 + DrawnHeight};
			DrawPicture(Context, *Image->Picture, Drawn);
		}
	};
	// The state travels with the window (its node owns it); the widget reaches it through this property.
	SetPropW(Panel, L"TesselImage", Image.get());
	SetNativeWidget(ToNative(Panel));
	bDrawnOnce = false;
	RefreshAttributes();
	return ToNative(Panel);
}

void SImage::RefreshAttributes()
{
	HWND Panel = FindHwnd(*this);
	FImageState* State = Panel ? static_cast<FImageState*>(GetPropW(Panel, L"TesselImage")) : nullptr;
	const FSlateBrush* Brush = Image.Get();
	const FString Resource = Brush ? Brush->ResourceName : FString();
	if (State && (!bDrawnOnce || Resource != DrawnResource))
	{
		// The file of a dynamic brush is read here, when it is first drawn. A file that is missing or holds no
		// picture is drawn as the checkerboard that stands for "no image".
		DrawnResource = Resource;
		bDrawnOnce = true;
		std::shared_ptr<FPicture> Picture;
		if (Brush && Brush->bIsDynamic && !Resource.IsEmpty())
		{
			Picture = LoadPicture(Resource);
		}
		else if (Brush && !Brush->ImagePath.IsEmpty())
		{
			Picture = LoadPicture(Brush->ImagePath);
		}
		else if (Brush && !Resource.IsEmpty())
		{
			Picture = LoadPicture(FString(TEXT(":/slate/")) + Resource + TEXT(".png"));
		}
		bHasPicture = Picture != nullptr;
		State->Size = Brush ? FSlateLayoutSize{static_cast<float>(Brush->ImageSize.X), static_cast<float>(Brush->ImageSize.Y)} : FSlateLayoutSize{16, 16};
		State->bTiled = Brush && Brush->Tiling == ESlateBrushTileType::Both;
		State->bCheckerboard = !bHasPicture && Brush && Brush->bIsDynamic;
		State->Swatch = !bHasPicture && Brush && !Brush->bIsDynamic ? SwatchColour(Resource) : CLR_INVALID;
		State->Picture = Picture;
		InvalidateRect(Panel, nullptr, TRUE);
	}
	SWidget::RefreshAttributes();
}

// The throbber: pieces round a circle, drawn by the widget itself.
FNativeWidget* SCircularThrobber::CreateNativeWidget()
{
	HWND Panel = MakePanel();
	FWin32Node* Node = NodeOf(Panel);
	const float Side = std::ceil(Radius * 2.0f) + 4.0f;
	Node->Measure = [Side](float Scale) { return FSlateLayoutSize{Side * Scale, Side * Scale}; };
	Node->Paint = [Panel](HDC Context, const RECT& Area)
	{
		FillRect(Context, &Area, GetSysColorBrush(COLOR_BTNFACE));
		SCircularThrobber* Owner = OwnerOf<SCircularThrobber>(Panel);
		if (!Owner)
		{
			return;
		}
		const float Scale = GetScale();
		const int Pieces = std::max(1, Owner->GetNumPieces());
		const double Radius = Owner->GetRadius() * Scale;
		const double CentreX = Area.right / 2.0;
		const double CentreY = Area.bottom / 2.0;
		HGDIOBJ FormerPen = SelectObject(Context, GetStockObject(NULL_PEN));
		for (int Piece = 0; Piece < Pieces; ++Piece)
		{
			const double Angle = 6.283185307179586 * (Piece / static_cast<double>(Pieces) + Owner->GetPhase());
			const double Fade = std::fmod(Piece / static_cast<double>(Pieces) + 1.0 - Owner->GetPhase(), 1.0);
			// The piece's colour over the surface, as the other backend's translucent pieces come out.
			const COLORREF Surface = GetSysColor(COLOR_BTNFACE);
			const double Alpha = (60 + 195 * Fade) / 255.0;
			const COLORREF Colour = RGB(static_cast<int>(80 * Alpha + GetRValue(Surface) * (1 - Alpha)),
										static_cast<int>(140 * Alpha + GetGValue(Surface) * (1 - Alpha)),
										static_cast<int>(220 * Alpha + GetBValue(Surface) * (1 - Alpha)));
			HBRUSH Brush = CreateSolidBrush(Colour);
			HGDIOBJ FormerBrush = SelectObject(Context, Brush);
			const double X = CentreX + std::cos(Angle) * (Radius - 3 * Scale);
			const double Y = CentreY + std::sin(Angle) * (Radius - 3 * Scale);
			const double Dot = 2.5 * Scale;
			Ellipse(Context, static_cast<int>(X - Dot), static_cast<int>(Y - Dot), static_cast<int>(X + Dot) + 1, static_cast<int>(Y + Dot) + 1);
			SelectObject(Context, FormerBrush);
			DeleteObject(Brush);
		}
		SelectObject(Context, FormerPen);
	};
	return ToNative(Panel);
}

SCircularThrobber::~SCircularThrobber() = default;

void SCircularThrobber::Tick(const FGeometry&, const double InCurrentTime, const float)
{
	Phase = Period > 0.0f ? std::fmod(InCurrentTime / Period, 1.0) : 0.0;
	HWND Panel = FindHwnd(*this);
	if (Panel && IsWindowVisible(Panel))
	{
		InvalidateRect(Panel, nullptr, FALSE);
	}
}

// Top-level windows.
FNativeWidget* SWindow::CreateNativeWidget()
{
	DWORD Style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU;
	if (SizingRule != ESizingRule::FixedSize && SizingRule != ESizingRule::Autosized)
	{
		Style |= WS_THICKFRAME;
	}
	Style |= bHasMaximizeBox ? WS_MAXIMIZEBOX : 0;
	Style |= bHasMinimizeBox ? WS_MINIMIZEBOX : 0;
	HWND Window = MakeTopLevel(Title.Get().ToString(), Style, nullptr);
	AttachedChild = ChildSlot.Widget;
	AddRoot(Window, AsShared(), FMargin(), true);
	if (SizingRule != ESizingRule::Autosized)
	{
		const float Scale = GetScale();
		RECT Frame{0, 0, static_cast<LONG>(ClientSize.X * Scale), static_cast<LONG>(ClientSize.Y * Scale)};
		AdjustWindowRectEx(&Frame, Style, FALSE, WS_EX_CONTROLPARENT);
		SetWindowPos(Window, nullptr, 0, 0, Frame.right - Frame.left, Frame.bottom - Frame.top, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
	}
	// Its own close button asks to be destroyed, as the code's own request does.
	NodeOf(Window)->OnMessage = [Window](UINT Message, WPARAM, LPARAM, LRESULT& Result)
	{
		if (Message != WM_CLOSE)
		{
			return false;
		}
		if (SWindow* Self = OwnerOf<SWindow>(Window))
		{
			Self->bDestroyRequested = true;
		}
		ShowWindow(Window, SW_HIDE);
		Result = 0;
		return true;
	};
	return ToNative(Window);
}

void SWindow::RequestDestroyWindow()
{
	bDestroyRequested = true;
	if (HWND Window = FindHwnd(*this))
	{
		SendMessageW(Window, WM_CLOSE, 0, 0);
	}
}

void* SWindow::GetNativeWindowHandle()
{
	return GetHwnd(*this);
}

// The headless backend: widgets keep their state and logic but are never drawn. No native widget is ever made,
// so every native step is empty, and the code that asks for a native widget gets none. This is the widget
// layer where no Qt is at hand (Windows builds): the tool's operations run on their widgets all the same.

#include "Framework/Application/SlateApplication.h"
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
#include "Widgets/Views/STableViewBase.h"

#include <cmath>

struct FNativeWidgetGuard
{
};

SWidget::SWidget() : Native(std::make_unique<FNativeWidgetGuard>())
{
	if (FSlateApplication::IsInitialized())
	{
		FSlateApplication::Get().RegisterWidget(this);
	}
}

SWidget::~SWidget()
{
	if (FSlateApplication::IsInitialized())
	{
		FSlateApplication::Get().UnregisterWidget(this);
	}
}

FNativeWidget* SWidget::GetNativeWidget()
{
	return nullptr;
}

FNativeWidget* SWidget::GetNativeWidgetIfMade() const
{
	return nullptr;
}

void SWidget::SetNativeWidget(FNativeWidget*) {}

void SWidget::SetTextKey(const FText& Text)
{
	TextKey = Text.GetKey();
}

void SWidget::ApplyVisibilityAndEnabled() {}

// Widgets that only draw.
FNativeWidget* SBorder::CreateNativeWidget() { return nullptr; }
FNativeWidget* SBox::CreateNativeWidget() { return nullptr; }
FNativeWidget* SComboBoxBase::CreateNativeWidget() { return nullptr; }
FNativeWidget* SGridPanel::CreateNativeWidget() { return nullptr; }
FNativeWidget* SHeader::CreateNativeWidget() { return nullptr; }
FNativeWidget* SHeaderRow::CreateNativeWidget() { return nullptr; }
FNativeWidget* SHyperlink::CreateNativeWidget() { return nullptr; }
FNativeWidget* SSpacer::CreateNativeWidget() { return nullptr; }
FNativeWidget* SSplitter::CreateNativeWidget() { return nullptr; }
FNativeWidget* SImage::CreateNativeWidget() { return nullptr; }
FNativeWidget* SWindow::CreateNativeWidget() { return nullptr; }
FNativeWidget* SButton::CreateNativeWidget() { return nullptr; }
FNativeWidget* SCheckBox::CreateNativeWidget() { return nullptr; }
FNativeWidget* STextBlock::CreateNativeWidget() { return nullptr; }
FNativeWidget* SCompoundWidget::CreateNativeWidget() { return nullptr; }
FNativeWidget* SBoxPanel::CreateNativeWidget() { return nullptr; }
FNativeWidget* SScrollBox::CreateNativeWidget() { return nullptr; }
FNativeWidget* SCircularThrobber::CreateNativeWidget() { return nullptr; }
FNativeWidget* STableViewBase::CreateNativeWidget() { return nullptr; }
FNativeWidget* SEditableTextBase::CreateLineEdit(bool) { return nullptr; }
FNativeWidget* SEditableTextBase::CreatePlainTextEdit() { return nullptr; }

void SImage::RefreshAttributes() { SWidget::RefreshAttributes(); }
void SButton::RefreshAttributes() { SWidget::RefreshAttributes(); }
void SCheckBox::RefreshAttributes() { SWidget::RefreshAttributes(); }
void STextBlock::RefreshAttributes() { SWidget::RefreshAttributes(); }

// Containers: the children are the widgets' own state; only their attachment to native layouts falls away.
void SCompoundWidget::AttachChild()
{
	AttachedChild = ChildSlot.Widget;
}

void SBoxPanel::ClearChildren()
{
	Slots.Empty();
	AttachedSlots = 0;
	bTrailingStretch = false;
}

void SBoxPanel::AttachPendingSlots() {}

void SScrollBox::ClearChildren()
{
	Slots.Empty();
	AttachedSlots = 0;
}

void SScrollBox::AttachPendingSlots() {}

void SEditableTextBase::ShowText(const FString& NewText)
{
	Shown = NewText;
}

struct STableViewBase::FNativeParts
{
};

STableViewBase::STableViewBase() : Parts(std::make_unique<FNativeParts>()) {}
STableViewBase::~STableViewBase() = default;

void STableViewBase::RefreshAttributes()
{
	SWidget::RefreshAttributes();
}

void STableViewBase::GetVisibleRange(int32& OutFirst, int32& OutLast) const
{
	OutFirst = INDEX_NONE;
	OutLast = INDEX_NONE;
}

void STableViewBase::MirrorSelection() {}
void STableViewBase::ShowRows(int32, bool) {}

SCircularThrobber::~SCircularThrobber() = default;

void SCircularThrobber::Tick(const FGeometry&, const double InCurrentTime, const float)
{
	Phase = Period > 0.0f ? std::fmod(InCurrentTime / Period, 1.0) : 0.0;
}

void SWindow::RequestDestroyWindow()
{
	bDestroyRequested = true;
}

void* SWindow::GetNativeWindowHandle()
{
	return nullptr;
}

struct FSlateApplication::FNativeApplication
{
};

FSlateApplication::FSlateApplication() : Native(std::make_unique<FNativeApplication>()) {}
FSlateApplication::~FSlateApplication() = default;

void FSlateApplication::StartNative(int&, char**) {}
void FSlateApplication::ProcessNativeEvents() {}
void FSlateApplication::FlushDeferredDeletes() {}

// Nothing is drawn, so nothing is measured: only sizes the widgets fix themselves count.
FSlateLayoutSize SWidget::MeasureNative(float) const
{
	return {};
}

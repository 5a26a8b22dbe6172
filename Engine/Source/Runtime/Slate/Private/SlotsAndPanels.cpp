#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QSplitter>
#include <QVBoxLayout>
#include <QWidget>

#include "Widgets/Layout/SLayoutWidgets.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SCompoundWidget.h"


namespace
{
	Qt::Alignment ToQtAlignment(EHorizontalAlignment HAlign, EVerticalAlignment VAlign)
	{
		Qt::Alignment Result;
		switch (HAlign)
		{
		case HAlign_Left:
			Result |= Qt::AlignLeft;
			break;
		case HAlign_Center:
			Result |= Qt::AlignHCenter;
			break;
		case HAlign_Right:
			Result |= Qt::AlignRight;
			break;
		default:
			break;
		}
		switch (VAlign)
		{
		case VAlign_Top:
			Result |= Qt::AlignTop;
			break;
		case VAlign_Center:
			Result |= Qt::AlignVCenter;
			break;
		case VAlign_Bottom:
			Result |= Qt::AlignBottom;
			break;
		default:
			break;
		}
		return Result;
	}

	QWidget* MakePlainWidget()
	{
		QWidget* Widget = new QWidget();
		Widget->setAttribute(Qt::WA_StyledBackground, false);
		return Widget;
	}
}

QString SlateQt::ToQString(const FString& Text)
{
	return QString::fromStdU16String(Text.GetStd());
}

FString SlateQt::FromQString(const QString& Text)
{
	return FString(Text.toStdU16String());
}

QWidget* SlateQt::MakeSlotHolder(SWidget& Child, const FMargin& Padding, EHorizontalAlignment HAlign, EVerticalAlignment VAlign)
{
	QWidget* Holder = MakePlainWidget();
	QVBoxLayout* Layout = new QVBoxLayout(Holder);
	Layout->setContentsMargins(static_cast<int>(Padding.Left), static_cast<int>(Padding.Top),
							   static_cast<int>(Padding.Right), static_cast<int>(Padding.Bottom));
	Layout->setSpacing(0);
	QWidget* ChildWidget = Child.GetQWidget();
	Layout->addWidget(ChildWidget, 0, ToQtAlignment(HAlign, VAlign));
	Holder->setSizePolicy(ChildWidget->sizePolicy());
	Child.RefreshAttributes();
	return Holder;
}

void SlateQt::ClearLayout(QLayout* Layout)
{
	while (QLayoutItem* Item = Layout->takeAt(0))
	{
		if (QWidget* Holder = Item->widget())
		{
			Holder->hide();
			Holder->deleteLater();
		}
		delete Item;
	}
}

// Compound widgets -------------------------------------------------------------------------------------------

SCompoundWidget::FChildSlotHandle& SCompoundWidget::FChildSlotHandle::operator[](const TSharedRef<SWidget>& InWidget)
{
	Widget = InWidget;
	if (Owner)
	{
		Owner->AttachChild();
	}
	return *this;
}

TArray<TSharedRef<SWidget>> SCompoundWidget::GetChildren() const
{
	return AttachedChild ? TArray<TSharedRef<SWidget>>{AttachedChild.ToSharedRef()} : TArray<TSharedRef<SWidget>>{};
}

QWidget* SCompoundWidget::CreateQWidget()
{
	QWidget* Widget = MakePlainWidget();
	QVBoxLayout* Layout = new QVBoxLayout(Widget);
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	QtWidget = Widget;
	ChildHolder = nullptr;
	AttachChild();
	return Widget;
}

void SCompoundWidget::AttachChild()
{
	// The former child goes with its holder (the child widget itself deletes its own Qt widget later).
	AttachedChild = ChildSlot.Widget;
	QWidget* Widget = QtWidget.data();
	if (!Widget)
	{
		return;
	}
	if (ChildHolder)
	{
		ChildHolder->hide();
		ChildHolder->deleteLater();
		ChildHolder = nullptr;
	}
	if (AttachedChild)
	{
		ChildHolder = SlateQt::MakeSlotHolder(*AttachedChild, ChildSlot.SlotPadding, ChildSlot.HAlignment, ChildSlot.VAlignment);
		Widget->layout()->addWidget(ChildHolder);
	}
}

// Box panels ---------------------------------------------------------------------------------------------------

SBoxPanel::FSlot& SBoxPanel::AddSlot()
{
	Slots.Add(FSlot());
	return Slots.Last();
}

void SBoxPanel::ClearChildren()
{
	Slots.Empty();
	AttachedSlots = 0;
	bTrailingStretch = false;
	if (Layout)
	{
		SlateQt::ClearLayout(Layout);
	}
}

TArray<TSharedRef<SWidget>> SBoxPanel::GetChildren() const
{
	return WidgetsOfSlots(Slots);
}

QWidget* SBoxPanel::CreateQWidget()
{
	QWidget* Widget = MakePlainWidget();
	Layout = Orientation == Orient_Vertical ? static_cast<QBoxLayout*>(new QVBoxLayout(Widget))
											: static_cast<QBoxLayout*>(new QHBoxLayout(Widget));
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	AttachedSlots = 0;
	bTrailingStretch = false;
	QtWidget = Widget;
	AttachPendingSlots();
	return Widget;
}

void SBoxPanel::AttachPendingSlots()
{
	if (!Layout || AttachedSlots >= Slots.Num())
	{
		return;
	}
	for (; AttachedSlots < Slots.Num(); ++AttachedSlots)
	{
		FSlot& Slot = Slots[AttachedSlots];
		if (!Slot.Widget)
		{
			continue;
		}
		QWidget* Holder = SlateQt::MakeSlotHolder(*Slot.Widget, Slot.SlotPadding, Slot.HAlignment, Slot.VAlignment);
		// Fill slots share the room by their values; auto slots keep their natural size. New slots stand
		// before the closing stretch, if there is one.
		const int Stretch = Slot.bAuto ? 0 : std::max(1, static_cast<int>(Slot.Fill * 100.0f));
		Layout->insertWidget(bTrailingStretch ? Layout->count() - 1 : Layout->count(), Holder, Stretch);
	}
	// A row of natural-size slots keeps them at its start, as the toolkit lays them out.
	if (!bTrailingStretch && Orientation == Orient_Horizontal &&
		std::all_of(Slots.begin(), Slots.end(), [](const FSlot& S) { return S.bAuto; }))
	{
		Layout->addStretch(1);
		bTrailingStretch = true;
	}
}

void SBoxPanel::RefreshAttributes()
{
	AttachPendingSlots();
	SWidget::RefreshAttributes();
}

// Border, box, spacer, header --------------------------------------------------------------------------------

void SBorder::Construct(const FArguments& InArgs)
{
	BorderImage = InArgs._BorderImage;
	ChildSlot.Padding(InArgs._Padding).HAlign(InArgs._HAlign).VAlign(InArgs._VAlign);
	if (InArgs._Content)
	{
		ChildSlot[InArgs._Content.ToSharedRef()];
	}
}

QWidget* SBorder::CreateQWidget()
{
	QWidget* Widget = SCompoundWidget::CreateQWidget();
	Widget->setAttribute(Qt::WA_StyledBackground, true);
	Widget->setProperty("slateBrush", BorderImage ? SlateQt::ToQString(BorderImage->ResourceName) : QString());
	// The selector keeps the frame to the border itself; a plain rule would frame every child as well.
	Widget->setProperty("slateBorder", true);
	Widget->setStyleSheet(QStringLiteral("*[slateBorder=\"true\"] { background-color: palette(window); border: 1px solid palette(mid); }"));
	return Widget;
}

void SBox::Construct(const FArguments& InArgs)
{
	WidthOverride = InArgs._WidthOverride;
	HeightOverride = InArgs._HeightOverride;
	ChildSlot.Padding(InArgs._Padding).HAlign(InArgs._HAlign).VAlign(InArgs._VAlign);
	if (InArgs._Content)
	{
		ChildSlot[InArgs._Content.ToSharedRef()];
	}
}

QWidget* SBox::CreateQWidget()
{
	QWidget* Widget = SCompoundWidget::CreateQWidget();
	if (WidthOverride > 0.0f)
	{
		Widget->setFixedWidth(static_cast<int>(WidthOverride));
	}
	if (HeightOverride > 0.0f)
	{
		Widget->setFixedHeight(static_cast<int>(HeightOverride));
	}
	return Widget;
}

QWidget* SSpacer::CreateQWidget()
{
	return MakePlainWidget();
}

void SHeader::Construct(const FArguments& InArgs)
{
	if (InArgs._Content)
	{
		ChildSlot.HAlign(HAlign_Center)[InArgs._Content.ToSharedRef()];
	}
}

QWidget* SHeader::CreateQWidget()
{
	QWidget* Widget = SCompoundWidget::CreateQWidget();
	QFrame* Line = new QFrame(Widget);
	Line->setFrameShape(QFrame::HLine);
	Line->setFrameShadow(QFrame::Sunken);
	Widget->layout()->addWidget(Line);
	return Widget;
}

// Scroll box ---------------------------------------------------------------------------------------------------

void SScrollBox::Construct(const FArguments& InArgs)
{
	Slots = InArgs.Slots;
}

SScrollBox::FSlot& SScrollBox::AddSlot()
{
	Slots.Add(FSlot());
	return Slots.Last();
}

void SScrollBox::ClearChildren()
{
	Slots.Empty();
	AttachedSlots = 0;
	if (Layout)
	{
		SlateQt::ClearLayout(Layout);
		Layout->addStretch(1);
	}
}

TArray<TSharedRef<SWidget>> SScrollBox::GetChildren() const
{
	return WidgetsOfSlots(Slots);
}

QWidget* SScrollBox::CreateQWidget()
{
	QScrollArea* Area = new QScrollArea();
	Area->setWidgetResizable(true);
	Area->setFrameShape(QFrame::NoFrame);
	QWidget* Inner = MakePlainWidget();
	Layout = new QVBoxLayout(Inner);
	Layout->setContentsMargins(0, 0, 0, 0);
	Layout->setSpacing(0);
	Layout->addStretch(1);
	Area->setWidget(Inner);
	AttachedSlots = 0;
	QtWidget = Area;
	AttachPendingSlots();
	return Area;
}

void SScrollBox::AttachPendingSlots()
{
	if (!Layout)
	{
		return;
	}
	for (; AttachedSlots < Slots.Num(); ++AttachedSlots)
	{
		FSlot& Slot = Slots[AttachedSlots];
		if (Slot.Widget)
		{
			// Before the closing stretch, so that children stand at the top.
			Layout->insertWidget(Layout->count() - 1,
								 SlateQt::MakeSlotHolder(*Slot.Widget, Slot.SlotPadding, Slot.HAlignment, Slot.VAlignment));
		}
	}
}

void SScrollBox::RefreshAttributes()
{
	AttachPendingSlots();
	SWidget::RefreshAttributes();
}

// Splitter -----------------------------------------------------------------------------------------------------

void SSplitter::Construct(const FArguments& InArgs)
{
	Slots = InArgs.Slots;
	Orientation = InArgs._Orientation;
}

SSplitter::FSlot& SSplitter::AddSlot()
{
	Slots.Add(FSlot());
	return Slots.Last();
}

TArray<TSharedRef<SWidget>> SSplitter::GetChildren() const
{
	return WidgetsOfSlots(Slots);
}

QWidget* SSplitter::CreateQWidget()
{
	QSplitter* Splitter = new QSplitter(Orientation == Orient_Horizontal ? Qt::Horizontal : Qt::Vertical);
	Splitter->setChildrenCollapsible(false);
	QList<int> Sizes;
	for (FSlot& Slot : Slots)
	{
		if (Slot.Widget)
		{
			Splitter->addWidget(SlateQt::MakeSlotHolder(*Slot.Widget, Slot.SlotPadding, Slot.HAlignment, Slot.VAlignment));
			Sizes.append(static_cast<int>(Slot.SizeValue * 1000.0f));
		}
	}
	Splitter->setSizes(Sizes);
	for (int Index = 0; Index < Sizes.size(); ++Index)
	{
		Splitter->setStretchFactor(Index, std::max(1, Sizes[Index] / 100));
	}
	return Splitter;
}

// Grid ---------------------------------------------------------------------------------------------------------

void SGridPanel::Construct(const FArguments& InArgs)
{
	Slots = InArgs.Slots;
	ColumnFills = InArgs.ColumnFills;
}

SGridPanel::FSlot& SGridPanel::AddSlot(int32 Column, int32 Row)
{
	Slots.Add(Slot(Column, Row));
	return Slots.Last();
}

TArray<TSharedRef<SWidget>> SGridPanel::GetChildren() const
{
	return WidgetsOfSlots(Slots);
}

QWidget* SGridPanel::CreateQWidget()
{
	QWidget* Widget = MakePlainWidget();
	QGridLayout* Grid = new QGridLayout(Widget);
	Grid->setContentsMargins(0, 0, 0, 0);
	Grid->setSpacing(0);
	for (const TPair<int32, float>& Fill : ColumnFills)
	{
		Grid->setColumnStretch(Fill.Key, static_cast<int>(Fill.Value * 100.0f));
	}
	for (FSlot& Slot : Slots)
	{
		if (!Slot.Widget)
		{
			continue;
		}
		// Several widgets may share one cell; each takes its own alignment in it.
		QWidget* Holder = SlateQt::MakeSlotHolder(*Slot.Widget, Slot.SlotPadding, Slot.HAlignment, Slot.VAlignment);
		// The columns share the width by their fill values whatever the cells hold: a long text wraps in its
		// column instead of pushing the other one aside. Only what can't shrink (a row of fixed-width buttons)
		// keeps its least width.
		QWidget* Child = Slot.Widget->GetQWidget();
		if (QLabel* Label = qobject_cast<QLabel*>(Child))
		{
			Label->setWordWrap(true);
			Label->setMinimumWidth(0);
		}
		else if (!Child->inherits("QLineEdit") && !Child->inherits("QAbstractScrollArea"))
		{
			Holder->setMinimumWidth(Holder->minimumSizeHint().width());
		}
		QSizePolicy Policy = Holder->sizePolicy();
		Policy.setHorizontalPolicy(QSizePolicy::Ignored);
		Holder->setSizePolicy(Policy);
		Grid->addWidget(Holder, Slot.Row, Slot.Column);
	}
	return Widget;
}

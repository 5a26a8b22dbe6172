#include <QCheckBox>
#include <QGraphicsDropShadowEffect>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTextDocument>

#include <algorithm>
#include <QPushButton>

#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SInputWidgets.h"
#include "Widgets/Text/STextBlock.h"


using SlateQt::FromQString;
using SlateQt::ToQString;

// Text block ---------------------------------------------------------------------------------------------------

void STextBlock::Construct(const FArguments& InArgs)
{
	Justification = InArgs._Justification;
	TextStyleName = InArgs._TextStyleName;
	bAutoWrap = InArgs._AutoWrapText;
	SetText(InArgs._Text);
}

void STextBlock::SetText(const TAttribute<FText>& InText)
{
	Text = InText;
	if (!Text.IsBound())
	{
		SetTextKey(Text.Get());
	}
	bShownOnce = false;
}

QWidget* STextBlock::CreateQWidget()
{
	QLabel* Label = new QLabel();
	Label->setTextFormat(Qt::PlainText);
	Label->setWordWrap(bAutoWrap);
	Label->setAlignment(Justification == ETextJustify::Center  ? Qt::AlignCenter
						: Justification == ETextJustify::Right ? Qt::AlignRight | Qt::AlignVCenter
															   : Qt::AlignLeft | Qt::AlignVCenter);
	if (TextStyleName == TEXT("EmbossedText"))
	{
		// Raised lettering: a larger bold face over a light edge one pixel below and to the right.
		QFont Font = Label->font();
		Font.setBold(true);
		Font.setPointSizeF(Font.pointSizeF() * 1.25);
		Label->setFont(Font);
		QGraphicsDropShadowEffect* Edge = new QGraphicsDropShadowEffect(Label);
		Edge->setOffset(1.0, 1.0);
		Edge->setBlurRadius(0.0);
		Edge->setColor(QColor(255, 255, 255, 200));
		Label->setGraphicsEffect(Edge);
	}
	QtWidget = Label;
	bShownOnce = false;
	RefreshAttributes();
	return Label;
}

void STextBlock::RefreshAttributes()
{
	if (QLabel* Label = qobject_cast<QLabel*>(QtWidget.data()))
	{
		const FString Now = Text.Get().ToString();
		if (!bShownOnce || Now != ShownText || Label->wordWrap() != bShownWrapped)
		{
			ShownText = Now;
			bShownOnce = true;
			bShownWrapped = Label->wordWrap();
			QString Shown = ToQString(Now);
			if (Label->wordWrap())
			{
				// A wrapped line may also break after a path separator, so that a long path stays readable.
				Shown.replace(QLatin1Char('\\'), QStringLiteral("\\\u200B")).replace(QLatin1Char('/'), QStringLiteral("/\u200B"));
			}
			Label->setText(Shown);
		}
	}
	SWidget::RefreshAttributes();
}

// Button -------------------------------------------------------------------------------------------------------

void SButton::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	OnClicked = InArgs._OnClicked;
	ContentHAlign = InArgs._HAlign;
	if (Text.IsSet() && !Text.IsBound())
	{
		SetTextKey(Text.Get());
	}
	if (InArgs._Content)
	{
		ChildSlot.HAlign(InArgs._HAlign).VAlign(InArgs._VAlign)[InArgs._Content.ToSharedRef()];
	}
}

FReply SButton::Click()
{
	if (!IsEnabled() || !OnClicked.IsBound())
	{
		return FReply::Unhandled();
	}
	TSharedRef<SWidget> KeepAlive = AsShared();
	return OnClicked.Execute();
}

FString SButton::GetDisplayText() const
{
	return Text.IsSet() ? Text.Get().ToString() : SCompoundWidget::GetDisplayText();
}

QWidget* SButton::CreateQWidget()
{
	QPushButton* Button = new QPushButton();
	if (AttachedChild)
	{
		QHBoxLayout* Layout = new QHBoxLayout(Button);
		Layout->setContentsMargins(4, 2, 4, 2);
		Layout->addWidget(SlateQt::MakeSlotHolder(*AttachedChild, FMargin(), ChildSlot.HAlignment, ChildSlot.VAlignment));
	}
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Button, &QPushButton::clicked,
					 [Weak]
					 {
						 if (TSharedPtr<SWidget> Self = Weak.Pin())
						 {
							 static_cast<SButton*>(Self.Get())->Click();
						 }
					 });
	QtWidget = Button;
	RefreshAttributes();
	return Button;
}

void SButton::RefreshAttributes()
{
	if (QPushButton* Button = qobject_cast<QPushButton*>(QtWidget.data()); Button && Text.IsSet())
	{
		const FString Now = Text.Get().ToString();
		if (Now != ShownText || Button->text().isEmpty())
		{
			ShownText = Now;
			Button->setText(ToQString(Now));
		}
	}
	SWidget::RefreshAttributes();
}

// Check box ----------------------------------------------------------------------------------------------------

void SCheckBox::Construct(const FArguments& InArgs)
{
	IsCheckedAttribute = InArgs._IsChecked;
	OwnState = IsCheckedAttribute.Get();
	OnCheckStateChanged = InArgs._OnCheckStateChanged;
	if (InArgs._Content)
	{
		ChildSlot[InArgs._Content.ToSharedRef()];
	}
}

ECheckBoxState SCheckBox::GetCheckedState() const
{
	return IsCheckedAttribute.IsBound() ? IsCheckedAttribute.Get() : OwnState;
}

void SCheckBox::ToggleCheckedState()
{
	if (!IsEnabled())
	{
		return;
	}
	const ECheckBoxState NewState =
		GetCheckedState() == ECheckBoxState::Checked ? ECheckBoxState::Unchecked : ECheckBoxState::Checked;
	if (!IsCheckedAttribute.IsBound())
	{
		OwnState = NewState;
	}
	TSharedRef<SWidget> KeepAlive = AsShared();
	OnCheckStateChanged.ExecuteIfBound(NewState);
	RefreshAttributes();
}

QWidget* SCheckBox::CreateQWidget()
{
	QCheckBox* Box = new QCheckBox();
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Box, &QCheckBox::clicked,
					 [Weak]
					 {
						 if (TSharedPtr<SWidget> Self = Weak.Pin())
						 {
							 SCheckBox* CheckBox = static_cast<SCheckBox*>(Self.Get());
							 if (!CheckBox->bUpdatingQt)
							 {
								 CheckBox->ToggleCheckedState();
							 }
						 }
					 });
	QtWidget = Box;
	RefreshAttributes();
	return Box;
}

void SCheckBox::RefreshAttributes()
{
	if (QCheckBox* Box = qobject_cast<QCheckBox*>(QtWidget.data()))
	{
		const bool bChecked = GetCheckedState() == ECheckBoxState::Checked;
		if (Box->isChecked() != bChecked)
		{
			bUpdatingQt = true;
			Box->setChecked(bChecked);
			bUpdatingQt = false;
		}
	}
	SWidget::RefreshAttributes();
}

// Hyperlink ----------------------------------------------------------------------------------------------------

void SHyperlink::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	OnNavigate = InArgs._OnNavigate;
	if (!Text.IsBound())
	{
		SetTextKey(Text.Get());
	}
}

void SHyperlink::Navigate()
{
	if (IsEnabled() && GetVisibility() == EVisibility::Visible)
	{
		TSharedRef<SWidget> KeepAlive = AsShared();
		OnNavigate.ExecuteIfBound();
	}
}

QWidget* SHyperlink::CreateQWidget()
{
	QPushButton* Link = new QPushButton(ToQString(Text.Get().ToString()));
	Link->setFlat(true);
	Link->setCursor(Qt::PointingHandCursor);
	Link->setStyleSheet(QStringLiteral("QPushButton { color: palette(link); text-decoration: underline; border: none; }"));
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Link, &QPushButton::clicked,
					 [Weak]
					 {
						 if (TSharedPtr<SWidget> Self = Weak.Pin())
						 {
							 static_cast<SHyperlink*>(Self.Get())->Navigate();
						 }
					 });
	return Link;
}

// Editable texts -----------------------------------------------------------------------------------------------

namespace
{
	// A text without a frame reads as a label: as wide as what it shows.
	void FitLineToText(QLineEdit* Line)
	{
		Line->setMinimumWidth(Line->fontMetrics().horizontalAdvance(Line->text()) + 12);
	}
}

void SEditableText::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	OnTextChanged = InArgs._OnTextChanged;
	bIsPassword = InArgs._IsPassword;
	Shown = Text.Get().ToString();
}

void SMultiLineEditableTextBox::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	OnTextChanged = InArgs._OnTextChanged;
	bMultiLine = true;
	bAutoWrap = InArgs._AutoWrapText;
	Shown = Text.Get().ToString();
}

void SEditableTextBase::SetTextFromUser(const FString& NewText)
{
	if (!IsEnabled())
	{
		return;
	}
	ShowText(NewText);
	TSharedRef<SWidget> KeepAlive = AsShared();
	OnTextChanged.ExecuteIfBound(FText::FromString(NewText));
}

FString SEditableTextBase::GetShownText() const
{
	return Shown;
}

void SEditableTextBase::ShowText(const FString& NewText)
{
	Shown = NewText;
	bUpdatingQt = true;
	// Text that changed under the user's hands keeps the cursor where it was, as far as the new text reaches.
	if (QLineEdit* Line = qobject_cast<QLineEdit*>(QtWidget.data()))
	{
		if (FromQString(Line->text()) != NewText)
		{
			const int Cursor = Line->cursorPosition();
			Line->setText(ToQString(NewText));
			Line->setCursorPosition(std::min(Cursor, static_cast<int>(Line->text().size())));
			if (!Line->hasFrame())
			{
				FitLineToText(Line);
			}
		}
	}
	else if (QPlainTextEdit* Edit = qobject_cast<QPlainTextEdit*>(QtWidget.data()))
	{
		if (FromQString(Edit->toPlainText()) != NewText)
		{
			const int Cursor = Edit->textCursor().position();
			Edit->setPlainText(ToQString(NewText));
			QTextCursor Moved = Edit->textCursor();
			Moved.setPosition(std::min(Cursor, static_cast<int>(Edit->document()->characterCount() - 1)));
			Edit->setTextCursor(Moved);
		}
	}
	bUpdatingQt = false;
}

QWidget* SEditableTextBase::CreateLineEdit(bool bFrame)
{
	QLineEdit* Line = new QLineEdit(ToQString(Shown));
	Line->setFrame(bFrame);
	// A text that nobody hears change only shows a value: it can be selected and copied, not edited.
	Line->setReadOnly(!OnTextChanged.IsBound());
	if (!bFrame)
	{
		Line->setStyleSheet(QStringLiteral("QLineEdit { background: transparent; }"));
		FitLineToText(Line);
	}
	if (bIsPassword)
	{
		Line->setEchoMode(QLineEdit::Password);
	}
	TWeakPtr<SWidget> Weak = weak_from_this();
	// textEdited fires for a user's typing only, never for text set by code.
	QObject::connect(Line, &QLineEdit::textEdited,
					 [Weak](const QString& NewText)
					 {
						 if (TSharedPtr<SWidget> Self = Weak.Pin())
						 {
							 SEditableTextBase* Edit = static_cast<SEditableTextBase*>(Self.Get());
							 Edit->Shown = FromQString(NewText);
							 Edit->OnTextChanged.ExecuteIfBound(FText::FromString(Edit->Shown));
						 }
					 });
	return Line;
}

QWidget* SEditableTextBase::CreatePlainTextEdit()
{
	QPlainTextEdit* Edit = new QPlainTextEdit(ToQString(Shown));
	Edit->setLineWrapMode(bAutoWrap ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
	Edit->setMinimumHeight(60);
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Edit, &QPlainTextEdit::textChanged,
					 [Weak, Edit]
					 {
						 TSharedPtr<SWidget> Self = Weak.Pin();
						 SEditableTextBase* Box = static_cast<SEditableTextBase*>(Self.Get());
						 if (Box && !Box->bUpdatingQt)
						 {
							 Box->Shown = FromQString(Edit->toPlainText());
							 Box->OnTextChanged.ExecuteIfBound(FText::FromString(Box->Shown));
						 }
					 });
	return Edit;
}

void SEditableTextBase::RefreshAttributes()
{
	// A bound text follows its getter; a box without a binding keeps what the user typed.
	if (Text.IsBound())
	{
		const FString Now = Text.Get().ToString();
		if (Now != Shown)
		{
			ShowText(Now);
		}
	}
	SWidget::RefreshAttributes();
}

// Combo box ----------------------------------------------------------------------------------------------------

void SComboBoxBase::ChooseOption(int32 Index)
{
	if (IsEnabled() && Index >= 0 && Index < NumOptions())
	{
		OnChosen(Index);
	}
}

QWidget* SComboBoxBase::CreateQWidget()
{
	QPushButton* Button = new QPushButton();
	QHBoxLayout* Layout = new QHBoxLayout(Button);
	Layout->setContentsMargins(6, 2, 18, 2);
	if (AttachedChild)
	{
		Layout->addWidget(SlateQt::MakeSlotHolder(*AttachedChild, FMargin(), HAlign_Left, VAlign_Center));
	}
	Button->setMinimumHeight(24);
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Button, &QPushButton::clicked,
					 [Weak, Button]
					 {
						 TSharedPtr<SWidget> Self = Weak.Pin();
						 if (!Self)
						 {
							 return;
						 }
						 SComboBoxBase* Combo = static_cast<SComboBoxBase*>(Self.Get());
						 QMenu Menu;
						 for (int32 Index = 0; Index < Combo->NumOptions(); ++Index)
						 {
							 QAction* Action = Menu.addAction(ToQString(Combo->GetOptionText(Index)));
							 Action->setData(Index);
						 }
						 if (QAction* Chosen = Menu.exec(Button->mapToGlobal(QPoint(0, Button->height()))))
						 {
							 Combo->ChooseOption(Chosen->data().toInt());
						 }
					 });
	return Button;
}

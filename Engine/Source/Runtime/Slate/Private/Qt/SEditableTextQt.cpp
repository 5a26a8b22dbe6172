#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTextDocument>

#include "SlateQt.h"
#include "Widgets/Input/SEditableText.h"

#include <algorithm>

using SlateQt::FromQString;
using SlateQt::ToQString;

namespace
{
	// A text without a frame reads as a label: as wide as what it shows.
	void FitLineToText(QLineEdit* Line)
	{
		Line->setMinimumWidth(Line->fontMetrics().horizontalAdvance(Line->text()) + 12);
	}
}

void SEditableTextBase::ShowText(const FString& NewText)
{
	Shown = NewText;
	bUpdatingNative = true;
	// Text that changed under the user's hands keeps the cursor where it was, as far as the new text reaches.
	if (QLineEdit* Line = qobject_cast<QLineEdit*>(SlateQt::FindQWidget(*this)))
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
	else if (QPlainTextEdit* Edit = qobject_cast<QPlainTextEdit*>(SlateQt::FindQWidget(*this)))
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
	bUpdatingNative = false;
}

FNativeWidget* SEditableTextBase::CreateLineEdit(bool bFrame)
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
							 static_cast<SEditableTextBase*>(Self.Get())->TakeTypedText(FromQString(NewText));
						 }
					 });
	return SlateQt::ToNative(Line);
}

FNativeWidget* SEditableTextBase::CreatePlainTextEdit()
{
	QPlainTextEdit* Edit = new QPlainTextEdit(ToQString(Shown));
	Edit->setLineWrapMode(bAutoWrap ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
	// Tab moves on through the form, as in every other box of it; a description has no use for tab characters.
	Edit->setTabChangesFocus(true);
	Edit->setMinimumHeight(60);
	TWeakPtr<SWidget> Weak = weak_from_this();
	QObject::connect(Edit, &QPlainTextEdit::textChanged,
					 [Weak, Edit]
					 {
						 if (TSharedPtr<SWidget> Self = Weak.Pin())
						 {
							 static_cast<SEditableTextBase*>(Self.Get())->TakeTypedText(FromQString(Edit->toPlainText()));
						 }
					 });
	return SlateQt::ToNative(Edit);
}

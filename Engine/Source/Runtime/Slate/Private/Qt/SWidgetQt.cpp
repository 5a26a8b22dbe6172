#include <QWidget>

#include "SlateQt.h"
#include "Widgets/SWidget.h"
#include "Framework/Application/SlateApplication.h"

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
	if (QWidget* Widget = Native->Widget.data())
	{
		// The Qt widget may be inside the very event that released this widget (a list whose selection
		// handler rebuilds the layout), so it goes only after the event has returned.
		Widget->hide();
		Widget->deleteLater();
	}
}

FNativeWidget* SWidget::GetNativeWidget()
{
	if (Native->Widget.isNull())
	{
		Native->Widget = SlateQt::ToQt(CreateNativeWidget());
		if (!TextKey.IsEmpty())
		{
			Native->Widget->setObjectName(SlateQt::ToQString(TextKey));
		}
		ApplyVisibilityAndEnabled();
	}
	return SlateQt::ToNative(Native->Widget.data());
}

FNativeWidget* SWidget::GetNativeWidgetIfMade() const
{
	return SlateQt::ToNative(Native->Widget.data());
}

void SWidget::SetNativeWidget(FNativeWidget* Widget)
{
	Native->Widget = SlateQt::ToQt(Widget);
}

QWidget* SlateQt::GetQWidget(SWidget& Widget)
{
	return ToQt(Widget.GetNativeWidget());
}

QWidget* SlateQt::FindQWidget(const SWidget& Widget)
{
	return ToQt(Widget.GetNativeWidgetIfMade());
}

void SWidget::SetTextKey(const FText& Text)
{
	TextKey = Text.GetKey();
	if (Native->Widget && !TextKey.IsEmpty())
	{
		Native->Widget->setObjectName(SlateQt::ToQString(TextKey));
	}
}

void SWidget::ApplyVisibilityAndEnabled()
{
	QWidget* Widget = Native->Widget.data();
	if (!Widget)
	{
		return;
	}
	const EVisibility Visibility = GetVisibility();
	// Set only on a change: every set asks the layouts above to lay out again, and this runs every frame.
	const bool bRetain = Visibility == EVisibility::Hidden;
	if (Widget->sizePolicy().retainSizeWhenHidden() != bRetain)
	{
		QSizePolicy Policy = Widget->sizePolicy();
		Policy.setRetainSizeWhenHidden(bRetain);
		Widget->setSizePolicy(Policy);
	}
	const bool bShow = Visibility == EVisibility::Visible;
	// Only widgets inside a window are shown or hidden; a top-level widget waits for its window.
	if (Widget->parentWidget() && Widget->isHidden() == bShow)
	{
		Widget->setVisible(bShow);
	}
	const bool bEnabled = IsEnabled();
	if (Widget->isEnabled() != bEnabled)
	{
		Widget->setEnabled(bEnabled);
	}
	if (ToolTip.IsSet())
	{
		const QString Tip = QString::fromStdU16String(ToolTip.Get().ToString().GetStd());
		if (Widget->toolTip() != Tip)
		{
			Widget->setToolTip(Tip);
		}
	}
}

// Qt lays out its own widgets; this is the size Qt's layouts would give the widget by itself.
FSlateLayoutSize SWidget::MeasureNative(float Scale) const
{
	const QWidget* Widget = Native->Widget.data();
	if (!Widget)
	{
		return {};
	}
	const QSize Hint = Widget->sizeHint();
	return {static_cast<float>(Hint.width()) * Scale, static_cast<float>(Hint.height()) * Scale};
}

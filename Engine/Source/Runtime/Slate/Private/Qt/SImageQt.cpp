#include <QPainter>
#include <QPixmap>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Images/SImage.h"

using SlateQt::ToQString;

namespace
{
	// Draws one brush: its picture at the brush's size, centred, in as many device pixels as the screen has (so
	// that a logo stays sharp at a scale of 2), or repeated over the whole area for a tiled brush.
	class FImageQt : public QWidget
	{
	public:
		QPixmap Picture;
		QSize ImageSize{16, 16};
		bool bTiled = false;

		QSize sizeHint() const override { return ImageSize; }
		QSize minimumSizeHint() const override { return bTiled ? QSize(0, 0) : ImageSize; }

	protected:
		void paintEvent(QPaintEvent*) override
		{
			if (Picture.isNull())
			{
				return;
			}
			QPainter Painter(this);
			Painter.setRenderHint(QPainter::SmoothPixmapTransform);
			if (bTiled)
			{
				Painter.drawTiledPixmap(rect(), Picture);
				return;
			}
			const qreal Ratio = devicePixelRatioF();
			const QSize Target = ImageSize.boundedTo(size());
			QPixmap Scaled = Picture.scaled(Target * Ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
			Scaled.setDevicePixelRatio(Ratio);
			const QSizeF Drawn = Scaled.deviceIndependentSize();
			Painter.drawPixmap(QPointF((width() - Drawn.width()) / 2.0, (height() - Drawn.height()) / 2.0), Scaled);
		}
	};

	QPixmap LoadStylePicture(const FString& Name)
	{
		QPixmap Pixmap;
		Pixmap.load(ToQString(FString(TEXT(":/slate/")) + Name + TEXT(".png")));
		return Pixmap;
	}
}

FNativeWidget* SImage::CreateNativeWidget()
{
	FImageQt* Widget = new FImageQt();
	SetNativeWidget(SlateQt::ToNative(Widget));
	bDrawnOnce = false;
	RefreshAttributes();
	return SlateQt::ToNative(Widget);
}

void SImage::RefreshAttributes()
{
	FImageQt* Widget = static_cast<FImageQt*>(SlateQt::FindQWidget(*this));
	const FSlateBrush* Brush = Image.Get();
	const FString Resource = Brush ? Brush->ResourceName : FString();
	if (Widget && (!bDrawnOnce || Resource != DrawnResource))
	{
		// The file of a dynamic brush is read here, when it is first drawn. A file that is missing or holds no
		// picture is drawn as the checkerboard that stands for "no image".
		DrawnResource = Resource;
		bDrawnOnce = true;
		QPixmap Pixmap;
		if (Brush && Brush->bIsDynamic && !Resource.IsEmpty())
		{
			Pixmap.load(ToQString(Resource));
		}
		else if (Brush && !Brush->ImagePath.IsEmpty())
		{
			Pixmap.load(ToQString(Brush->ImagePath));
		}
		else if (Brush && !Resource.IsEmpty())
		{
			Pixmap = LoadStylePicture(Resource);
		}
		bHasPicture = !Pixmap.isNull();
		const QSize Size = Brush ? QSize(static_cast<int>(Brush->ImageSize.X), static_cast<int>(Brush->ImageSize.Y)) : QSize(16, 16);
		Widget->ImageSize = Size;
		Widget->bTiled = Brush && Brush->Tiling == ESlateBrushTileType::Both;
		if (!bHasPicture && Brush && Brush->bIsDynamic)
		{
			Widget->Picture = LoadStylePicture(TEXT("Checkerboard"));
			Widget->bTiled = true;
		}
		else if (!bHasPicture && Brush)
		{
			// Style brushes without an image file are drawn as their name's colour swatch.
			QPixmap Swatch(Size);
			Swatch.fill(QColor::fromHsv(static_cast<int>(GetTypeHash(Resource) % 360), 60, 200));
			Widget->Picture = Swatch;
		}
		else
		{
			Widget->Picture = Pixmap;
		}
		Widget->updateGeometry();
		Widget->update();
	}
	SWidget::RefreshAttributes();
}

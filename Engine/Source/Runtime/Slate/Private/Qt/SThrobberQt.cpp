#include <QPainter>
#include <QWidget>

#include "SlateQt.h"
#include "Widgets/Images/SThrobber.h"

#include <algorithm>
#include <cmath>

namespace
{
	class FThrobberQt : public QWidget
	{
	public:
		explicit FThrobberQt(SCircularThrobber* InOwner) : Owner(InOwner)
		{
			const int Size = static_cast<int>(std::ceil(Owner->GetRadius() * 2.0f)) + 4;
			setFixedSize(Size, Size);
		}
		SCircularThrobber* Owner;

	protected:
		void paintEvent(QPaintEvent*) override
		{
			if (!Owner)
			{
				return;
			}
			QPainter Painter(this);
			Painter.setRenderHint(QPainter::Antialiasing);
			const int Pieces = std::max(1, Owner->GetNumPieces());
			const double Radius = Owner->GetRadius();
			const QPointF Center(width() / 2.0, height() / 2.0);
			for (int Piece = 0; Piece < Pieces; ++Piece)
			{
				const double Angle = 2.0 * M_PI * (Piece / static_cast<double>(Pieces) + Owner->GetPhase());
				const double Fade = std::fmod(Piece / static_cast<double>(Pieces) + 1.0 - Owner->GetPhase(), 1.0);
				Painter.setBrush(QColor(80, 140, 220, static_cast<int>(60 + 195 * Fade)));
				Painter.setPen(Qt::NoPen);
				const QPointF At = Center + QPointF(std::cos(Angle) * (Radius - 3), std::sin(Angle) * (Radius - 3));
				Painter.drawEllipse(At, 2.5, 2.5);
			}
		}
	};
}

SCircularThrobber::~SCircularThrobber()
{
	// The Qt widget lives on until the event loop deletes it; it must not paint from a gone owner.
	if (FThrobberQt* Widget = dynamic_cast<FThrobberQt*>(SlateQt::FindQWidget(*this)))
	{
		Widget->Owner = nullptr;
	}
}

void SCircularThrobber::Tick(const FGeometry&, const double InCurrentTime, const float)
{
	Phase = Period > 0.0f ? std::fmod(InCurrentTime / Period, 1.0) : 0.0;
	QWidget* Widget = SlateQt::FindQWidget(*this);
	if (Widget && Widget->isVisible())
	{
		Widget->update();
	}
}

FNativeWidget* SCircularThrobber::CreateNativeWidget()
{
	return SlateQt::ToNative(new FThrobberQt(this));
}

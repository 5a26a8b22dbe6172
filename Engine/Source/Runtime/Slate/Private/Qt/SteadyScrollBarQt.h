#pragma once

#include <QScrollBar>
#include <QStyleOptionSlider>

#include <array>
#include <optional>

// A scroll bar that repaints only when its picture changes. A log that grows by a batch of lines every frame
// changes the bar's range and value every frame, yet once the thumb is at its smallest and at the end it
// looks the same; the style's gradients and full-height lines were a third of such a frame.
class FSteadyScrollBarQt : public QScrollBar
{
public:
	explicit FSteadyScrollBarQt(Qt::Orientation Orientation) : QScrollBar(Orientation) {}

	// The range and value changes Changes makes repaint the bar once, at the end, and only if they changed its
	// picture. Each change on its own can't tell: between a new range and the value that follows it the bar
	// stands for a moment where it is not painted.
	template <typename FChanges>
	void ChangeTogether(FChanges&& Changes)
	{
		const bool bOuter = !bHeld;
		bHeld = true;
		Changes();
		if (!bOuter)
		{
			return;
		}
		bHeld = false;
		if (bChangedWhileHeld)
		{
			bChangedWhileHeld = false;
			if (Painted && *Painted == Picture())
			{
				++Skipped;
			}
			else
			{
				update();
			}
		}
	}

	// How many held changes left the bar as it was painted; the tests check that some did.
	quint64 RepaintsSkipped() const { return Skipped; }

protected:
	void sliderChange(SliderChange Change) override
	{
		if (bHeld && Change != SliderOrientationChange)
		{
			bChangedWhileHeld = true;
			return;
		}
		QScrollBar::sliderChange(Change);
	}

	void paintEvent(QPaintEvent* Event) override
	{
		Painted = Picture();
		QScrollBar::paintEvent(Event);
	}

private:
	// All the style draws a bar from: where each part lies, the bar's state, and whether it stands at an end
	// (a style may draw an arrow that can go no further differently).
	struct FPicture
	{
		std::array<QRect, 7> Parts;
		QStyle::State State;
		QStyle::SubControls Active;
		bool bAtMinimum = false;
		bool bAtMaximum = false;
		bool bEmptyRange = false;

		bool operator==(const FPicture& Other) const
		{
			return Parts == Other.Parts && State == Other.State && Active == Other.Active &&
				   bAtMinimum == Other.bAtMinimum && bAtMaximum == Other.bAtMaximum && bEmptyRange == Other.bEmptyRange;
		}
	};

	FPicture Picture() const
	{
		QStyleOptionSlider Option;
		initStyleOption(&Option);
		FPicture Result;
		const QStyle::SubControl Kinds[] = {QStyle::SC_ScrollBarAddLine, QStyle::SC_ScrollBarSubLine,
											QStyle::SC_ScrollBarAddPage, QStyle::SC_ScrollBarSubPage,
											QStyle::SC_ScrollBarFirst,	 QStyle::SC_ScrollBarLast,
											QStyle::SC_ScrollBarSlider};
		for (size_t Index = 0; Index < Result.Parts.size(); ++Index)
		{
			Result.Parts[Index] = style()->subControlRect(QStyle::CC_ScrollBar, &Option, Kinds[Index], this);
		}
		Result.State = Option.state;
		Result.Active = Option.activeSubControls;
		Result.bAtMinimum = Option.sliderValue == Option.minimum;
		Result.bAtMaximum = Option.sliderValue == Option.maximum;
		Result.bEmptyRange = Option.minimum == Option.maximum;
		return Result;
	}

	std::optional<FPicture> Painted;
	bool bHeld = false;
	bool bChangedWhileHeld = false;
	quint64 Skipped = 0;
};

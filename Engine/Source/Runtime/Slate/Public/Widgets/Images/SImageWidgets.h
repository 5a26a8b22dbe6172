#pragma once

#include "Styling/SlateBrush.h"
#include "Widgets/SWidget.h"

class SImage : public SWidget
{
public:
	SLATE_BEGIN_ARGS(SImage) : _Image(static_cast<const FSlateBrush*>(nullptr)) {}
	SLATE_ATTRIBUTE(const FSlateBrush*, Image)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs) { Image = InArgs._Image; }
	const FSlateBrush* GetImage() const { return Image.Get(); }
	// Whether the last drawn brush gave a picture; an unreadable file gives none.
	bool HasPicture() const { return bHasPicture; }
	void RefreshAttributes() override;

protected:
	QWidget* CreateQWidget() override;

private:
	TAttribute<const FSlateBrush*> Image;
	FString DrawnResource;
	bool bDrawnOnce = false;
	bool bHasPicture = false;
};

// A ring of pieces that turns while it is visible.
class SCircularThrobber : public SWidget
{
public:
	SLATE_BEGIN_ARGS(SCircularThrobber) : _NumPieces(6), _Period(0.75f), _Radius(16.0f) {}
	SLATE_ARGUMENT(int32, NumPieces)
	SLATE_ARGUMENT(float, Period)
	SLATE_ARGUMENT(float, Radius)
	SLATE_ARGUMENT(FString, PieceImageName)
	SLATE_END_ARGS()

	~SCircularThrobber() override;
	void Construct(const FArguments& InArgs);
	bool WantsTick() const override { return true; }
	void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;
	float GetRadius() const { return Radius; }
	int32 GetNumPieces() const { return NumPieces; }
	float GetPeriod() const { return Period; }
	double GetPhase() const { return Phase; }

protected:
	QWidget* CreateQWidget() override;

private:
	int32 NumPieces = 6;
	float Period = 0.75f;
	float Radius = 16.0f;
	double Phase = 0.0;
};

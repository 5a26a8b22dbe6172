#pragma once

#include "Widgets/SWidget.h"

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
	FNativeWidget* CreateNativeWidget() override;

private:
	int32 NumPieces = 6;
	float Period = 0.75f;
	float Radius = 16.0f;
	double Phase = 0.0;
};

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
	FNativeWidget* CreateNativeWidget() override;

private:
	TAttribute<const FSlateBrush*> Image;
	FString DrawnResource;
	bool bDrawnOnce = false;
	bool bHasPicture = false;
};

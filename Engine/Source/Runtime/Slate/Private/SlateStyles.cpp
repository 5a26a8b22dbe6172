#include "Styling/SlateBrush.h"

FSlateBrush& FSlateStyleSet::FindOrMakeBrush(const FString& Name) const
{
	TSharedPtr<FSlateBrush>& Brush = Brushes.FindOrAdd(Name);
	if (!Brush)
	{
		Brush = MakeShared<FSlateBrush>();
		Brush->ResourceName = Name;
	}
	return *Brush;
}

const FSlateBrush* FSlateStyleSet::GetBrush(const FString& Name) const
{
	return &FindOrMakeBrush(Name);
}

void FSlateStyleSet::SetImage(const FString& Name, const FString& ImagePath, const FVector2D& ImageSize)
{
	FSlateBrush& Brush = FindOrMakeBrush(Name);
	Brush.ImagePath = ImagePath;
	Brush.ImageSize = ImageSize;
}

void FSlateStyleSet::SetTiling(const FString& Name, ESlateBrushTileType Tiling)
{
	FindOrMakeBrush(Name).Tiling = Tiling;
}

const ISlateStyle& FCoreStyle::Get()
{
	static FSlateStyleSet Style = []
	{
		FSlateStyleSet Core;
		// The checkerboard stands for "no image" and covers the whole area it is given.
		Core.SetTiling(TEXT("Checkerboard"), ESlateBrushTileType::Both);
		return Core;
	}();
	return Style;
}

#include "Styling/SlateBrush.h"

namespace
{
	// Brushes by name; every name gives a brush, so that a missing image never fails a layout.
	class FNamedStyle : public ISlateStyle
	{
	public:
		const FSlateBrush* GetBrush(const FString& Name) const override
		{
			TSharedPtr<FSlateBrush>& Brush = Brushes.FindOrAdd(Name);
			if (!Brush)
			{
				Brush = MakeShared<FSlateBrush>();
				Brush->ResourceName = Name;
				// The kit's logo is drawn larger than the default icon size.
				if (Name == TEXT("Merrow.MerrowLogo"))
				{
					Brush->ImageSize = FVector2D(40, 40);
				}
				// The checkerboard stands for "no image" and covers the whole area it is given.
				if (Name == TEXT("Checkerboard"))
				{
					Brush->Tiling = ESlateBrushTileType::Both;
				}
			}
			return Brush.Get();
		}

	private:
		mutable TMap<FString, TSharedPtr<FSlateBrush>> Brushes;
	};
}

const ISlateStyle& FCoreStyle::Get()
{
	static FNamedStyle Style;
	return Style;
}

const ISlateStyle& FEditorStyle::Get()
{
	static FNamedStyle Style;
	return Style;
}

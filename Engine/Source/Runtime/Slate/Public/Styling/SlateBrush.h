#pragma once

#include "CoreMinimal.h"
#include "Layout/Margin.h"

enum class ESlateBrushTileType
{
	NoTile,
	Horizontal,
	Vertical,
	Both,
};

// How an area is painted: a named image of a style set, a plain colour, or an image file.
struct FSlateBrush
{
	FString ResourceName;     // a style's image name, or a file path for dynamic brushes
	FString ImagePath;        // the picture file a style set gave its brush of this name, if any
	FVector2D ImageSize{16, 16};
	FLinearColor Tint;
	bool bIsDynamic = false;  // loaded from ResourceName when first drawn
	ESlateBrushTileType Tiling = ESlateBrushTileType::NoTile;  // Both: the image repeats over the whole area

	virtual ~FSlateBrush() = default;
	const FString& GetResourceName() const { return ResourceName; }
};

enum class ESlateBrushImageType
{
	NoImage,
	FullColor,
	Linear,
};

// A brush made from an image file at run time. The file is read when the brush is first drawn; a file that
// can't be read paints nothing.
struct FSlateDynamicImageBrush : FSlateBrush
{
	FSlateDynamicImageBrush(const FString& InImagePath, const FVector2D& InImageSize,
							const FLinearColor& InTint = FLinearColor::White,
							ESlateBrushTileType InTiling = ESlateBrushTileType::NoTile,
							ESlateBrushImageType InImageType = ESlateBrushImageType::FullColor)
	{
		ResourceName = InImagePath;
		ImageSize = InImageSize;
		Tint = InTint;
		Tiling = InTiling;
		bIsDynamic = true;
	}
};

struct FTextBlockStyle
{
	FString Name;
};

struct FHyperlinkStyle
{
	FString Name;
};

// A set of named brushes and styles. Unknown names give a fallback brush, never an error.
class ISlateStyle
{
public:
	virtual ~ISlateStyle() = default;
	virtual const FSlateBrush* GetBrush(const FString& Name) const = 0;
	template <typename StyleType>
	const StyleType& GetWidgetStyle(const FString& Name) const
	{
		static TMap<FString, StyleType> Styles;
		StyleType& Style = Styles.FindOrAdd(Name);
		Style.Name = Name;
		return Style;
	}
};

// A style set to fill: every name gives a brush, made when first asked for, so that a missing image never fails
// a layout; a name may be given a picture file to draw.
class FSlateStyleSet : public ISlateStyle
{
public:
	const FSlateBrush* GetBrush(const FString& Name) const override;
	// The brush Name draws the picture at ImagePath (any path the backend reads), ImageSize points large.
	void SetImage(const FString& Name, const FString& ImagePath, const FVector2D& ImageSize);
	void SetTiling(const FString& Name, ESlateBrushTileType Tiling);

private:
	FSlateBrush& FindOrMakeBrush(const FString& Name) const;
	mutable TMap<FString, TSharedPtr<FSlateBrush>> Brushes;
};

class FCoreStyle
{
public:
	static const ISlateStyle& Get();
};

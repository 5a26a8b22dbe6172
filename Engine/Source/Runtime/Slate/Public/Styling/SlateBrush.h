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

class FCoreStyle
{
public:
	static const ISlateStyle& Get();
};

class FEditorStyle
{
public:
	static const ISlateStyle& Get();
	static const FSlateBrush* GetBrush(const FString& Name) { return Get().GetBrush(Name); }
};

#pragma once

#include "CoreTypes.h"

// Whether a widget shows: Hidden keeps its space in the layout, Collapsed gives it up.
struct EVisibility
{
	enum EValue : uint8
	{
		VisibleValue,
		HiddenValue,
		CollapsedValue,
	};
	EValue Value = VisibleValue;

	static const EVisibility Visible;
	static const EVisibility Hidden;
	static const EVisibility Collapsed;

	bool operator==(const EVisibility& Other) const { return Value == Other.Value; }
	bool operator!=(const EVisibility& Other) const { return Value != Other.Value; }
	bool IsVisible() const { return Value == VisibleValue; }
};
inline const EVisibility EVisibility::Visible{EVisibility::VisibleValue};
inline const EVisibility EVisibility::Hidden{EVisibility::HiddenValue};
inline const EVisibility EVisibility::Collapsed{EVisibility::CollapsedValue};

enum EHorizontalAlignment
{
	HAlign_Fill,
	HAlign_Left,
	HAlign_Center,
	HAlign_Right,
};

enum EVerticalAlignment
{
	VAlign_Fill,
	VAlign_Top,
	VAlign_Center,
	VAlign_Bottom,
};

enum EOrientation
{
	Orient_Horizontal,
	Orient_Vertical,
};

namespace ESelectionMode
{
	enum Type
	{
		None = 0,
		Single = 1,
		// One row; a click on the selected row clears the selection.
		SingleToggle = 2,
		Multi = 3,
	};
}

namespace ESelectInfo
{
	enum Type
	{
		OnKeyPress = 0,
		OnNavigation = 1,
		OnMouseClick = 2,
		// The selection was made by code, not by the user.
		Direct = 3,
	};
}

enum class ECheckBoxState : uint8
{
	Unchecked = 0,
	Checked = 1,
	Undetermined = 2,
};

namespace ETextJustify
{
	enum Type
	{
		Left,
		Center,
		Right,
	};
}

namespace ETabRole
{
	enum Type
	{
		MajorTab = 0,
		PanelTab = 1,
		NomadTab = 2,
		DocumentTab = 3,
	};
}

namespace EScrollBarVisibility
{
	enum Type
	{
		Auto,
		AlwaysVisible,
	};
}

// How a window takes its size: fixed at its client size, from its content, or resizable by the user.
enum class ESizingRule : uint8
{
	FixedSize,
	Autosized,
	UserSized,
};

// Where a window first appears: where the platform puts it, or centred in a work area (the screen less
// its task bars), either the primary screen's or the one the editor's main window is on.
enum class EAutoCenter : uint8
{
	None,
	PrimaryWorkArea,
	PreferredWorkArea,
};

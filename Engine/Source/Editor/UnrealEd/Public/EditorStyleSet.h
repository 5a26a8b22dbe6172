#pragma once

#include "Styling/SlateBrush.h"

// The editor's style set: its named brushes, among them the kit's logo.
class FEditorStyle
{
public:
	static const ISlateStyle& Get();
	static const FSlateBrush* GetBrush(const FString& Name) { return Get().GetBrush(Name); }
};

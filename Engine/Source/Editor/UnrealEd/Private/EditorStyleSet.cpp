#include "EditorStyleSet.h"

const ISlateStyle& FEditorStyle::Get()
{
	static FSlateStyleSet Style = []
	{
		FSlateStyleSet Editor;
		// The kit's logo, built into this library (Resources/EditorResources.qrc), drawn larger than an icon.
		Editor.SetImage(TEXT("Merrow.MerrowLogo"), TEXT(":/editor/MerrowLogo.png"), FVector2D(40, 40));
		return Editor;
	}();
	return Style;
}

#include "Widgets/SWidget.h"

#include "Framework/Application/SlateApplication.h"

void SWidget::RefreshAttributes()
{
	ApplyVisibilityAndEnabled();
}

FString SWidget::GetDisplayText() const
{
	FString Text;
	for (const TSharedRef<SWidget>& Child : GetChildren())
	{
		const FString ChildText = Child->GetDisplayText();
		if (!ChildText.IsEmpty())
		{
			Text += Text.IsEmpty() ? ChildText : FString(TEXT(" ")) + ChildText;
		}
	}
	return Text;
}

TSharedPtr<SWidget> FindWidgetByKey(const TSharedRef<SWidget>& Root, const FString& Key)
{
	TArray<TSharedRef<SWidget>> Stack{Root};
	while (Stack.Num() > 0)
	{
		TSharedRef<SWidget> Widget = Stack.Pop();
		if (Widget->GetTextKey() == Key)
		{
			return Widget;
		}
		TArray<TSharedRef<SWidget>> Children = Widget->GetChildren();
		for (int32 Index = Children.Num() - 1; Index >= 0; --Index)
		{
			Stack.Add(Children[Index]);
		}
	}
	return nullptr;
}

TArray<TSharedRef<SWidget>> FindWidgetsByType(const TSharedRef<SWidget>& Root, const FString& TypeName)
{
	TArray<TSharedRef<SWidget>> Found;
	TArray<TSharedRef<SWidget>> Stack{Root};
	while (Stack.Num() > 0)
	{
		TSharedRef<SWidget> Widget = Stack.Pop();
		if (Widget->GetTypeName() == TypeName)
		{
			Found.Add(Widget);
		}
		TArray<TSharedRef<SWidget>> Children = Widget->GetChildren();
		for (int32 Index = Children.Num() - 1; Index >= 0; --Index)
		{
			Stack.Add(Children[Index]);
		}
	}
	return Found;
}

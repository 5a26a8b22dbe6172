#include "Widgets/Input/SHyperlink.h"

void SHyperlink::Construct(const FArguments& InArgs)
{
	Text = InArgs._Text;
	OnNavigate = InArgs._OnNavigate;
	if (!Text.IsBound())
	{
		SetTextKey(Text.Get());
	}
}

void SHyperlink::Navigate()
{
	if (IsEnabled() && GetVisibility() == EVisibility::Visible)
	{
		TSharedRef<SWidget> KeepAlive = AsShared();
		OnNavigate.ExecuteIfBound();
	}
}


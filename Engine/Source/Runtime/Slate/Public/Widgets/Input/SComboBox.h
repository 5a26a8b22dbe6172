#pragma once

#include "Widgets/SCompoundWidget.h"

// A button that shows its content and opens a menu of the options, each drawn by the row generator.
class SComboBoxBase : public SCompoundWidget
{
public:
	// A user's choice of the option at Index.
	void ChooseOption(int32 Index);
	virtual int32 NumOptions() const = 0;
	virtual FString GetOptionText(int32 Index) = 0;

protected:
	FNativeWidget* CreateNativeWidget() override;
	virtual void OnChosen(int32 Index) = 0;
};

template <typename OptionType>
class SComboBox : public SComboBoxBase
{
public:
	DECLARE_DELEGATE_RetVal_OneParam(TSharedRef<SWidget>, FOnGenerateWidget, OptionType);
	DECLARE_DELEGATE_TwoParams(FOnSelectionChanged, OptionType, ESelectInfo::Type);

	SLATE_BEGIN_ARGS(SComboBox) : _OptionsSource(nullptr) {}
	SLATE_ARGUMENT(const TArray<OptionType>*, OptionsSource)
	SLATE_ARGUMENT(OptionType, InitiallySelectedItem)
	SLATE_EVENT(FOnGenerateWidget, OnGenerateWidget)
	SLATE_EVENT(FOnSelectionChanged, OnSelectionChanged)
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs)
	{
		OptionsSource = InArgs._OptionsSource;
		SelectedItem = InArgs._InitiallySelectedItem;
		OnGenerateWidget = InArgs._OnGenerateWidget;
		OnSelectionChanged = InArgs._OnSelectionChanged;
		if (InArgs._Content)
		{
			ChildSlot[InArgs._Content.ToSharedRef()];
		}
	}

	OptionType GetSelectedItem() const { return SelectedItem; }
	int32 NumOptions() const override { return OptionsSource ? OptionsSource->Num() : 0; }
	FString GetOptionText(int32 Index) override
	{
		check(OnGenerateWidget.IsBound());
		return OnGenerateWidget.Execute((*OptionsSource)[Index])->GetDisplayText();
	}

protected:
	void OnChosen(int32 Index) override
	{
		SelectedItem = (*OptionsSource)[Index];
		TSharedRef<SWidget> KeepAlive = AsShared();
		OnSelectionChanged.ExecuteIfBound(SelectedItem, ESelectInfo::OnMouseClick);
	}

private:
	const TArray<OptionType>* OptionsSource = nullptr;
	OptionType SelectedItem{};
	FOnGenerateWidget OnGenerateWidget;
	FOnSelectionChanged OnSelectionChanged;
};

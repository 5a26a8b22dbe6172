#pragma once

#include "Widgets/SWidget.h"

// The header of a list: one labelled column for each entry.
class SHeaderRow : public SWidget
{
public:
	struct FColumn
	{
		FString ColumnId;
		FText Label;
		FColumn& DefaultLabel(const FText& InLabel)
		{
			Label = InLabel;
			return *this;
		}
	};
	static FColumn Column(const FString& ColumnId)
	{
		FColumn Result;
		Result.ColumnId = ColumnId;
		return Result;
	}

	SLATE_BEGIN_ARGS(SHeaderRow) {}
	SLATE_SUPPORTS_SLOT(FColumn)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	const TArray<FColumn>& GetColumns() const { return Columns; }
	FString GetDisplayText() const override;
	TArray<TSharedRef<SWidget>> GetChildren() const override;

protected:
	FNativeWidget* CreateNativeWidget() override;

private:
	TArray<FColumn> Columns;
	TArray<TSharedRef<SWidget>> Labels;
};

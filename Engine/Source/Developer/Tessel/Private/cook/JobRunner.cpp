#include "STesselUI.h"

#include "Dialogs/Dialogs.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "cook/CookJob.h"
#include "cook/CookQueue.h"

#define LOCTEXT_NAMESPACE "STesselTool"

void STesselTool::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	bool bNewLines = false;
	const bool bEnded = PumpCookJobs(
		[this, &bNewLines](FString&& Line)
		{
			LogMessages.Add(MakeShared<FString>(MoveTemp(Line)));
			bNewLines = true;
		},
		TakenLines);
	if (bEnded)
	{
		ShowResultDialog();
	}
	if (bNewLines && LogListView)
	{
		LogListView->RequestListRefresh();
		if (LogMessages.Num() > 0 && !LogListView->IsItemVisible(LogMessages.Last()))
		{
			LogListView->RequestScrollIntoView(LogMessages.Last());
		}
	}
}

// clang-format off
void STesselTool::ShowResultDialog()
{
	const FText Message =
		DescribeCookVerdict(LogMessages.ContainsByPredicate([](const TSharedPtr<FString>& Line) { return Line && SaysSuccess(*Line); }));
	TSharedRef<SWidget> Content = SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(10.0f)
		[
			SNew(STextBlock).Text(Message)
		];
	SGenericDialogWidget::OpenDialog(LOCTEXT("Succesfull", "Quillon Dev Kit"), Content);
}
// clang-format on

FReply STesselTool::OnCancelClicked()
{
	CancelAllJobs();
	return FReply::Handled();
}

#undef LOCTEXT_NAMESPACE

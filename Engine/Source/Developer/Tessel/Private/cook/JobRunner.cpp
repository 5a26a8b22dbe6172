#include "STesselUI.h"

#include "Dialogs/Dialogs.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "STesselTool"

void STesselTool::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	bool bNewLines = false;
	bool bRemoved = false;
	if (ActiveJobs.Num() == 0)
	{
		return;
	}

	auto TakeLines = [this, &bNewLines](FMonitoredJob& Job)
	{
		Job.TakeCompletedLines(TakenLines);
		for (FString& Line : TakenLines)
		{
			LogMessages.Add(MakeShared<FString>(MoveTemp(Line)));
		}
		bNewLines = bNewLines || TakenLines.Num() > 0;
		TakenLines.Reset();
	};

	for (int32 Index = 0; Index < ActiveJobs.Num();)
	{
		TSharedPtr<FCookJob> Job = ActiveJobs[Index];
		if (!Job)
		{
			ActiveJobs.RemoveAt(Index);
			bRemoved = true;
			continue;
		}
		if (Job->bStarted)
		{
			TakeLines(*Job);
		}
		if (Job->Process->IsRunning())
		{
			break;
		}
		if (!Job->bStarted)
		{
			Job->bStarted = true;
			Job->Process->Launch();
			break;
		}
		// The child has ended: its last words, the packaging step, and the next job in this same tick.
		Job->SplitPendingOutput(true);
		TakeLines(*Job);
		Job->FinishCookOutput();
		TakeLines(*Job);
		ActiveJobs.RemoveAt(Index);
		Job.Reset();
		bRemoved = true;
	}

	if (bRemoved && ActiveJobs.Num() == 0)
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
	const bool bSuccess = LogMessages.ContainsByPredicate(
		[](const TSharedPtr<FString>& Line) { return Line->Contains(TEXT("Success"), ESearchCase::IgnoreCase); });
	const FText Message = bSuccess ? LOCTEXT("SuccessMsg", "Job Successful!!") : LOCTEXT("SuccessMsg", "Job Finsihed (possible errors)!!");
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

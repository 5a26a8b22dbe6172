#include "STesselUI.h"

#include "cook/CookQueue.h"

FReply STesselTool::OnCookMapClicked()
{
	StartCook(ECookKind::Map);
	return FReply::Handled();
}

FReply STesselTool::OnCookGameModClicked()
{
	StartCook(ECookKind::GameMod);
	return FReply::Handled();
}

FReply STesselTool::OnCookTotalConversionClicked()
{
	StartCook(ECookKind::TotalConversion);
	return FReply::Handled();
}

FReply STesselTool::OnCookMapExtensionClicked()
{
	StartCook(ECookKind::IslandExtension);
	return FReply::Handled();
}

void STesselTool::StartCook(ECookKind Kind)
{
	check(SelectedMod.IsValid());
	LogMessages.Empty();
	// The options come from the editor's command line, read anew at every cook; the test folder from the form.
	FCookOptions Options = FCookOptions::FromEditorCommandLine(FCommandLine::Get());
	Options.TestOutputDir = TestOutputDir;
	QueueCook(*SelectedMod, Kind, Options, [this](FString&& Line) { LogMessages.Add(MakeShared<FString>(MoveTemp(Line))); });
	if (LogListView)
	{
		LogListView->RequestListRefresh();
	}
}

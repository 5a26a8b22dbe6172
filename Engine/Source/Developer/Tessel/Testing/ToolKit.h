#pragma once

// A test kit with the tool over it, without a window: the editor's command line as given, the editor's services
// recorded and answered from a script, and a tick that runs the job queue as the tab's does. At the end the
// queue is empty and the command line, the mod number and the services are as they were.
// For the module's own tests, which see its private headers.

#include "STesselUI.h"
#include "TestKit.h"
#include "TestPrograms.h"
#include "Testing/EditorServicesDouble.h"
#include "cook/CookJob.h"

class FToolKit : public FTestKit
{
public:
	explicit FToolKit(const TCHAR* EditorCommandLine = TEXT(""))
	{
		FCommandLine::Set(EditorCommandLine);
		ModId = 123456789;
		IEditorServices::Set(Editor);
	}
	~FToolKit()
	{
		Tool.Reset();
		CancelAllJobs();
		IEditorServices::Set(nullptr);
		FCommandLine::Set(FString());
		ModId = 123456789;
	}

	// A new tool, as the tab makes one when it opens; the one before closes first.
	STesselTool& OpenTool()
	{
		Tool.Reset();
		Tool = SNew(STesselTool);
		return *Tool;
	}
	void Tick(STesselTool* Target = nullptr) { (Target ? *Target : *Tool).Tick(FGeometry(), 0.0, 0.016f); }
	// Ticks until the condition holds; false after a generous time.
	template <typename ConditionType> bool TickUntil(ConditionType Condition, STesselTool* Target = nullptr)
	{
		return TestPrograms::WaitUntil(Condition, [&] { Tick(Target); });
	}
	bool RunToEnd()
	{
		return TickUntil([] { return ActiveJobs.Num() == 0; });
	}
	// The log's lines, each ended by a line feed.
	FString Log() const
	{
		FString Text;
		for (const TSharedPtr<FString>& Line : Tool->LogMessages)
		{
			Text += *Line + TEXT("\n");
		}
		return Text;
	}
	// The log's lines, then the result dialogs as "title | text", each ended by a line feed.
	FString Transcript() const
	{
		FString Text = Log();
		for (const FEditorServicesDouble::FDialog& Dialog : Editor->Dialogs)
		{
			Text += Dialog.Title.ToString() + TEXT(" | ") + Dialog.Content->GetDisplayText() + TEXT("\n");
		}
		return Text;
	}

	TSharedPtr<FEditorServicesDouble> Editor = MakeShared<FEditorServicesDouble>();
	TSharedPtr<STesselTool> Tool;
};

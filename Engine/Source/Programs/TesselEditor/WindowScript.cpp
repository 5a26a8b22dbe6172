#include "WindowScript.h"

#include <QApplication>

#include "HostWindow.h"
#include "Widgets/Input/SInputWidgets.h"
#include "Widgets/Views/SListView.h"

#include <cstdio>

namespace
{
	TSharedPtr<SWidget> ToolOf(const FHostWindow& Window)
	{
		TSharedPtr<SDockTab> Tab = Window.FindTab(TEXT("TesselTools"));
		return Tab ? Tab->GetContent() : nullptr;
	}

	// The tool's two lists in the order of its layout: the mods, then the log.
	TSharedPtr<STableViewBase> ListOf(const TSharedPtr<SWidget>& Tool, int32 Which)
	{
		TArray<TSharedRef<SWidget>> Lists = FindWidgetsByType(Tool.ToSharedRef(), TEXT("SListView"));
		return Lists.IsValidIndex(Which) ? TSharedPtr<STableViewBase>(StaticCastSharedRef<STableViewBase>(Lists[Which])) : nullptr;
	}

	TSharedPtr<SButton> ButtonOf(const TSharedPtr<SWidget>& Tool, const TCHAR* Key)
	{
		TSharedPtr<SWidget> Found = FindWidgetByKey(Tool.ToSharedRef(), Key);
		return Found ? StaticCastSharedPtr<SButton>(Found) : nullptr;
	}
}

FWindowScript::FWindowScript(FHostWindow& InWindow, const FString& InModDir, const FString& InPicturePath)
	: Window(InWindow), ModDir(InModDir), PicturePath(InPicturePath)
{
	QObject::connect(&Timer, &QTimer::timeout, [this] { Step(); });
}

void FWindowScript::Start()
{
	Timer.start(16);
}

void FWindowScript::OnDialog(const FString& Title, const FString& Body)
{
	// Printed at the end, after the last lines of the log.
	DialogTitle = Title;
	DialogBody = Body;
}

void FWindowScript::MirrorLog()
{
	TSharedPtr<STableViewBase> Log = ListOf(ToolOf(Window), 1);
	if (!Log)
	{
		return;
	}
	// A cook starts by emptying the log; the mirror starts over with it.
	if (Log->GetNumRowsShown() < LinesShown)
	{
		LinesShown = 0;
	}
	for (; LinesShown < Log->GetNumRowsShown(); ++LinesShown)
	{
		std::puts(Log->GetRowText(LinesShown).ToUtf8().c_str());
	}
	std::fflush(stdout);
}

void FWindowScript::Step()
{
	TSharedPtr<SWidget> Tool = ToolOf(Window);
	if (!Tool)
	{
		Finish(1, "The tool's tab is not open");
		return;
	}
	switch (Stage)
	{
	case EStage::SelectMod:
	{
		TSharedPtr<STableViewBase> Mods = ListOf(Tool, 0);
		for (int32 Row = 0; Mods && Row < Mods->GetNumRowsShown(); ++Row)
		{
			if (Mods->GetRowText(Row).Equals(ModDir, ESearchCase::IgnoreCase))
			{
				Mods->ClickRow(Row);
				Stage = EStage::PressCook;
				return;
			}
		}
		if (++Frames > 60)
		{
			std::fprintf(stderr, "No mod folder named %s\n", ModDir.ToUtf8().c_str());
			Finish(1, nullptr);
		}
		return;
	}
	case EStage::PressCook:
	{
		TSharedPtr<SButton> CookMap = ButtonOf(Tool, TEXT("CookMapMod"));
		TSharedPtr<SButton> CookMod = ButtonOf(Tool, TEXT("CookMod"));
		if (!CookMap || !CookMod)
		{
			Finish(1, "The form has no cook buttons");
			return;
		}
		// The click goes through the button itself, guard and all.
		(CookMap->IsEnabled() ? CookMap : CookMod)->Click();
		Stage = EStage::WaitForRun;
		return;
	}
	case EStage::WaitForRun:
	{
		MirrorLog();
		TSharedPtr<SButton> Cancel = ButtonOf(Tool, TEXT("CancelJob"));
		if (Cancel && !Cancel->IsEnabled())
		{
			Stage = EStage::Settle;
			Frames = 0;
		}
		return;
	}
	case EStage::Settle:
		// A few frames so that the last lines and the guards are drawn before the picture.
		MirrorLog();
		if (++Frames >= 10)
		{
			Timer.stop();
			const bool bSaved = Window.grab().save(SlateQt::ToQString(PicturePath));
			if (!bSaved)
			{
				Finish(1, "Could not save the picture");
				return;
			}
			std::printf("%s: %s\n", DialogTitle.ToUtf8().c_str(), DialogBody.ToUtf8().c_str());
			std::printf("Picture of the tool saved to %s\n", PicturePath.ToUtf8().c_str());
			Finish(DialogBody == TEXT("Job Successful!!") ? 0 : 1, nullptr);
		}
		return;
	}
}

void FWindowScript::Finish(int ExitCode, const char* Message)
{
	Timer.stop();
	if (Message)
	{
		std::fprintf(stderr, "%s\n", Message);
	}
	std::fflush(stdout);
	QApplication::exit(ExitCode);
}

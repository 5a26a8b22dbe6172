#include "STesselUI.h"

#include "HAL/PlatformProcess.h"
#include "Misc/WindowsArguments.h"

// The kit's uploader gets one command line, the one a Windows shell would have been handed. No shell runs
// it here: the line is split by the Windows argument rules, the first piece is the program and the rest are
// its arguments, so that nothing typed into a mod's fields can ever run a command. An unquoted program path
// with a blank in it still splits at the blank, and so fails to start, as it would there.
//
// The exit code is the published id. A Windows program can return any 32-bit number; a POSIX exit status
// only reaches 0 to 255, so ids that come back through a real exit status here lie in 100 to 255 (the
// stand-in uploader keeps to that). A program that can't be started, or that a signal ends (a negative code),
// counts as "not published".

namespace
{
	// Starts the program that the line names with the arguments that follow, and waits for its end. Returns
	// its exit code, or -1 when it couldn't be started or didn't end by itself.
	int32 RunCommandLine(const std::string& EightBitLine)
	{
		// Every byte is 7-bit by now, so it is its own character.
		const TArray<FString> Pieces = FWindowsArguments::Split(FString::FromUtf8(EightBitLine));
		if (Pieces.Num() == 0)
		{
			return -1;
		}
		FString Parameters;
		for (int32 Index = 1; Index < Pieces.Num(); ++Index)
		{
			Parameters += (Index > 1 ? TEXT(" ") : TEXT("")) + FWindowsArguments::Quote(Pieces[Index]);
		}

		FProcHandle Process = FPlatformProcess::CreateProc(*Pieces[0], *Parameters);
		if (!Process.IsValid())
		{
			return -1;
		}
		FPlatformProcess::WaitForProc(Process);
		int32 ReturnCode = -1;
		if (!FPlatformProcess::GetProcReturnCode(Process, &ReturnCode))
		{
			ReturnCode = -1;
		}
		FPlatformProcess::CloseProc(Process);
		return ReturnCode;
	}
}

FString STesselTool::GetUploaderPath()
{
	return GetModToolsDir() + TEXT("/Uploader/QuillonModUploader.exe");
}

FString STesselTool::ComposeUploaderCommandLine(const FModSetup& Mod)
{
	FString Arguments;
	auto AddArgument = [&Arguments](const TCHAR* Switch, const FString& Value)
	{
		Arguments += FString(Switch) + TEXT(" \"") + Value + TEXT("\" ");
	};

	// A field left empty leaves its switch out.
	if (!Mod.ItemSeamId.IsEmpty())
	{
		AddArgument(TEXT("-steamid"), Mod.ItemSeamId);
	}
	if (!Mod.PreviewImage.IsEmpty())
	{
		AddArgument(TEXT("-preview"), Mod.PreviewImage);
	}
	if (!Mod.Title.IsEmpty())
	{
		AddArgument(TEXT("-title"), Mod.Title.ReplaceQuotesWithEscapedQuotes());
	}
	if (!Mod.Description.IsEmpty())
	{
		AddArgument(TEXT("-desc"), Mod.Description.ReplaceQuotesWithEscapedQuotes());
	}
	if (!Mod.Visibility.IsEmpty())
	{
		AddArgument(TEXT("-vis"), Mod.Visibility);
	}
	if (!Mod.Tags.IsEmpty())
	{
		AddArgument(TEXT("-tags"), Mod.Tags);
	}
	if (!Mod.ModDir.IsEmpty())
	{
		AddArgument(TEXT("-content"), GetModToolsDir() + TEXT("/Output/") + Mod.ModDir);
	}
	if (!Mod.ChangeNotes.IsEmpty())
	{
		AddArgument(TEXT("-changelog"), Mod.ChangeNotes.ReplaceQuotesWithEscapedQuotes());
	}

	// Joined as plain text: the program's path is not quoted, and its trailing blank separates it.
	return GetUploaderPath() + TEXT(" ") + Arguments;
}

std::string STesselTool::ToEightBitCommandLine(const FString& CommandLine)
{
	std::string Bytes;
	Bytes.reserve(static_cast<size_t>(CommandLine.Len()));
	for (const TCHAR Unit : CommandLine)
	{
		Bytes += Unit <= 0x7F ? static_cast<char>(Unit) : '?';
	}
	return Bytes;
}

bool STesselTool::RunUploaderRoute()
{
	check(SelectedMod.IsValid());
	const int32 ExitCode = RunCommandLine(ToEightBitCommandLine(ComposeUploaderCommandLine(*SelectedMod)));
	if (ExitCode > 99)
	{
		SelectedMod->ItemSeamId = FString::FromInt(ExitCode);
		SaveModDatabase();
		return true;
	}
	return false;
}

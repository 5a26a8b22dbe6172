#include "STesselUI.h"

#include "HAL/PlatformProcess.h"
#include "upload/WorkshopUpload.h"

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
		FString Program;
		FString Parameters;
		if (!SplitUploaderCommandLine(EightBitLine, Program, Parameters))
		{
			return -1;
		}
		FProcHandle Process = FPlatformProcess::CreateProc(*Program, *Parameters);
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

bool STesselTool::RunUploaderRoute()
{
	check(SelectedMod.IsValid());
	const int32 ExitCode = RunCommandLine(ToEightBitCommandLine(ComposeUploaderCommandLine(*SelectedMod)));
	if (IsPublishedIdExitCode(ExitCode))
	{
		SelectedMod->ItemSeamId = FString::FromInt(ExitCode);
		SaveModDatabase();
		return true;
	}
	return false;
}

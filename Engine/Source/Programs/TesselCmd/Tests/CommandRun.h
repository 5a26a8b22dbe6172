#pragma once

// TesselCmd run as a real child.

#include "ProgramRun.h"
#include "TestPrograms.h"

inline const std::string& TesselCmdPath()
{
	static const std::string Path = TestPrograms::Path(TEXT("TesselCmd.exe"), TestPaths::TesselCmd).ToUtf8();
	return Path;
}

#ifdef _WIN32
// Windows text ends its lines with CR LF; read back as lines they are the same. A line end without its CR
// would be text written past the console's text mode, so it fails the test that ran the command.
inline std::string AsLines(const std::string& Text, const char* Stream)
{
	std::string Lines;
	Lines.reserve(Text.size());
	for (size_t Index = 0; Index < Text.size(); ++Index)
	{
		if (Text[Index] == '\n' && (Index == 0 || Text[Index - 1] != '\r'))
		{
			ADD_FAILURE() << Stream << " has a line end without its CR at byte " << Index << ":\n" << Text;
			return Text;
		}
		if (!(Text[Index] == '\r' && Index + 1 < Text.size() && Text[Index + 1] == '\n'))
		{
			Lines += Text[Index];
		}
	}
	return Lines;
}
#endif

inline FCommandRun RunTesselCmd(const FCommandSetup& Setup)
{
	FCommandRun Run = RunProgram(TesselCmdPath(), Setup);
#ifdef _WIN32
	Run.Stdout = AsLines(Run.Stdout, "stdout");
	Run.Stderr = AsLines(Run.Stderr, "stderr");
#endif
	return Run;
}

inline FCommandRun RunTesselCmd(std::vector<std::string> Args, std::map<std::string, std::string> Environment = {})
{
	return RunTesselCmd(FCommandSetup{std::move(Args), std::move(Environment), std::string()});
}

// Stands in for the kit's QuillonModUploader.exe, placed in a kit at ModTools/Uploader/QuillonModUploader.exe.
// It takes the arguments as the Windows rules split the tool's command line:
//
//   -steamid <id> -preview <file> -title <text> -desc <text> -vis <option> -tags <list> -content <folder>
//   -changelog <text>
//
// each switch at most once and each followed by its value; -content must name an existing folder. Wrong
// arguments end it with exit code 2.
//
// Its answer is the exit code, which the tool reads as the published id when it is 100 or more. A POSIX exit
// status carries only 0 to 255, so ids from this stand-in lie in 100 to 255. The code is chosen by the
// environment variable TESSEL_UPLOADER_EXIT, else by a file "uploader.exit" beside the program, else 99
// ("not published", so that an upload goes on to SteamCMD). The value is a number from 0 to 255, or "crash"
// to end by SIGSEGV.
//
// For tests: when TESSEL_UPLOADER_ARGS_OUT names a file, every argument it got is written there, each ended
// by a NUL byte, before anything is checked.

#include "CoreMinimal.h"
#include "HAL/PlatformFile.h"
#include "Misc/FileHelper.h"
#include "StandInMain.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>

namespace
{
	constexpr int NotPublished = 99;

	FString ProgramDir()
	{
		const FString Program = FPlatformProcess::ExecutablePath();
		return Program.IsEmpty() ? FString(TEXT(".")) : FPaths::GetPath(Program);
	}

	int Fail(const std::string& Message)
	{
		std::fprintf(stderr, "QuillonModUploader: %s\n", Message.c_str());
		return 2;
	}

	FString ChosenAnswer()
	{
		if (const char* FromEnvironment = std::getenv("TESSEL_UPLOADER_EXIT"); FromEnvironment && *FromEnvironment)
		{
			return FString::FromUtf8(FromEnvironment).TrimStartAndEnd();
		}
		FString FromFile;
		if (FFileHelper::LoadFileToString(FromFile, *(ProgramDir() / TEXT("uploader.exit"))))
		{
			return FromFile.TrimStartAndEnd();
		}
		return FString::FromInt(NotPublished);
	}
}

static int UploaderMain(int ArgC, char** ArgV)
{
	if (const FString ArgsOut = StandIn::Environment("TESSEL_UPLOADER_ARGS_OUT"); !ArgsOut.IsEmpty())
	{
		std::ofstream Out(StandIn::FileSystemPath(ArgsOut), std::ios::binary | std::ios::trunc);
		for (int Index = 1; Index < ArgC; ++Index)
		{
			Out << ArgV[Index] << '\0';
		}
	}

	static const std::set<std::string> Switches{"-steamid", "-preview", "-title", "-desc", "-vis", "-tags", "-content", "-changelog"};
	std::set<std::string> Seen;
	for (int Index = 1; Index < ArgC; Index += 2)
	{
		const std::string Switch = ArgV[Index];
		if (!Switches.count(Switch))
		{
			return Fail("unknown argument '" + Switch + "'");
		}
		if (!Seen.insert(Switch).second)
		{
			return Fail(Switch + " given twice");
		}
		if (Index + 1 >= ArgC)
		{
			return Fail(Switch + " without its value");
		}
		const std::string Value = ArgV[Index + 1];
		if (Switch == "-content" && !FPlatformFileManager::Get().GetPlatformFile().DirectoryExists(*FString::FromNative(Value)))
		{
			return Fail("no content folder at '" + Value + "'");
		}
	}
	if (!Seen.count("-content"))
	{
		return Fail("-content is required");
	}

	const FString Answer = ChosenAnswer();
	if (Answer == TEXT("crash"))
	{
		StandIn::Crash();
	}
	bool bDigits = !Answer.IsEmpty() && Answer.Len() <= 3;
	for (const TCHAR Unit : Answer)
	{
		bDigits = bDigits && FChar::IsDigit(Unit);
	}
	int Code = NotPublished;
	if (bDigits && std::atoi(Answer.ToUtf8().c_str()) <= 255)
	{
		Code = std::atoi(Answer.ToUtf8().c_str());
	}
	else
	{
		std::fprintf(stderr, "QuillonModUploader: exit code '%s' is not 0 to 255; answering %d\n", Answer.ToUtf8().c_str(), NotPublished);
	}
	if (Code > 99)
	{
		std::printf("Published Workshop item %d.\n", Code);
	}
	else
	{
		std::printf("Not published.\n");
	}
	return Code;
}

TESSEL_STAND_IN_MAIN(UploaderMain)

#include "CoreMinimal.h"
#include "HAL/PlatformProcess.h"
#include "Misc/MonitoredProcess.h"
#include "Misc/Utf8StreamDecoder.h"
#include "Misc/WindowsArguments.h"
#include "TempDirectory.h"
#include "TestPrograms.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>
#ifdef _WIN32
#include "Windows/WindowsApi.h"
#include <io.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace
{
const FString FakeChild = TestPrograms::Path(TEXT("TesselFakeChild.exe"), TestPaths::FakeChild);

// What a parent sees of a killed or crashed child: minus the signal on POSIX; on Windows the killed code our
// process layer gives and the exception codes that a crash leaves.
constexpr int32 KilledCode = -9;
#ifdef _WIN32
// abort() of Windows' C runtime exits with 3; an access violation leaves its exception code.
constexpr int32 AbortCode = 3;
constexpr int32 SegvCode = static_cast<int32>(0xC0000005);

// Descriptors of the C runtime, which CreateProc takes for the child's output on every system.
int MakePipe(int Descriptors[2]) { return _pipe(Descriptors, 1 << 16, _O_BINARY | _O_NOINHERIT); }
int ReadFd(int Descriptor, char* Buffer, size_t Size) { return _read(Descriptor, Buffer, static_cast<unsigned>(Size)); }
void CloseFd(int Descriptor) { _close(Descriptor); }
int OpenNull() { return _open("NUL", _O_WRONLY | _O_BINARY); }


void KillProcess(int ProcessId)
{
	if (const HANDLE Process = OpenProcess(PROCESS_TERMINATE, FALSE, static_cast<DWORD>(ProcessId)))
	{
		TerminateProcess(Process, 1);
		CloseHandle(Process);
	}
}
#else
constexpr int32 AbortCode = -SIGABRT;
constexpr int32 SegvCode = -SIGSEGV;

int MakePipe(int Descriptors[2]) { return pipe2(Descriptors, O_CLOEXEC); }
ssize_t ReadFd(int Descriptor, char* Buffer, size_t Size) { return read(Descriptor, Buffer, Size); }
void CloseFd(int Descriptor) { close(Descriptor); }
int OpenNull() { return open("/dev/null", O_WRONLY | O_CLOEXEC); }
void KillProcess(pid_t ProcessId) { kill(ProcessId, SIGKILL); }
#endif

// Polls until Condition holds; the limit only keeps a broken build from hanging the test run.
template <typename ConditionType> bool WaitUntil(ConditionType Condition)
{
	const auto Limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
	while (!Condition())
	{
		if (std::chrono::steady_clock::now() > Limit)
		{
			return false;
		}
		std::this_thread::sleep_for(std::chrono::milliseconds(2));
	}
	return true;
}

bool WaitForEnd(const FMonitoredProcess& Process)
{
	return WaitUntil([&] { return !Process.IsRunning(); });
}

// Gathers what a child prints, the way a job does: appended on the monitor thread.
class FCollectedOutput
{
public:
	explicit FCollectedOutput(FMonitoredProcess& Process)
	{
		Process.OnOutput().BindRaw(this, &FCollectedOutput::Append);
	}

	void Append(FString Piece)
	{
		std::lock_guard<std::mutex> Lock(Mutex);
		Text += Piece;
		++Calls;
	}
	FString Get()
	{
		std::lock_guard<std::mutex> Lock(Mutex);
		return Text;
	}
	int32 GetCalls()
	{
		std::lock_guard<std::mutex> Lock(Mutex);
		return Calls;
	}
	// The number after Prefix on some line, once that line is complete; else -1.
	pid_t FindNumber(const std::string& Prefix)
	{
		const std::string Utf8 = Get().ToUtf8();
		const size_t At = Utf8.find(Prefix);
		const size_t End = At == std::string::npos ? std::string::npos : Utf8.find('\n', At);
		return End == std::string::npos ? -1 : std::atoi(Utf8.c_str() + At + Prefix.size());
	}

private:
	std::mutex Mutex;
	FString Text;
	int32 Calls = 0;
};

// Runs the fake child with Params to its end and returns all it printed.
FString RunToEnd(const FString& Params, int32* OutReturnCode = nullptr)
{
	FMonitoredProcess Process(FakeChild, Params, true);
	FCollectedOutput Output(Process);
	EXPECT_TRUE(Process.Launch());
	EXPECT_TRUE(WaitForEnd(Process));
	if (OutReturnCode)
	{
		*OutReturnCode = Process.GetReturnCode();
	}
	return Output.Get();
}

std::vector<std::u16string> SplitToStd(const TCHAR* Parms)
{
	std::vector<std::u16string> Result;
	for (const FString& Argument : FWindowsArguments::Split(Parms))
	{
		Result.push_back(Argument.GetStd());
	}
	return Result;
}
} // namespace

TEST(WindowsArgumentsTests, SplitsByTheRulesOfTheCRuntime)
{
	using FArgs = std::vector<std::u16string>;
	const struct
	{
		const TCHAR* Parms;
		FArgs Expected;
	} Cases[] = {
		{u"", {}},
		{u" \t ", {}},
		{u"a b\tc", {u"a", u"b", u"c"}},
		{u"  lead  and  trail  ", {u"lead", u"and", u"trail"}},
		{u"\"two words\" next", {u"two words", u"next"}},
		{u"a\"b c\"d", {u"ab cd"}},
		{u"\"\"", {u""}},
		{u"x \"\" y \"\"", {u"x", u"", u"y", u""}},
		{u"a\"\"b", {u"ab"}},
		{u"C:\\Dir\\file.txt C:\\Dir\\", {u"C:\\Dir\\file.txt", u"C:\\Dir\\"}},
		{u"a\\\\b", {u"a\\\\b"}},
		{u"a\\\"b", {u"a\"b"}},
		{u"a\\\\\"b c\"", {u"a\\b c"}},
		{u"a\\\\\\\"b", {u"a\\\"b"}},
		{u"\"end\\\\\" x", {u"end\\", u"x"}},
		{u"\"a\\\" b\"", {u"a\" b"}},
		{u"\\\\\\\\\"", {u"\\\\"}},
		{u"\"a\"\"b\" c", {u"a\"b", u"c"}},
		{u"\"a\"\"\"", {u"a\""}},
		{u"\"open quote runs to the end", {u"open quote runs to the end"}},
		{u"-Map=\"Main Map+Other\" -ModDir=Foo", {u"-Map=Main Map+Other", u"-ModDir=Foo"}},
		{u"-title \"A\\\"B\" ", {u"-title", u"A\"B"}},
		{u"'single quoted' $HOME", {u"'single", u"quoted'", u"$HOME"}},
		{u"line\nbreak", {u"line\nbreak"}},
	};
	for (const auto& Case : Cases)
	{
		EXPECT_EQ(SplitToStd(Case.Parms), Case.Expected) << FString(Case.Parms);
	}
}

TEST(WindowsArgumentsTests, QuotedArgumentsSplitBackToThemselves)
{
	using FArgs = std::vector<std::u16string>;
	const FArgs Args = {u"plain", u"", u"two words", u"tab\there", u"say \"hi\"", u"C:\\Dir\\", u"C:\\Dir with blank\\",
						u"a\\\\\"b", u"\\\\", u"\"", u"-title=\"A\\\"B\"", u"Île Σ \u65e5"};
	FString Line;
	for (const std::u16string& Arg : Args)
	{
		Line += (Line.IsEmpty() ? TEXT("") : TEXT(" ")) + FWindowsArguments::Quote(FString(Arg));
	}
	EXPECT_EQ(SplitToStd(*Line), Args) << Line;
	// Nothing to quote stays bare, so that a plain command line reads as it was written.
	EXPECT_EQ(FWindowsArguments::Quote(TEXT("-run=Cook")), FString(TEXT("-run=Cook")));
	EXPECT_EQ(FWindowsArguments::Quote(TEXT("C:\\Dir\\")), FString(TEXT("C:\\Dir\\")));
}

TEST(Utf8StreamDecoderTests, TextIsTheSameWhereverTheBytesAreCut)
{
	// Two-, three- and four-byte sequences, a broken sequence, an invalid byte, a NUL and a sequence that
	// the stream never finishes.
	const std::string Bytes = std::string("a\xC3\xA9"
										  "b\xE2\x82\xAC"
										  "c\xF0\x9F\x98\x80"
										  "d\xE2\x82x\xFF",
										  17) +
							  std::string(1, '\0') + "\r\n\xF0\x9F";
	const std::u16string Expected = u"a\u00E9b\u20ACc\U0001F600d\uFFFDx\uFFFD\uFFFD\r\n\uFFFD";

	for (size_t First = 0; First <= Bytes.size(); ++First)
	{
		for (size_t Second = First; Second <= Bytes.size(); ++Second)
		{
			FUtf8StreamDecoder Decoder;
			FString Text = Decoder.Decode(Bytes.data(), First);
			Text += Decoder.Decode(Bytes.data() + First, Second - First);
			Text += Decoder.Decode(Bytes.data() + Second, Bytes.size() - Second);
			Text += Decoder.Flush();
			ASSERT_EQ(Text.GetStd(), Expected) << "cut at " << First << " and " << Second;
		}
	}

	FUtf8StreamDecoder Decoder;
	EXPECT_TRUE(Decoder.Decode("\xE2\x82", 2).IsEmpty()); // kept back, not replaced
	EXPECT_EQ(Decoder.Decode("\xAC!", 2).GetStd(), u"\u20AC!");
	EXPECT_TRUE(Decoder.Flush().IsEmpty());
}

TEST(PlatformProcessTests, ReturnCodesOfExitsAndCrashes)
{
	const int DevNull = OpenNull();
	ASSERT_GE(DevNull, 0);
	const struct
	{
		const TCHAR* Parms;
		int32 Expected;
	} Cases[] = {
		{u"exit 0", 0}, {u"exit 3", 3}, {u"exit 255", 255}, {u"crash abort", AbortCode}, {u"crash segv", SegvCode},
	};
	for (const auto& Case : Cases)
	{
		FProcHandle Handle =
			FPlatformProcess::CreateProc(*FakeChild, Case.Parms, true, false, false, nullptr, 0, nullptr, DevNull);
		ASSERT_TRUE(Handle.IsValid()) << FString(Case.Parms);
		FPlatformProcess::WaitForProc(Handle);
		EXPECT_FALSE(FPlatformProcess::IsProcRunning(Handle));
		int32 ReturnCode = 12345;
		EXPECT_TRUE(FPlatformProcess::GetProcReturnCode(Handle, &ReturnCode));
		EXPECT_EQ(ReturnCode, Case.Expected) << FString(Case.Parms);
		FPlatformProcess::CloseProc(Handle);
		EXPECT_FALSE(Handle.IsValid());
	}
	CloseFd(DevNull);
}

TEST(PlatformProcessTests, RunningChildIsTerminatedWithItsTree)
{
	int Pipe[2];
	ASSERT_EQ(MakePipe(Pipe), 0);
	uint32 ProcessId = 0;
	FProcHandle Handle = FPlatformProcess::CreateProc(*FakeChild, u"spawn-grandchild hang hang", false, false, false,
													  &ProcessId, 0, nullptr, Pipe[1]);
	CloseFd(Pipe[1]);
	ASSERT_TRUE(Handle.IsValid());
	EXPECT_EQ(static_cast<int32>(ProcessId), Handle.ProcessId);

	// The grandchild's pid is on the second line.
	std::string Text;
	char Buffer[256];
	while (Text.find("grandchild ") == std::string::npos ||
		   Text.find('\n', Text.find("grandchild ")) == std::string::npos)
	{
		const auto Count = ReadFd(Pipe[0], Buffer, sizeof(Buffer));
		ASSERT_GT(Count, 0);
		Text.append(Buffer, static_cast<size_t>(Count));
	}
	const pid_t Grandchild = std::atoi(Text.c_str() + Text.find("grandchild ") + 11);
	ASSERT_GT(Grandchild, 0);

	EXPECT_TRUE(FPlatformProcess::IsProcRunning(Handle));
	int32 ReturnCode = 0;
	EXPECT_FALSE(FPlatformProcess::GetProcReturnCode(Handle, &ReturnCode));

	FPlatformProcess::TerminateProc(Handle, true);
	FPlatformProcess::WaitForProc(Handle);
	EXPECT_TRUE(FPlatformProcess::GetProcReturnCode(Handle, &ReturnCode));
	EXPECT_EQ(ReturnCode, KilledCode);
	EXPECT_TRUE(WaitUntil([&] { return TestPrograms::IsGone(Grandchild); }));
	FPlatformProcess::CloseProc(Handle);
	CloseFd(Pipe[0]);
}

TEST(PlatformProcessTests, ProgramsThatCannotStartGiveAnInvalidHandle)
{
	FTempDirectory Temp;
	const FString NotExecutable = Temp.WriteFile(TEXT("script.sh"), "#!/bin/sh\necho ran\n");
	for (const FString& Path : {FString(TEXT("/nonexistent/program")), Temp.Get(), NotExecutable, FString()})
	{
		uint32 ProcessId = 77;
		FProcHandle Handle =
			FPlatformProcess::CreateProc(*Path, u"exit 0", false, false, false, &ProcessId, 0, nullptr);
		EXPECT_FALSE(Handle.IsValid()) << Path;
		EXPECT_EQ(ProcessId, 0u);
		EXPECT_FALSE(FPlatformProcess::IsProcRunning(Handle));
		int32 ReturnCode = 0;
		EXPECT_FALSE(FPlatformProcess::GetProcReturnCode(Handle, &ReturnCode));
		FPlatformProcess::WaitForProc(Handle); // returns at once
		FPlatformProcess::CloseProc(Handle);
	}
}

// Stand-ins and tests find the programs beside them through it; "/" between folders on every system.
TEST(PlatformProcessTests, ExecutablePathNamesThisProgram)
{
	const FString Self = FPlatformProcess::ExecutablePath();
	EXPECT_TRUE(FPaths::FileExists(Self)) << Self;
	EXPECT_TRUE(FPaths::GetCleanFilename(Self).StartsWith(TEXT("ProcessTests"))) << Self;
	EXPECT_FALSE(Self.Contains(TEXT("\\"))) << Self;
}

// The program's path is taken as the parent sees it, also when relative: the child's working folder does not
// change which program starts, on any system.
TEST(PlatformProcessTests, WorkingDirectoryAndPipeReachTheChild)
{
	FTempDirectory Temp;
	const FString Folder = Temp / TEXT("dir with blank");
	ASSERT_TRUE(FPlatformFileManager::Get().GetPlatformFile().CreateDirectoryTree(*Folder));
	const FString Relative(std::filesystem::relative(std::filesystem::path(FakeChild.GetStd()), std::filesystem::current_path()).u16string());
	ASSERT_FALSE(Relative.IsEmpty());
	for (const FString& Program : {FakeChild, Relative})
	{
		SCOPED_TRACE(Program.ToUtf8());
		int Pipe[2];
		ASSERT_EQ(MakePipe(Pipe), 0);
		FProcHandle Handle =
			FPlatformProcess::CreateProc(*Program, u"pwd", false, false, false, nullptr, 0, *Folder, Pipe[1]);
		CloseFd(Pipe[1]);
		ASSERT_TRUE(Handle.IsValid());
		std::string Text;
		char Buffer[256];
		for (int64 Count; (Count = ReadFd(Pipe[0], Buffer, sizeof(Buffer))) > 0;)
		{
			Text.append(Buffer, static_cast<size_t>(Count));
		}
		CloseFd(Pipe[0]);
		FPlatformProcess::WaitForProc(Handle);
#ifdef _WIN32
		// Windows prints the folder with backslashes and may change the drive letter's case.
		FString Shown = FString::FromUtf8(Text);
		Shown.ReplaceInline(TEXT("\\"), TEXT("/"));
		EXPECT_TRUE(Shown.Equals(Folder + TEXT("\n"), ESearchCase::IgnoreCase)) << Shown << " for " << Folder;
#else
		char* Resolved = realpath(Folder.ToUtf8().c_str(), nullptr);
		ASSERT_NE(Resolved, nullptr);
		EXPECT_EQ(Text, std::string(Resolved) + "\n");
		free(Resolved);
#endif
		FPlatformProcess::CloseProc(Handle);
	}
}

TEST(MonitoredProcessTests, ArgumentsReachTheChildUnchangedAndUninterpreted)
{
	const FString Params = TEXT("echo-args plain \"two words\" 'single' a\\\"b C:\\Dir\\ \"x\\\\\" $HOME ; | && ")
		TEXT("`echo hi` > out.txt * ~ \"\" \u00E4\u00F6\u00FC \u65E5\u672C \U0001F600 \"%PATH%\"");
	const FString Expected = TEXT("plain\ntwo words\n'single'\na\"b\nC:\\Dir\\\nx\\\n$HOME\n;\n|\n&&\n")
		TEXT("`echo\nhi`\n>\nout.txt\n*\n~\n\n\u00E4\u00F6\u00FC\n\u65E5\u672C\n\U0001F600\n%PATH%\n");
	int32 ReturnCode = -1;
	EXPECT_EQ(RunToEnd(Params, &ReturnCode), Expected);
	EXPECT_EQ(ReturnCode, 0);
}

TEST(MonitoredProcessTests, FloodArrivesCompleteAndInOrder)
{
	constexpr int32 LineCount = 200000;
	std::u16string Expected;
	for (int32 Index = 1; Index <= LineCount; ++Index)
	{
		Expected += FString::Printf(TEXT("line %d\n"), Index).GetStd();
	}
	int32 ReturnCode = -1;
	const FString Text = RunToEnd(FString::Printf(TEXT("lines %d"), LineCount), &ReturnCode);
	EXPECT_EQ(Text.Len(), static_cast<int32>(Expected.size()));
	EXPECT_TRUE(Text.GetStd() == Expected); // not EXPECT_EQ: a failure would print megabytes
	EXPECT_EQ(ReturnCode, 0);
}

TEST(MonitoredProcessTests, StdoutAndStderrShareOnePipeInWriteOrder)
{
	FString Expected;
	for (int32 Index = 1; Index <= 500; ++Index)
	{
		Expected += FString::Printf(TEXT("out %d\nerr %d\n"), Index, Index);
	}
	EXPECT_TRUE(RunToEnd(TEXT("mixed 500")) == Expected);
}

TEST(MonitoredProcessTests, AwkwardBytesBecomeTextWithNothingLost)
{
	// Each word is one write: CR LF, a bare CR, a euro sign and an emoji split across writes, an invalid
	// byte, a NUL, and a last line with no line break.
	const FString Params = TEXT("bytes 6c696e65310d0a 6c696e65320d 6c696e65330a e282 ac0a f09f 9880 ff 00 7461696c");
	EXPECT_EQ(RunToEnd(Params).GetStd(), u"line1\r\nline2\rline3\n\u20AC\n\U0001F600\uFFFD\uFFFDtail");
}

TEST(MonitoredProcessTests, CrashingChildEndsWithItsOutputDelivered)
{
	for (const auto& [Params, Signal] :
		 {std::pair{TEXT("crash segv"), SegvCode}, std::pair{TEXT("crash abort"), AbortCode}})
	{
		int32 ReturnCode = 0;
		EXPECT_EQ(RunToEnd(Params, &ReturnCode), FString(TEXT("crashing\n")));
		EXPECT_EQ(ReturnCode, Signal);
	}
}

TEST(MonitoredProcessTests, ExitCodeAndDurationAreReported)
{
	FMonitoredProcess Process(FakeChild, TEXT("exit 7"), true);
	FCollectedOutput Output(Process);
	EXPECT_EQ(Process.GetDuration(), 0.0);
	EXPECT_EQ(Process.GetReturnCode(), -1);
	ASSERT_TRUE(Process.Launch());
	EXPECT_FALSE(Process.Launch()); // once only
	ASSERT_TRUE(WaitForEnd(Process));
	EXPECT_EQ(Process.GetReturnCode(), 7);
	EXPECT_GT(Process.GetDuration(), 0.0);
	EXPECT_EQ(Output.GetCalls(), 0);
}

TEST(MonitoredProcessTests, IsRunningStaysTrueUntilTheLastOutputCallHasReturned)
{
	FMonitoredProcess Process(FakeChild, TEXT("bytes 610a 620a"), true);
	std::atomic<bool> bInsideCallback{false};
	std::atomic<int32> Pieces{0};
	Process.OnOutput().BindLambda(
		[&](FString)
		{
			bInsideCallback = true;
			std::this_thread::sleep_for(std::chrono::milliseconds(150));
			++Pieces;
			bInsideCallback = false;
		});
	ASSERT_TRUE(Process.Launch());
	while (Process.IsRunning())
	{
		std::this_thread::yield();
	}
	EXPECT_FALSE(bInsideCallback);
	EXPECT_GE(Pieces, 1);
	// The child ended long before the callbacks were done, so a watch that ends with the child fails here.
	const int32 PiecesAtEnd = Pieces;
	std::this_thread::sleep_for(std::chrono::milliseconds(200));
	EXPECT_EQ(Pieces, PiecesAtEnd);
}

TEST(MonitoredProcessTests, CancelEndsTheWholeTree)
{
	// A grandchild that dies on SIGTERM, and one that ignores it and needs the SIGKILL.
	for (const TCHAR* GrandchildMode : {TEXT("hang"), TEXT("hang-ignore-term")})
	{
		FMonitoredProcess Process(FakeChild, FString(TEXT("spawn-grandchild hang ")) + GrandchildMode, true);
		FCollectedOutput Output(Process);
		ASSERT_TRUE(Process.Launch());
		const std::string Ready = FString(GrandchildMode) == TEXT("hang") ? "hanging " : "ignoring ";
		// The grandchild's own line and the child's report of it may come in either order.
		ASSERT_TRUE(WaitUntil([&] { return Output.FindNumber(Ready) > 0 && Output.FindNumber("grandchild ") > 0; }))
			<< Output.Get();
		const pid_t Child = Output.FindNumber("child ");
		const pid_t Grandchild = Output.FindNumber("grandchild ");
		ASSERT_GT(Child, 0);
		ASSERT_EQ(Grandchild, Output.FindNumber(Ready));

		Process.Cancel(true);
		ASSERT_TRUE(WaitForEnd(Process));
		// The child would end on SIGTERM: SIGKILL as its end shows that no grace was waited out.
		EXPECT_EQ(Process.GetReturnCode(), KilledCode);
		EXPECT_TRUE(TestPrograms::IsGone(Child));
		EXPECT_TRUE(WaitUntil([&] { return TestPrograms::IsGone(Grandchild); })) << FString(GrandchildMode);
	}
}

TEST(MonitoredProcessTests, CancelEndsDescendantsThatLeftTheGroup)
{
#ifdef _WIN32
	GTEST_SKIP() << "leaving a process group is POSIX's; on Windows the job object holds every descendant (CancelEndsTheWholeTree)";
#else
	FMonitoredProcess Process(FakeChild, TEXT("escape"), true);
	FCollectedOutput Output(Process);
	ASSERT_TRUE(Process.Launch());
	ASSERT_TRUE(WaitUntil([&] {
		return Output.FindNumber("stray ") > 0 && Output.FindNumber("orphan ") > 0 && Output.FindNumber("child ") > 0;
	})) << Output.Get();
	const pid_t Stray = Output.FindNumber("stray ");
	const pid_t Orphan = Output.FindNumber("orphan ");
	ASSERT_FALSE(TestPrograms::IsGone(Stray));
	ASSERT_FALSE(TestPrograms::IsGone(Orphan));
	ASSERT_NE(getpgid(Stray), getpgid(Output.FindNumber("child ")));

	Process.Cancel(true);
	ASSERT_TRUE(WaitForEnd(Process));
	EXPECT_EQ(Process.GetReturnCode(), KilledCode);
	EXPECT_TRUE(WaitUntil([&] { return TestPrograms::IsGone(Stray); })) << "the child's own descendant in a session of its own";
	EXPECT_TRUE(WaitUntil([&] { return TestPrograms::IsGone(Orphan); })) << "a descendant whose parent had gone";
	// Neither is left running should a check above fail.
	for (const pid_t Left : {Stray, Orphan})
	{
		if (!TestPrograms::IsGone(Left))
		{
			kill(Left, SIGKILL);
		}
	}
#endif
}

TEST(MonitoredProcessTests, ChildThatIgnoresCancelIsKilledAfterTheGrace)
{
	FMonitoredProcess Process(FakeChild, TEXT("hang-ignore-term"), true);
	FCollectedOutput Output(Process);
	ASSERT_TRUE(Process.Launch());
	ASSERT_TRUE(WaitUntil([&] { return Output.FindNumber("ignoring ") > 0; }));
	Process.Cancel(false);
	ASSERT_TRUE(WaitForEnd(Process));
	EXPECT_EQ(Process.GetReturnCode(), KilledCode);
}

TEST(MonitoredProcessTests, WatchEndsWithTheChildWhileAGrandchildHoldsThePipe)
{
	FMonitoredProcess Process(FakeChild, TEXT("spawn-grandchild exit hang"), true);
	FCollectedOutput Output(Process);
	ASSERT_TRUE(Process.Launch());
	ASSERT_TRUE(WaitForEnd(Process));
	EXPECT_EQ(Process.GetReturnCode(), 0);
	const pid_t Grandchild = Output.FindNumber("grandchild ");
	ASSERT_GT(Grandchild, 0);
	KillProcess(Grandchild);
}

TEST(MonitoredProcessTests, FailedLaunchEndsWithoutOutput)
{
	FTempDirectory Temp;
	const FString NotExecutable = Temp.WriteFile(TEXT("tool.exe"), "MZ not a program here");
	// Executable but no program: a shell would run it as a script and leave the marker behind.
	const FString Marker = Temp / TEXT("marker");
	const FString Script = Temp.WriteFile(TEXT("script"), "touch '" + Marker.ToUtf8() + "'\n");
#ifndef _WIN32
	ASSERT_EQ(chmod(Script.ToUtf8().c_str(), 0755), 0);
#endif
	for (const FString& Path : {FString(TEXT("/nonexistent/UE4Editor.exe")), Temp.Get(), NotExecutable, Script})
	{
		FMonitoredProcess Process(Path, TEXT("-run=Cook"), true);
		FCollectedOutput Output(Process);
		EXPECT_FALSE(Process.Launch()) << Path;
		EXPECT_FALSE(Process.IsRunning());
		EXPECT_EQ(Process.GetReturnCode(), -1);
		Process.Cancel(true); // a job cancels whatever it holds
		EXPECT_EQ(Output.GetCalls(), 0);
	}
	EXPECT_FALSE(FPaths::FileExists(Marker));
}

TEST(MonitoredProcessTests, CancelBeforeLaunchKeepsTheProcessFromStarting)
{
	FMonitoredProcess Process(FakeChild, TEXT("hang"), true);
	FCollectedOutput Output(Process);
	Process.Cancel(true);
	EXPECT_FALSE(Process.Launch());
	EXPECT_FALSE(Process.IsRunning());
	EXPECT_EQ(Output.GetCalls(), 0);
}

TEST(MonitoredProcessTests, DestructorEndsARunningTreeBeforeItReturns)
{
	pid_t Child = -1;
	pid_t Grandchild = -1;
	{
		FMonitoredProcess Process(FakeChild, TEXT("spawn-grandchild hang hang"), true);
		FCollectedOutput Output(Process);
		ASSERT_TRUE(Process.Launch());
		ASSERT_TRUE(
			WaitUntil([&] { return Output.FindNumber("hanging ") > 0 && Output.FindNumber("grandchild ") > 0; }));
		Child = Output.FindNumber("child ");
		Grandchild = Output.FindNumber("grandchild ");
	}
	ASSERT_GT(Child, 0);
	EXPECT_TRUE(TestPrograms::IsGone(Child)); // collected by the monitor before the destructor returned
	EXPECT_TRUE(WaitUntil([&] { return TestPrograms::IsGone(Grandchild); }));
}

TEST(MonitoredProcessTests, UnboundOutputDoesNotStallTheChild)
{
	FMonitoredProcess Process(FakeChild, TEXT("lines 200000"), true);
	ASSERT_TRUE(Process.Launch());
	ASSERT_TRUE(WaitForEnd(Process));
	EXPECT_EQ(Process.GetReturnCode(), 0);
}

#include "HAL/PlatformProcess.h"

#include "Containers/UnrealString.h"
#include "Windows/WindowsProcess.h"

#include <algorithm>
#include <io.h>
#include <mutex>
#include <vector>

namespace WindowsProcess
{
	// A job of every child started, for TerminateAllProcs; each held by a handle of its own, and let go once
	// no process is left in it.
	std::mutex JobsLock;
	std::vector<HANDLE>& Jobs()
	{
		static std::vector<HANDLE> Held;
		return Held;
	}

	bool bEndingEveryJob = false;

	void NoteJob(HANDLE Job)
	{
		const std::lock_guard<std::mutex> Lock(JobsLock);
		// A child started while, or after, every child was ended goes the same way, before it runs.
		if (bEndingEveryJob)
		{
			TerminateJobObject(Job, KilledExitCode);
		}
		std::vector<HANDLE>& Held = Jobs();
		Held.erase(std::remove_if(Held.begin(), Held.end(),
								  [](HANDLE Each)
								  {
									  JOBOBJECT_BASIC_ACCOUNTING_INFORMATION Info{};
									  const bool bEmpty = QueryInformationJobObject(Each, JobObjectBasicAccountingInformation, &Info,
																					 sizeof(Info), nullptr) &&
														  Info.ActiveProcesses == 0;
									  if (bEmpty)
									  {
										  CloseHandle(Each);
									  }
									  return bEmpty;
								  }),
				   Held.end());
		HANDLE Own = nullptr;
		if (DuplicateHandle(GetCurrentProcess(), Job, GetCurrentProcess(), &Own, 0, FALSE, DUPLICATE_SAME_ACCESS))
		{
			Held.push_back(Own);
		}
	}

	FProcHandle StartOnce(const TCHAR* URL, const TCHAR* Parms, const TCHAR* WorkingDirectory, HANDLE Output, DWORD& OutError)
	{
		OutError = 0;
		FString Program(URL);
		Program.ReplaceInline(TEXT("/"), TEXT("\\"));
		// The parameters go on as they were composed; the child's runtime splits them by the same rules that
		// FWindowsArguments follows on other systems.
		FString CommandLine = TEXT("\"") + Program + TEXT("\"");
		if (Parms && *Parms)
		{
			CommandLine += TEXT(" ");
			CommandLine += Parms;
		}
		std::wstring Mutable(WindowsApi::Wide(*CommandLine));

		SECURITY_ATTRIBUTES Inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
		const HANDLE NullInput = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &Inheritable,
											 OPEN_EXISTING, 0, nullptr);
		const HANDLE StdOut = Output ? Output : GetStdHandle(STD_OUTPUT_HANDLE);
		const HANDLE StdErr = Output ? Output : GetStdHandle(STD_ERROR_HANDLE);

		// Only these handles pass to the child: a handle of another child's pipe would keep that pipe open.
		// The flag goes back as it was after the start, so that no later start elsewhere passes them on.
		std::vector<HANDLE> Inherited;
		std::vector<DWORD> FormerFlags;
		for (HANDLE Handle : {NullInput, StdOut, StdErr})
		{
			DWORD Flags = 0;
			if (Handle && Handle != INVALID_HANDLE_VALUE &&
				std::find(Inherited.begin(), Inherited.end(), Handle) == Inherited.end() &&
				GetHandleInformation(Handle, &Flags))
			{
				SetHandleInformation(Handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
				Inherited.push_back(Handle);
				FormerFlags.push_back(Flags & HANDLE_FLAG_INHERIT);
			}
		}
		SIZE_T ListBytes = 0;
		InitializeProcThreadAttributeList(nullptr, 1, 0, &ListBytes);
		std::vector<char> ListMemory(ListBytes);
		auto* List = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(ListMemory.data());
		const bool bList = InitializeProcThreadAttributeList(List, 1, 0, &ListBytes) &&
						   UpdateProcThreadAttribute(List, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, Inherited.data(),
													 Inherited.size() * sizeof(HANDLE), nullptr, nullptr);

		STARTUPINFOEXW Startup{};
		Startup.StartupInfo.cb = sizeof(Startup);
		Startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
		Startup.StartupInfo.hStdInput = NullInput;
		Startup.StartupInfo.hStdOutput = StdOut;
		Startup.StartupInfo.hStdError = StdErr;
		Startup.lpAttributeList = bList ? List : nullptr;

		FString Directory = WorkingDirectory && *WorkingDirectory ? FString(WorkingDirectory) : FString();
		Directory.ReplaceInline(TEXT("/"), TEXT("\\"));
		PROCESS_INFORMATION Started{};
		// Suspended until it is in its job, so that nothing it starts can escape the job in between.
		const DWORD Flags = CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT | CREATE_NO_WINDOW |
							(bList ? EXTENDED_STARTUPINFO_PRESENT : 0);
		const BOOL bStarted = CreateProcessW(WindowsApi::Wide(*Program), Mutable.data(), nullptr, nullptr, TRUE, Flags,
											 nullptr, Directory.IsEmpty() ? nullptr : WindowsApi::Wide(*Directory),
											 &Startup.StartupInfo, &Started);
		if (bList)
		{
			DeleteProcThreadAttributeList(List);
		}
		for (size_t Index = 0; Index < Inherited.size(); ++Index)
		{
			SetHandleInformation(Inherited[Index], HANDLE_FLAG_INHERIT, FormerFlags[Index]);
		}
		if (NullInput != INVALID_HANDLE_VALUE)
		{
			CloseHandle(NullInput);
		}
		if (!bStarted)
		{
			OutError = GetLastError();
			return FProcHandle();
		}
		const HANDLE Job = CreateJobObjectW(nullptr, nullptr);
		if (!Job || !AssignProcessToJobObject(Job, Started.hProcess))
		{
			OutError = GetLastError();
			// Without its job a cancel could miss part of the tree: the child does not get to run.
			TerminateProcess(Started.hProcess, KilledExitCode);
			CloseHandle(Started.hThread);
			CloseHandle(Started.hProcess);
			if (Job)
			{
				CloseHandle(Job);
			}
			return FProcHandle();
		}
		NoteJob(Job);
		ResumeThread(Started.hThread);
		CloseHandle(Started.hThread);
		FProcHandle Handle(static_cast<int32>(Started.dwProcessId));
		Handle.Process = Started.hProcess;
		Handle.Job = Job;
		return Handle;
	}

	// A start refused for a reason other than the program itself (missing, not a program, not allowed) is tried
	// again a few times: the system can refuse one for a moment under load, as Wine did while its debugger
	// started for another child that had crashed.
	FProcHandle Start(const TCHAR* URL, const TCHAR* Parms, const TCHAR* WorkingDirectory, HANDLE Output)
	{
		for (int32 Attempt = 0;; ++Attempt)
		{
			DWORD Error = 0;
			FProcHandle Handle = StartOnce(URL, Parms, WorkingDirectory, Output, Error);
			const bool bTheProgramItself = Error == ERROR_FILE_NOT_FOUND || Error == ERROR_PATH_NOT_FOUND || Error == ERROR_ACCESS_DENIED ||
										   Error == ERROR_BAD_EXE_FORMAT || Error == ERROR_EXE_MACHINE_TYPE_MISMATCH ||
										   Error == ERROR_INVALID_NAME || Error == ERROR_DIRECTORY;
			if (Handle.IsValid() || bTheProgramItself || Attempt == 3)
			{
				return Handle;
			}
			Sleep(50u << Attempt);
		}
	}

	void RecordEnd(FProcHandle& ProcessHandle)
	{
		DWORD Code = 0;
		ProcessHandle.bEnded = true;
		if (GetExitCodeProcess(static_cast<HANDLE>(ProcessHandle.Process), &Code))
		{
			ProcessHandle.bHasReturnCode = true;
			// An exception code (a crash) reads as a negative number, as a signal does elsewhere.
			ProcessHandle.ReturnCode = static_cast<int32>(Code);
		}
	}
}

namespace
{
	bool CollectEnd(FProcHandle& ProcessHandle, DWORD Milliseconds)
	{
		if (ProcessHandle.bEnded)
		{
			return true;
		}
		if (WaitForSingleObject(static_cast<HANDLE>(ProcessHandle.Process), Milliseconds) != WAIT_OBJECT_0)
		{
			return false;
		}
		WindowsProcess::RecordEnd(ProcessHandle);
		return true;
	}
}

FProcHandle FPlatformProcess::CreateProc(const TCHAR* URL, const TCHAR* Parms, bool bLaunchDetached, bool bLaunchHidden,
										 bool bLaunchReallyHidden, uint32* OutProcessID, int32 PriorityModifier,
										 const TCHAR* OptionalWorkingDirectory, int32 PipeWriteChild)
{
	if (OutProcessID)
	{
		*OutProcessID = 0;
	}
	if (!URL || !*URL)
	{
		return FProcHandle();
	}
	// A descriptor of the C runtime names the pipe here, as on other systems.
	const HANDLE Output = PipeWriteChild >= 0 ? reinterpret_cast<HANDLE>(_get_osfhandle(PipeWriteChild)) : nullptr;
	FProcHandle Handle = WindowsProcess::Start(URL, Parms, OptionalWorkingDirectory,
											   Output == INVALID_HANDLE_VALUE ? nullptr : Output);
	if (OutProcessID && Handle.IsValid())
	{
		*OutProcessID = static_cast<uint32>(Handle.ProcessId);
	}
	return Handle;
}

bool FPlatformProcess::IsProcRunning(FProcHandle& ProcessHandle)
{
	return ProcessHandle.IsValid() && !CollectEnd(ProcessHandle, 0);
}

void FPlatformProcess::WaitForProc(FProcHandle& ProcessHandle)
{
	if (ProcessHandle.IsValid())
	{
		CollectEnd(ProcessHandle, INFINITE);
	}
}

bool FPlatformProcess::GetProcReturnCode(FProcHandle& ProcessHandle, int32* ReturnCode)
{
	if (!ProcessHandle.IsValid() || !CollectEnd(ProcessHandle, 0) || !ProcessHandle.bHasReturnCode)
	{
		return false;
	}
	if (ReturnCode)
	{
		*ReturnCode = ProcessHandle.ReturnCode;
	}
	return true;
}

void FPlatformProcess::TerminateProc(FProcHandle& ProcessHandle, bool KillTree)
{
	if (ProcessHandle.IsValid() && !ProcessHandle.bEnded)
	{
		if (KillTree)
		{
			TerminateJobObject(static_cast<HANDLE>(ProcessHandle.Job), WindowsProcess::KilledExitCode);
		}
		else
		{
			TerminateProcess(static_cast<HANDLE>(ProcessHandle.Process), WindowsProcess::KilledExitCode);
		}
	}
}

void FPlatformProcess::TerminateAllProcs()
{
	const std::lock_guard<std::mutex> Lock(WindowsProcess::JobsLock);
	WindowsProcess::bEndingEveryJob = true;
	for (const HANDLE Job : WindowsProcess::Jobs())
	{
		TerminateJobObject(Job, WindowsProcess::KilledExitCode);
	}
}

void FPlatformProcess::CloseProc(FProcHandle& ProcessHandle)
{
	// Windows keeps no zombies: closing the handles lets a running child go on alone.
	if (ProcessHandle.IsValid())
	{
		CloseHandle(static_cast<HANDLE>(ProcessHandle.Process));
		CloseHandle(static_cast<HANDLE>(ProcessHandle.Job));
	}
	ProcessHandle.Reset();
}

FString FPlatformProcess::ExecutablePath()
{
	wchar_t Buffer[32768];
	const DWORD Length = GetModuleFileNameW(nullptr, Buffer, 32768);
	FString Path(std::u16string(WindowsApi::Ours(Buffer), Length));
	Path.ReplaceInline(TEXT("\\"), TEXT("/"));
	return Path;
}

#include "Stopping.h"

#include "HAL/PlatformProcess.h"
#include "Windows/WindowsApi.h"

#include <thread>

namespace
{
	BOOL WINAPI OnConsoleEvent(DWORD Event)
	{
		// Ctrl-C and Ctrl-Break read as SIGINT, closing the console or ending the session as SIGHUP.
		const int Number = Event == CTRL_C_EVENT || Event == CTRL_BREAK_EVENT ? 2 : 1;
		if (StopRequested())
		{
			// Not before every child's job is ended: a first handler may still be ending them.
			FPlatformProcess::TerminateAllProcs();
			TerminateProcess(GetCurrentProcess(), 128 + Number);
		}
		RequestStop(Number);
		return TRUE;
	}
}

void WatchForStop()
{
	SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
	std::thread(
		[]
		{
			for (;;)
			{
				Sleep(100);
				if (!StopRequested() && IsPastDeadline())
				{
					RequestStop(0);
				}
			}
		})
		.detach();
}

#include "Stopping.h"

#include <csignal>
#include <ctime>
#include <thread>
#include <unistd.h>

void WatchForStop()
{
	// Blocked here, before any thread starts, so that every thread inherits the mask and only the watcher
	// takes them; children get a clean mask when they start.
	sigset_t Signals;
	sigemptyset(&Signals);
	sigaddset(&Signals, SIGINT);
	sigaddset(&Signals, SIGTERM);
	sigaddset(&Signals, SIGHUP);
	pthread_sigmask(SIG_BLOCK, &Signals, nullptr);
	std::thread(
		[Signals]
		{
			const timespec Pause{0, 100 * 1000 * 1000};
			for (;;)
			{
				siginfo_t Info;
				const int Number = sigtimedwait(&Signals, &Info, &Pause);
				if (Number > 0)
				{
					if (StopRequested())
					{
						_exit(128 + Number);
					}
					RequestStop(Number);
				}
				else if (!StopRequested() && IsPastDeadline())
				{
					RequestStop(0);
				}
			}
		})
		.detach();
}

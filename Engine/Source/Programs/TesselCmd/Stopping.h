#pragma once

#include "CoreMinimal.h"

// Stopping a run from outside: SIGINT, SIGTERM and SIGHUP (Ctrl-C, Ctrl-Break and closing the console on
// Windows), or the time limit of --timeout. Either ends the whole tree of every child at once, as "Cancel"
// does a cook's, so that neither the cook nor SteamCMD (with the password on its command line) outlives the
// run; the command then winds down, saving only what is whole, and the run exits with StopExitCode.

// Starts watching for the signals; called first thing in main, before any other thread exists. A second
// signal ends the run at once.
void WatchForStop();
// From now on, the run stops once Seconds have passed (none when Seconds <= 0).
void SetStopDeadline(double Seconds);
bool StopRequested();
// 128 + the signal's number (130 for Ctrl-C, 143 for SIGTERM), or 1 for the time limit.
int StopExitCode();
// One line saying what stopped the run.
FString DescribeStop();

// For the watching halves: RequestStop records a stop (0 for the time limit) and ends every child's tree;
// IsPastDeadline says when the time limit has come.
void RequestStop(int SignalNumber);
bool IsPastDeadline();

#include "cook/CookJob.h"

#include <cstring>

TArray<TSharedPtr<FCookJob>> ActiveJobs;

int64 ModId = 123456789;

std::function<void(const FPackagingProgress&)> OnPackagingProgress;

void CancelAllJobs()
{
	for (const TSharedPtr<FCookJob>& Job : ActiveJobs)
	{
		if (Job)
		{
			Job->Process->Cancel(true);
		}
	}
	ActiveJobs.Empty();
}

FMonitoredJob::FMonitoredJob(const FString& Executable, const FString& Parameters)
	: Process(MakeUnique<FMonitoredProcess>(Executable, Parameters, true))
{
	Process->OnOutput().BindRaw(this, &FMonitoredJob::OnProcessOutput);
}

FMonitoredJob::~FMonitoredJob()
{
	// The monitor thread may be delivering text right now: it must stop before the lock and the lines go.
	if (Process)
	{
		Process->Cancel(true);
		Process.reset();
	}
}

namespace
{
	bool IsBreakOrReturn(TCHAR Unit)
	{
		return Unit == TEXT('\n') || Unit == TEXT('\r');
	}

	// The first line break or carriage return at or after Start, or Length. Four units are tested at a time:
	// the test flags every group that holds a unit below 0x0E, and the few such groups that hold only a tab
	// or the like are passed over after a closer look.
	int32 FindBreakOrReturn(const TCHAR* Chars, int32 Start, int32 Length)
	{
		int32 Index = Start;
		for (; Index + 4 <= Length; Index += 4)
		{
			uint64 Group = 0;
			std::memcpy(&Group, Chars + Index, sizeof(Group));
			if (((Group - 0x000E000E000E000Eull) & ~Group & 0x8000800080008000ull) == 0)
			{
				continue;
			}
			for (int32 Lane = 0; Lane < 4; ++Lane)
			{
				if (IsBreakOrReturn(Chars[Index + Lane]))
				{
					return Index + Lane;
				}
			}
		}
		for (; Index < Length; ++Index)
		{
			if (IsBreakOrReturn(Chars[Index]))
			{
				return Index;
			}
		}
		return Length;
	}
}

void FMonitoredJob::OnProcessOutput(FString Text)
{
	// Only the monitor thread writes PendingOutput while the child runs. One pass over the text drops every
	// "\r" and cuts out each complete line at once, so what waits never holds a break and a long unbroken
	// output is never searched twice. Blank lines of the child vanish here.
	const TCHAR* Chars = *Text;
	const int32 Length = Text.Len();
	for (int32 Start = 0; Start < Length;)
	{
		const int32 Stop = FindBreakOrReturn(Chars, Start, Length);
		const bool bLineEnds = Stop < Length && Chars[Stop] == TEXT('\n');
		if (bLineEnds && PendingOutput.IsEmpty() && Stop - Start <= MaxLineLength)
		{
			if (Stop > Start)
			{
				CutLines.Emplace(Chars + Start, Stop - Start);
			}
		}
		else
		{
			// A child that never ends its line must not grow one string without bound: a full line is handed
			// on as it is, and the text goes on in the next.
			int32 From = Start;
			while (Stop - From >= MaxLineLength - PendingOutput.Len())
			{
				int32 Take = MaxLineLength - PendingOutput.Len();
				// A character of two units stays whole: the cut comes before it.
				if (Chars[From + Take - 1] >= 0xD800 && Chars[From + Take - 1] <= 0xDBFF)
				{
					--Take;
				}
				PendingOutput.AppendChars(Chars + From, Take);
				CutLines.Add(MoveTemp(PendingOutput));
				PendingOutput.Reset();
				From += Take;
			}
			PendingOutput.AppendChars(Chars + From, Stop - From);
			if (bLineEnds && !PendingOutput.IsEmpty())
			{
				CutLines.Add(MoveTemp(PendingOutput));
				PendingOutput.Reset();
			}
		}
		Start = Stop + 1;
	}
	if (CutLines.Num() > 0)
	{
		// The lines are made before the lock, so that the tick never waits on their memory.
		FScopeLock Lock(&JobLock);
		CompletedLines.Append(MoveTemp(CutLines));
	}
}

void FMonitoredJob::SplitPendingOutput(bool bFinal)
{
	if (PendingOutput.IsEmpty())
	{
		return;
	}
	FScopeLock Lock(&JobLock);
	const bool bComplete = bFinal || PendingOutput.EndsWith(TEXT("\n"), ESearchCase::CaseSensitive);
	TArray<FString> Pieces;
	PendingOutput.ParseIntoArray(Pieces, TEXT("\n"), false);
	const int32 Take = bComplete ? Pieces.Num() : Pieces.Num() - 1;
	for (int32 Index = 0; Index < Take; ++Index)
	{
		// Blank lines of the child vanish here.
		if (!Pieces[Index].IsEmpty())
		{
			CompletedLines.Add(MoveTemp(Pieces[Index]));
		}
	}
	if (bComplete)
	{
		PendingOutput.Empty();
	}
	else
	{
		PendingOutput = Pieces.Last();
	}
}

void FMonitoredJob::TakeCompletedLines(TArray<FString>& OutLines)
{
	{
		// The lock is held only for the swap, so that the monitor thread never waits on the moving. The two
		// arrays trade their room, so neither side grows fresh memory once the flow is steady.
		FScopeLock Lock(&JobLock);
		Swap(HandedOver, CompletedLines);
	}
	OutLines.Append(MoveTemp(HandedOver));
}

FCookJob::FCookJob(FModSetup InModRecord, const FString& Executable, const FString& Parameters, FString InStagedModDir,
				   FString InTargetDir, FString InStagingDir, uint32 InCookKind, bool bInLastTarget, bool bInTestOutput)
	: FMonitoredJob(Executable, Parameters)
	, StagedModDir(MoveTemp(InStagedModDir))
	, TargetDir(MoveTemp(InTargetDir))
	, StagingDir(MoveTemp(InStagingDir))
	, CookKind(InCookKind)
	, bLastTarget(bInLastTarget)
	, bTestOutput(bInTestOutput)
	, ModRecord(MoveTemp(InModRecord))
{
}

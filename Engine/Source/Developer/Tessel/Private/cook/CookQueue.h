#pragma once

#include "CoreMinimal.h"
#include "cook/CookOptions.h"

#include <functional>

struct FModSetup;

// A cook request from its record to its verdict, without the window: the window's buttons and tick, and the
// headless session, go through these.

// Queues one job for each target of the request, and hands the request's log lines to OnLine: the commandlet's
// command line of each target. Takes the options' title into the record and gives the record its GUID on its
// first cook, so that every later cook of the mod uses the same one.
void QueueCook(FModSetup& Mod, ECookKind Kind, const FCookOptions& Options, const std::function<void(FString&&)>& OnLine);

// One turn of the queue: the complete lines of the running job go to OnLine, an ended job finishes (its last
// words, then its packaging) and the next one starts. Scratch is the caller's, kept so that its room is reused
// turn after turn. True when this turn ended the last job: the request is over.
bool PumpCookJobs(const std::function<void(FString&&)>& OnLine, TArray<FString>& Scratch);

// The verdict of a run: some line of its log says "Success", in any letter case.
bool SaysSuccess(const FString& LogLine);
// The words of the dialog that ends a run.
FText DescribeCookVerdict(bool bSuccess);

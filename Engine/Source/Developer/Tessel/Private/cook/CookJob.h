#pragma once

#include "CoreMinimal.h"

// A child process with its line pipeline; the cook job derives from it. The job runner gives both their work.
class FMonitoredJob
{
public:
	virtual ~FMonitoredJob() = default;
};

class FCookJob : public FMonitoredJob
{
};

// The process-wide queue of cook jobs, in queue order. Its length is the tool's one busy signal.
extern TArray<TSharedPtr<FCookJob>> ActiveJobs;

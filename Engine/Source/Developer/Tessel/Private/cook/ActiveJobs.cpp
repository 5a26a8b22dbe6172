#include "cook/CookJob.h"

TArray<TSharedPtr<FCookJob>> ActiveJobs;

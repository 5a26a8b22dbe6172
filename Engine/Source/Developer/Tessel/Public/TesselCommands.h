#pragma once

#include "CoreMinimal.h"

#define TESSEL_API __attribute__((visibility("default")))

namespace TesselCommands
{
	// The kit's catalogue as the tool sees it: one line per mod, its folder name and its maps.
	TESSEL_API FString DescribeModCatalogue();
}

#pragma once

#include "CoreMinimal.h"
#include "cook/CookJob.h"

// The plan of a cook request without the tool's widget: which targets, and the commandlet's arguments.

// The platforms a request cooks, in order. Each target is enabled by a mode, or always.
struct FCookTarget
{
	const TCHAR* Platform;
	bool FCookModes::*EnabledBy;
};
inline constexpr FCookTarget CookTargets[] = {
	{TEXT("WindowsNoEditor"), nullptr},
	{TEXT("WindowsServer"), &FCookModes::bServerTarget},
};
TArray<FString> CookPlatforms(const FCookModes& Modes);

// "-Map=" arguments from the record's maps: commas join maps into one "+" group, blanks separate groups; a map
// extension's maps are looked for under /Game/Maps/SeamlessTest/.
FString ComposeMapArguments(const FString& Maps, ECookKind Kind);

// The arguments of the button's kind: the mod folder, the kind's switch, the GUID and the package lists.
FString ComposeKindArguments(ECookKind Kind, const FString& ModFolder, const FString& Guid, const FCookModes& Modes);

// The commandlet's whole parameter string for one target.
FString ComposeCookParameters(const FString& MapArguments, const FString& Platform, const FString& KindArguments, const FString& OutputDir);

// A total conversion's extra packages: the list AdditionalDependencies.txt in its mod folder, copied into Base
// with every package it names. Nothing when there is no list.
void CopyTotalConversionDependencies(const FString& Base, const FString& ModFolder);

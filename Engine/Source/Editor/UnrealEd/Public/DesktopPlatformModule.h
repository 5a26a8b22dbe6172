#pragma once

#include "EditorServices.h"
#include "Modules/ModuleInterface.h"

class IDesktopPlatform
{
public:
	virtual ~IDesktopPlatform() = default;
	// File types are pairs "Description|*.ext" joined by "|".
	virtual bool OpenFileDialog(const void* ParentWindowHandle, const FString& DialogTitle, const FString& DefaultPath,
								const FString& DefaultFile, const FString& FileTypes, uint32 Flags,
								TArray<FString>& OutFilenames)
	{
		return IEditorServices::Get().OpenFileDialog(ParentWindowHandle, DialogTitle, DefaultPath, DefaultFile, FileTypes,
													 Flags, OutFilenames);
	}
};

// The module "DesktopPlatform".
class FDesktopPlatformModule : public IModuleInterface
{
public:
	static IDesktopPlatform* Get();
};

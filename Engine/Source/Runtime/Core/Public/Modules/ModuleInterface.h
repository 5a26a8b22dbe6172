#pragma once

#include "CoreTypes.h"

// What the engine knows of a module: its start, its end, and a few facts.
class IModuleInterface
{
public:
	virtual ~IModuleInterface() = default;
	virtual void StartupModule() {}
	virtual void PreUnloadCallback() {}
	virtual void PostLoadCallback() {}
	virtual void ShutdownModule() {}
	virtual bool SupportsDynamicReloading() { return true; }
	virtual bool SupportsAutomaticShutdown() { return true; }
	virtual bool IsGameModule() const { return false; }
};

// The entry point a module library exports under this plain name.
using FInitializeModuleFunctionPtr = IModuleInterface* (*)();

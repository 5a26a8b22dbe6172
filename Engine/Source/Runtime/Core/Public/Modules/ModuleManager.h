#pragma once

#include "Containers/Map.h"
#include "Containers/UnrealString.h"
#include "Modules/ModuleInterface.h"

#include <functional>
#include <memory>

// Loads modules by name: those built into the program register a factory; others are libraries
// "lib<Name>.so" in the module folder, entered through their InitializeModule export.
class CORE_API FModuleManager
{
public:
	static FModuleManager& Get();

	void RegisterStaticModule(const FString& Name, std::function<IModuleInterface*()> Factory);
	void SetModuleDirectory(const FString& Directory) { ModuleDirectory = Directory; }

	// Loads and starts the module; null when it can't be found or its entry point gives nothing.
	IModuleInterface* LoadModule(const FString& Name);
	bool IsModuleLoaded(const FString& Name) const;
	IModuleInterface* GetModule(const FString& Name) const;
	// Calls ShutdownModule and forgets the module (its library stays mapped).
	void UnloadModule(const FString& Name);
	// Shuts every module down, the last loaded first.
	void UnloadAllModules();

	template <typename ModuleType>
	static ModuleType& LoadModuleChecked(const FString& Name)
	{
		IModuleInterface* Module = Get().LoadModule(Name);
		check(Module != nullptr);
		return static_cast<ModuleType&>(*Module);
	}
	template <typename ModuleType>
	static ModuleType& GetModuleChecked(const FString& Name)
	{
		IModuleInterface* Module = Get().GetModule(Name);
		check(Module != nullptr);
		return static_cast<ModuleType&>(*Module);
	}

private:
	struct FLoaded
	{
		FString Name;
		IModuleInterface* Module = nullptr;
		void* Library = nullptr;
	};
	TMap<FString, std::function<IModuleInterface*()>> Factories;
	TArray<FLoaded> Loaded;
	FString ModuleDirectory;
};

#include "Modules/ModuleManager.h"

#include "PlatformMisc.h"

FModuleManager& FModuleManager::Get()
{
	static FModuleManager Instance;
	return Instance;
}

void FModuleManager::RegisterStaticModule(const FString& Name, std::function<IModuleInterface*()> Factory)
{
	Factories.Add(Name, std::move(Factory));
}

IModuleInterface* FModuleManager::GetModule(const FString& Name) const
{
	for (const FLoaded& Entry : Loaded)
	{
		if (Entry.Name == Name)
		{
			return Entry.Module;
		}
	}
	return nullptr;
}

bool FModuleManager::IsModuleLoaded(const FString& Name) const
{
	return GetModule(Name) != nullptr;
}

IModuleInterface* FModuleManager::LoadModule(const FString& Name)
{
	if (IModuleInterface* Existing = GetModule(Name))
	{
		return Existing;
	}
	FLoaded Entry;
	Entry.Name = Name;
	if (const std::function<IModuleInterface*()>* Factory = Factories.Find(Name))
	{
		Entry.Module = (*Factory)();
	}
	else
	{
		Entry.Library = PlatformMisc::LoadLibrary(PlatformMisc::ModuleLibraryPath(ModuleDirectory, Name));
		if (!Entry.Library)
		{
			return nullptr;
		}
		auto Initialize = reinterpret_cast<FInitializeModuleFunctionPtr>(PlatformMisc::FindSymbol(Entry.Library, "InitializeModule"));
		Entry.Module = Initialize ? Initialize() : nullptr;
	}
	if (!Entry.Module)
	{
		return nullptr;
	}
	Loaded.Add(Entry);
	Entry.Module->StartupModule();
	return Entry.Module;
}

void FModuleManager::UnloadModule(const FString& Name)
{
	for (int32 Index = 0; Index < Loaded.Num(); ++Index)
	{
		if (Loaded[Index].Name == Name)
		{
			FLoaded Entry = Loaded[Index];
			Loaded.RemoveAt(Index);
			Entry.Module->PreUnloadCallback();
			Entry.Module->ShutdownModule();
			delete Entry.Module;
			return;
		}
	}
}

void FModuleManager::UnloadAllModules()
{
	while (Loaded.Num() > 0)
	{
		UnloadModule(Loaded.Last().Name);
	}
}

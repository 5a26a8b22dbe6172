#include "Framework/Application/SlateApplication.h"

namespace
{
	std::unique_ptr<FSlateApplication>& Instance()
	{
		static std::unique_ptr<FSlateApplication> Application;
		return Application;
	}
}

void FSlateApplication::Create(int& ArgC, char** ArgV)
{
	if (Instance())
	{
		return;
	}
	Instance() = std::make_unique<FSlateApplication>();
	Instance()->StartNative(ArgC, ArgV);
}

bool FSlateApplication::IsInitialized()
{
	return static_cast<bool>(Instance());
}

FSlateApplication& FSlateApplication::Get()
{
	check(IsInitialized());
	return *Instance();
}

void FSlateApplication::Shutdown()
{
	Instance().reset();
}

void FSlateApplication::RegisterWidget(SWidget* Widget)
{
	if (!FreeSlots.empty())
	{
		Widgets[FreeSlots.back()] = Widget;
		FreeSlots.pop_back();
		return;
	}
	Widgets.push_back(Widget);
}

void FSlateApplication::UnregisterWidget(SWidget* Widget)
{
	// Widgets die in any order; a linear search from the end finds the young ones fast and the slot is reused.
	for (size_t Index = Widgets.size(); Index-- > 0;)
	{
		if (Widgets[Index] == Widget)
		{
			Widgets[Index] = nullptr;
			FreeSlots.push_back(Index);
			return;
		}
	}
}

void FSlateApplication::Tick(float DeltaTime, bool bProcessNativeEvents)
{
	if (bTicking)
	{
		return; // a handler that runs a modal loop must not tick the frame it is in again
	}
	bTicking = true;
	CurrentTime += DeltaTime;
	FGeometry Geometry;
	// Widgets may be made or released while others tick; index-based walks see a consistent list.
	for (size_t Index = 0; Index < Widgets.size(); ++Index)
	{
		SWidget* Widget = Widgets[Index];
		if (Widget && Widget->WantsTick())
		{
			TSharedPtr<SWidget> KeepAlive = Widget->weak_from_this().lock();
			if (KeepAlive)
			{
				Widget->Tick(Geometry, CurrentTime, DeltaTime);
			}
		}
	}
	for (size_t Index = 0; Index < Widgets.size(); ++Index)
	{
		if (SWidget* Widget = Widgets[Index])
		{
			Widget->RefreshAttributes();
		}
	}
	if (bProcessNativeEvents)
	{
		ProcessNativeEvents();
	}
	bTicking = false;
}

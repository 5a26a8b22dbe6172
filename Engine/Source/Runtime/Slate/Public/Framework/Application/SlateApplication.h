#pragma once

#include "Widgets/SWidget.h"

#include <memory>
#include <vector>

// Drives the widgets: each Tick ticks the widgets that want it, asks every bound attribute again, and lets the
// native backend draw and deliver input. The host calls it about 60 times a second; tests call it to advance time.
class FSlateApplication
{
public:
	// Makes the application and its native application (with the arguments the process got).
	static void Create(int& ArgC, char** ArgV);
	static bool IsInitialized();
	static FSlateApplication& Get();
	static void Shutdown();

	// With bProcessNativeEvents false the caller is the backend's own event loop (the host's frame timer).
	void Tick(float DeltaTime = 1.0f / 60.0f, bool bProcessNativeEvents = true);
	double GetCurrentTime() const { return CurrentTime; }

	// Every widget registers itself, so that its attributes are refreshed each frame.
	void RegisterWidget(SWidget* Widget);
	void UnregisterWidget(SWidget* Widget);

	// Widgets released from inside a native event are deleted once the event has returned.
	static void FlushDeferredDeletes();

	FSlateApplication();
	~FSlateApplication();

private:
	// The backend's side: its own application at the start, and a pass over its events each frame.
	void StartNative(int& ArgC, char** ArgV);
	void ProcessNativeEvents();

	struct FNativeApplication;
	std::unique_ptr<FNativeApplication> Native;
	std::vector<SWidget*> Widgets;
	std::vector<size_t> FreeSlots;
	double CurrentTime = 0.0;
	bool bTicking = false;
};

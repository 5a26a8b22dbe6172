// Appends a million log lines to a shown list in batches of a thousand, with a refresh, a scroll into view and
// a frame after each batch, and prints the total time (and how much of it went into making the lines), the
// slowest batch and the memory used per line.
// Usage: LogListBenchmark [lines] [batch]

#include "BenchmarkWindow.h"
#include "Framework/Application/SlateApplication.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"
#include "Widgets/Views/SListView.h"
#include "Widgets/Views/STableRow.h"

#include "HAL/PlatformMemory.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

int main(int ArgC, char** ArgV)
{
	const int32 Lines = ArgC > 1 ? std::atoi(ArgV[1]) : 1000000;
	const int32 Batch = ArgC > 2 ? std::atoi(ArgV[2]) : 1000;
	BenchmarkWindow::PreparePlatform();
	int AppArgC = 1;
	FSlateApplication::Create(AppArgC, ArgV);

	TArray<TSharedPtr<FString>> LogMessages;
	TSharedPtr<SListView<TSharedPtr<FString>>> List;
	TSharedRef<SWidget> Root = SAssignNew(List, SListView<TSharedPtr<FString>>)
		.ListItemsSource(&LogMessages)
		.ItemHeight(18.0f)
		.SelectionMode(ESelectionMode::SingleToggle)
		.AlwaysShowScrollbar(true)
		.OnGenerateRow_Lambda([](TSharedPtr<FString> Item, const TSharedRef<STableViewBase>& Owner)
							  { return SNew(STableRow<TSharedPtr<FString>>, Owner)[SNew(STextBlock).Text(FText::FromString(*Item))]; });
	BenchmarkWindow::Show(Root, 900, 400);
	FSlateApplication::Get().Tick();
	BenchmarkWindow::PrintSystemCosts();
	// The window shows and repaints after the measuring of the system's costs before the clock starts: the lines
	// are measured, not the window's first appearance.
	using FClock = std::chrono::steady_clock;
	for (const auto Settled = FClock::now() + std::chrono::milliseconds(300); FClock::now() < Settled;)
	{
		FSlateApplication::Get().Tick();
		std::this_thread::sleep_for(std::chrono::milliseconds(10));
	}

	const int64 MemoryBefore = FPlatformMemory::GetResidentKilobytes();
	const auto Start = FClock::now();
	double Slowest = 0.0;
	int32 SlowestIndex = 0;
	double SlowestMaking = 0.0;
	double FirstTenth = 0.0;
	double LastTenth = 0.0;
	double Making = 0.0;
	const int32 Batches = Lines / Batch;
	for (int32 BatchIndex = 0; BatchIndex < Batches; ++BatchIndex)
	{
		const auto BatchStart = FClock::now();
		for (int32 Line = 0; Line < Batch; ++Line)
		{
			// About 100 characters, as a cook prints them.
			LogMessages.Add(MakeShared<FString>(FString::Printf(
				TEXT("LogCook: Display: Cooked packages %d Packages Remain %d Total %d for /Game/Mods/Islands/Map_%06d"),
				BatchIndex * Batch + Line, Lines - BatchIndex * Batch - Line, Lines, Line)));
		}
		const double MadeIn = std::chrono::duration<double>(FClock::now() - BatchStart).count();
		Making += MadeIn;
		List->RequestListRefresh();
		List->RequestScrollIntoView(LogMessages.Last());
		FSlateApplication::Get().Tick();
		const double Seconds = std::chrono::duration<double>(FClock::now() - BatchStart).count();
		if (Seconds > Slowest)
		{
			Slowest = Seconds;
			SlowestIndex = BatchIndex;
			SlowestMaking = MadeIn;
		}
		if (BatchIndex < Batches / 10)
		{
			FirstTenth += Seconds;
		}
		else if (BatchIndex >= Batches - Batches / 10)
		{
			LastTenth += Seconds;
		}
	}
	const double Total = std::chrono::duration<double>(FClock::now() - Start).count();
	const int64 MemoryAfter = FPlatformMemory::GetResidentKilobytes();
	const bool bLastShown = List->IsItemVisible(LogMessages.Last());

	std::printf("lines: %d in batches of %d\n", Lines, Batch);
	std::printf("total: %.2f s (%.0f lines/s)\n", Total, Lines / Total);
	// Making the lines is the log's own cost, which any list pays; the rest is the list's.
	std::printf("of which making the lines: %.2f s; refreshing, scrolling and drawing the list: %.2f s\n", Making, Total - Making);
	std::printf("slowest batch: %.2f ms (batch %d, of which making its lines %.2f ms); first tenth of batches %.1f ms each, last "
				"tenth %.1f ms each\n",
				Slowest * 1000.0, SlowestIndex, SlowestMaking * 1000.0, FirstTenth * 1000.0 / std::max(1, Batches / 10),
				LastTenth * 1000.0 / std::max(1, Batches / 10));
	std::printf("memory: %.1f bytes per line (resident growth %lld KB)\n", (MemoryAfter - MemoryBefore) * 1024.0 / Lines,
				static_cast<long long>(MemoryAfter - MemoryBefore));
	std::printf("last line on screen: %s\n", bLastShown ? "yes" : "no");

	BenchmarkWindow::Close();
	List.Reset();
	FSlateApplication::Shutdown();
	return bLastShown ? 0 : 1;
}

#include <QLayout>
#include <QWidget>

#include "Framework/Docking/TabManager.h"
#include "Styling/SlateBrush.h"
#include "Widgets/SWindow.h"


void SWindow::Construct(const FArguments& InArgs)
{
	Title = InArgs._Title;
	ClientSize = InArgs._ClientSize;
	SizingRule = InArgs._SizingRule;
	AutoCenter = InArgs._AutoCenter;
	bHasMaximizeBox = InArgs._SupportsMaximize;
	bHasMinimizeBox = InArgs._SupportsMinimize;
	if (!Title.IsBound())
	{
		SetTextKey(Title.Get());
	}
	if (InArgs._Content)
	{
		ChildSlot.Padding(8)[InArgs._Content.ToSharedRef()];
	}
}

void SWindow::SetContent(const TSharedRef<SWidget>& InContent)
{
	ChildSlot.Padding(8)[InContent];
}

QWidget* SWindow::CreateQWidget()
{
	QWidget* Widget = SCompoundWidget::CreateQWidget();
	Widget->setWindowTitle(SlateQt::ToQString(Title.Get().ToString()));
	// An autosized window is sized to its content when it is shown.
	if (SizingRule != ESizingRule::Autosized)
	{
		Widget->resize(static_cast<int>(ClientSize.X), static_cast<int>(ClientSize.Y));
	}
	return Widget;
}

void SWindow::RequestDestroyWindow()
{
	bDestroyRequested = true;
	if (QtWidget)
	{
		QtWidget->close();
	}
}

void* SWindow::GetNativeWindowHandle()
{
	return reinterpret_cast<void*>(GetQWidget()->winId());
}

void SDockTab::Construct(const FArguments& InArgs)
{
	TabRole = InArgs._TabRole;
	Label = InArgs._Label;
	if (InArgs._Content)
	{
		ChildSlot[InArgs._Content.ToSharedRef()];
	}
}

void SDockTab::SetContent(const TSharedRef<SWidget>& InContent)
{
	ChildSlot[InContent];
}

TSharedRef<FGlobalTabmanager> FGlobalTabmanager::Get()
{
	static TSharedRef<FGlobalTabmanager> Instance = MakeShared<FGlobalTabmanager>();
	return Instance;
}

FTabSpawnerEntry& FGlobalTabmanager::RegisterNomadTabSpawner(const FString& TabId, const FOnSpawnTab& OnSpawnTab)
{
	UnregisterNomadTabSpawner(TabId);
	TSharedPtr<FTabSpawnerEntry> Entry = MakeShared<FTabSpawnerEntry>();
	Entry->TabId = TabId;
	Entry->OnSpawnTab = OnSpawnTab;
	Spawners.Add(Entry);
	return *Entry;
}

bool FGlobalTabmanager::UnregisterNomadTabSpawner(const FString& TabId)
{
	return Spawners.RemoveAll([&TabId](const TSharedPtr<FTabSpawnerEntry>& Entry) { return Entry->TabId == TabId; }) > 0;
}

bool FGlobalTabmanager::HasTabSpawner(const FString& TabId) const
{
	return Spawners.ContainsByPredicate([&TabId](const TSharedPtr<FTabSpawnerEntry>& Entry) { return Entry->TabId == TabId; });
}

TArray<FTabSpawnerEntry> FGlobalTabmanager::GetNomadTabSpawners() const
{
	TArray<FTabSpawnerEntry> Entries;
	for (const TSharedPtr<FTabSpawnerEntry>& Entry : Spawners)
	{
		Entries.Add(*Entry);
	}
	return Entries;
}

TSharedPtr<SDockTab> FGlobalTabmanager::InvokeTab(const FString& TabId)
{
	for (const TSharedPtr<FTabSpawnerEntry>& Entry : Spawners)
	{
		if (Entry->TabId == TabId)
		{
			FSpawnTabArgs Args;
			Args.TabId = TabId;
			TSharedRef<SDockTab> Tab = Entry->OnSpawnTab.Execute(Args);
			if (Tab->GetTabLabel().IsEmpty())
			{
				Tab->SetLabel(Entry->DisplayName);
			}
			return Tab;
		}
	}
	return nullptr;
}

namespace
{
	// Brushes by name; every name gives a brush, so that a missing image never fails a layout.
	class FNamedStyle : public ISlateStyle
	{
	public:
		const FSlateBrush* GetBrush(const FString& Name) const override
		{
			TSharedPtr<FSlateBrush>& Brush = Brushes.FindOrAdd(Name);
			if (!Brush)
			{
				Brush = MakeShared<FSlateBrush>();
				Brush->ResourceName = Name;
				// The kit's logo is drawn larger than the default icon size.
				if (Name == TEXT("Merrow.MerrowLogo"))
				{
					Brush->ImageSize = FVector2D(40, 40);
				}
				// The checkerboard stands for "no image" and covers the whole area it is given.
				if (Name == TEXT("Checkerboard"))
				{
					Brush->Tiling = ESlateBrushTileType::Both;
				}
			}
			return Brush.Get();
		}

	private:
		mutable TMap<FString, TSharedPtr<FSlateBrush>> Brushes;
	};
}

const ISlateStyle& FCoreStyle::Get()
{
	static FNamedStyle Style;
	return Style;
}

const ISlateStyle& FEditorStyle::Get()
{
	static FNamedStyle Style;
	return Style;
}

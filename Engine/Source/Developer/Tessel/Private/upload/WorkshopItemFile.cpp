#include "STesselUI.h"

#include "Dialogs/Dialogs.h"
#include "Widgets/Text/STextBlock.h"
#include "upload/WorkshopUpload.h"

#define LOCTEXT_NAMESPACE "STesselTool"

bool STesselTool::MakeWorkshopItemFile()
{
	check(SelectedMod.IsValid());
	if (!WriteWorkshopItemFile(*SelectedMod, GetVisibilityNumber(VisibilityOptions, SelectedMod->Visibility)))
	{
		SGenericDialogWidget::OpenDialog(LOCTEXT("UploadError", "Upload Error"),
										 SNew(STextBlock).Text(DescribeSteamUploadRefusal(ESteamUploadRefusal::NoTemplate)));
		return false;
	}
	return true;
}

#undef LOCTEXT_NAMESPACE

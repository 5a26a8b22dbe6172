// The enable guards of the form's buttons. The toolkit asks them whenever it draws, so each reads the current
// state afresh: the job queue's length, the record's fields and, for "Upload", the file system itself.

#include "STesselUI.h"
#include "cook/CookJob.h"

#include "HAL/PlatformFile.h"

bool STesselTool::CanCookMap() const
{
	return SelectedMod && ActiveJobs.Num() == 0 && !SelectedMod->Maps.IsEmpty();
}

bool STesselTool::CanResetPublisherId() const
{
	return SelectedMod && ActiveJobs.Num() == 0 && !SelectedMod->ItemSeamId.IsEmpty();
}

bool STesselTool::CanUpload() const
{
	if (!SelectedMod || ActiveJobs.Num() > 0 || SelectedMod->Title.IsEmpty() || SelectedMod->Description.IsEmpty() ||
		SelectedMod->PreviewImage.IsEmpty())
	{
		return false;
	}
	// A packaged mod has its description file; whether the preview image exists is left to the upload.
	const FString ModInfo = GetModOutputDir() / SelectedMod->ModDir / TEXT("mod.info");
	return FPlatformFileManager::Get().GetPlatformFile().FileExists(*ModInfo);
}

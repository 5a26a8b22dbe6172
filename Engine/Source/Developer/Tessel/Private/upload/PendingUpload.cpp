#include "STesselUI.h"

// Publishing joins the tool with the upload routes; until then "Upload" does nothing.
FReply STesselTool::OnUploadClicked()
{
	return FReply::Handled();
}

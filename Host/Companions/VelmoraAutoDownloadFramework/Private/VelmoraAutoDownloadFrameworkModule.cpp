#include "VelmoraAutoDownloadFrameworkModule.h"

#include "Host/UpdateGateControl.h"
#include "UpdateGate.h"

void FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload()
{
	if (Velmora::FUpdateGate::Get().GetState() == Velmora::EUpdateGateState::UpdateAvailable)
	{
		Velmora::FUpdateGateControl::StartDownload();
	}
}

IMPLEMENT_MODULE(FVelmoraAutoDownloadFrameworkModule, VelmoraAutoDownloadFramework)

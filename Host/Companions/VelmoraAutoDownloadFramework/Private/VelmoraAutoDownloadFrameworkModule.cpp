#include "VelmoraAutoDownloadFrameworkModule.h"

#include "Host/UpdateGateControl.h"
#include "UpdateGate.h"

void FVelmoraAutoDownloadFrameworkModule::TriggerManualDownload()
{
	const Velmora::FUpdateGate& Gate = Velmora::FUpdateGate::Get();
	if (Gate.GetState() == Velmora::EUpdateGateState::UpdateAvailable)
	{
		Velmora::FUpdateGateControl::SetState(Gate.GetState(), TEXT("The update cannot be downloaded from here. Please install it by hand."), Gate.GetVersion());
	}
}

IMPLEMENT_MODULE(FVelmoraAutoDownloadFrameworkModule, VelmoraAutoDownloadFramework)

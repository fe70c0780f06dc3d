#include "UpdateGate.h"

#include "Host/UpdateGateControl.h"

namespace Velmora
{
	FUpdateGate& FUpdateGate::Get()
	{
		static FUpdateGate Instance;
		return Instance;
	}

	void FUpdateGateControl::SetState(EUpdateGateState State, const FString& Message, const FString& Version)
	{
		FUpdateGate& Gate = FUpdateGate::Get();
		if (Gate.State == State && Gate.Message.Equals(Message) && Gate.Version.Equals(Version))
		{
			return;
		}
		Gate.State = State;
		Gate.Message = Message;
		Gate.Version = Version;
		Gate.StateChangedEvent.Broadcast(State);
	}
}

#include "UpdateGate.h"

#include "Host/UpdateGateControl.h"
#include "Misc/Paths.h"
#include "ReleaseFile.h"

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

	bool FUpdateGateControl::SetStateByWord(const FString& Word, TOptional<int32> Progress)
	{
		EUpdateGateState State = EUpdateGateState::Ready;
		if (!FReleaseFile::FindState(Word, State))
		{
			return false;
		}
		SetState(State, Progress.IsSet() ? FReleaseFile::MakeProgressMessage(FString(), Progress.GetValue()) : FString(),
			FUpdateGate::Get().Version);
		return true;
	}

	bool FUpdateGateControl::ReadReleaseFile(const FString& Path, FString& OutComplaint)
	{
		if (!FPaths::FileExists(Path))
		{
			return true;
		}
		FReleaseFile Release;
		OutComplaint = FReleaseFile::Read(Path, Release);
		if (OutComplaint.IsEmpty())
		{
			SetState(Release.State, Release.Message, Release.Version);
		}
		return OutComplaint.IsEmpty();
	}
}

#include "UpdateGate.h"

#include "Dom/JsonObject.h"
#include "Host/UpdateGateControl.h"
#include "Misc/FileHelper.h"
#include "Misc/Paths.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"

namespace Velmora
{
	namespace
	{
		struct FStateRow
		{
			const TCHAR* Word;
			EUpdateGateState State;
		};
		constexpr FStateRow StateRows[] = {
			{ TEXT("Checking"), EUpdateGateState::Checking },
			{ TEXT("Ready"), EUpdateGateState::Ready },
			{ TEXT("UpdateAvailable"), EUpdateGateState::UpdateAvailable },
			{ TEXT("Downloading"), EUpdateGateState::Downloading },
			{ TEXT("RestartRequired"), EUpdateGateState::RestartRequired },
		};
	}

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

	bool FUpdateGateControl::ReadReleaseFile(const FString& Path, FString& OutComplaint)
	{
		if (!FPaths::FileExists(Path))
		{
			return true;
		}
		FString Text;
		TSharedPtr<FJsonObject> Release;
		if (!FFileHelper::LoadFileToString(Text, *Path) || !FJsonSerializer::Deserialize(TJsonReaderFactory<>::Create(Text), Release) || !Release)
		{
			OutComplaint = FString::Printf(TEXT("The release file \"%s\" cannot be read as a JSON object."), *Path);
			return false;
		}
		FString Word;
		FString Version;
		FString Message;
		Release->TryGetStringField(TEXT("state"), Word);
		Release->TryGetStringField(TEXT("version"), Version);
		Release->TryGetStringField(TEXT("message"), Message);
		for (const FStateRow& Row : StateRows)
		{
			if (Word.Equals(Row.Word))
			{
				SetState(Row.State, Message, Version);
				return true;
			}
		}
		OutComplaint = FString::Printf(TEXT("The release file \"%s\" names no known state."), *Path);
		return false;
	}
}

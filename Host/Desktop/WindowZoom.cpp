#include "WindowZoom.h"

#include "ForwardingWindow.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/HostAtomicFile.h"
#include "Host/HostFolders.h"
#include "Misc/FileHelper.h"
#include "ProblemToasts.h"

#include <iterator>
#include <string>

namespace
{
	constexpr int32 Steps[] = { 50, 67, 75, 80, 90, 100, 110, 125, 150, 175, 200 };
	constexpr int32 FullStep = 5;
	constexpr int32 StepCount = static_cast<int32>(std::size(Steps));

	struct FZoomState
	{
		FString Path;
		int32 Index = FullStep;
	};

	FZoomState& GetState()
	{
		static FZoomState State;
		return State;
	}

	/** Hands everything on; only its scale is its own. */
	class FZoomedWindow : public FForwardingWindow
	{
	public:
		using FForwardingWindow::FForwardingWindow;
		virtual float GetScale() const override { return Window->GetScale() * static_cast<float>(FWindowZoom::GetPercent()) / 100.0f; }
	};
}

TSharedRef<IHostWindow> FWindowZoom::Wrap(const TSharedRef<IHostWindow>& Window)
{
	return MakeShared<FZoomedWindow>(Window);
}

void FWindowZoom::Load(const FString& Path)
{
	FZoomState& State = GetState();
	State.Path = Path;
	State.Index = FullStep;
	FString Text;
	if (Path.IsEmpty() || HostGetPathKind(Path) != EHostPathKind::File || !FFileHelper::LoadFileToString(Text, *Path))
	{
		return;
	}
	for (int32 Index = 0; Index < StepCount; ++Index)
	{
		State.Index = Text.TrimStartAndEnd() == FString::FromInt(Steps[Index]) ? Index : State.Index;
	}
}

int32 FWindowZoom::GetPercent()
{
	return Steps[GetState().Index];
}

void FWindowZoom::Step(int32 Direction)
{
	FZoomState& State = GetState();
	const int32 Before = State.Index;
	State.Index = Direction == 0 ? FullStep : FMath::Clamp(State.Index + Direction, 0, StepCount - 1);
	if (State.Index == Before)
	{
		return;
	}
	FSlateApplication::Get().GetMessageHandler().OnWindowResized();
	if (!State.Path.IsEmpty())
	{
		const std::string Bytes = std::to_string(GetPercent()) + "\n";
		FString Reason;
		if (!HostSaveFile(State.Path, Bytes.data(), static_cast<int64>(Bytes.size()), HostWritePrivate, Reason))
		{
			FProblemToasts::Tell(TEXT("The zoom holds until the program ends; it could not be kept. ") + Reason);
		}
	}
}

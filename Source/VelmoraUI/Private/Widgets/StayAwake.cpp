#include "Widgets/StayAwake.h"

#include "Types/WidgetActiveTimerDelegate.h"
#include "Widgets/SWidget.h"

namespace
{

	/** Two looks without a call: the first may fall into one long turn of the loop, such as one that loads a level. */
	constexpr float WatchSeconds = 0.5f;
	constexpr int32 LooksUntilHidden = 2;

} // namespace

FStayAwake::~FStayAwake()
{
	StopWatching();
}

void FStayAwake::SetUp(SWidget& InOwner, TFunction<bool()> InIsDue, float InPeriod)
{
	Owner = &InOwner;
	IsDue = MoveTemp(InIsDue);
	Period = InPeriod;
}

void FStayAwake::Start()
{
	// 1. A widget that was never painted is in no window: Slate would call its timer never, and sleep never.
	if (!bWasPainted || Timer.IsValid())
	{
		return;
	}
	MissedLooks = 0;
	// 2. Each call brings a frame. The first one that finds nothing due is the last.
	const auto OnTimer = [this](double Now, float DeltaTime)
	{
		MissedLooks = 0;
		if (IsDue())
		{
			return EActiveTimerReturnType::Continue;
		}
		Timer.Reset();
		StopWatching();
		return EActiveTimerReturnType::Stop;
	};
	Timer = Owner->RegisterActiveTimer(Period, FWidgetActiveTimerDelegate::CreateLambda(OnTimer));
	// 3. A widget that goes out of sight is not called any more, and its timer would keep the count of timers up for good.
	Watch =
		FTSTicker::GetCoreTicker().AddTicker(FTickerDelegate::CreateLambda([this](float DeltaTime) { return WatchTimer(); }), WatchSeconds);
}

void FStayAwake::Update()
{
	// A tick comes from a paint.
	bWasPainted = true;
	if (!Timer.IsValid() && IsDue())
	{
		Start();
	}
}

bool FStayAwake::WatchTimer()
{
	if (++MissedLooks <= LooksUntilHidden)
	{
		return true;
	}
	// Not called for a while: out of sight. The next tick, which is the next paint, starts anew when something is still due.
	Owner->UnRegisterActiveTimer(Timer.ToSharedRef());
	Timer.Reset();
	Watch.Reset();
	return false;
}

void FStayAwake::StopWatching()
{
	if (Watch.IsValid())
	{
		FTSTicker::RemoveTicker(Watch);
		Watch.Reset();
	}
}

#include "Misc/Attribute.h"
#include "Support/Base/Printers.h"

DECLARE_DELEGATE_OneParam(FTestOnText, const FString&) DECLARE_MULTICAST_DELEGATE_OneParam(FTestChanged, int32)

	namespace
{
	struct FListener : TSharedFromThis<FListener>
	{
		void OnChanged(int32 Value) { Heard += FString::FromInt(Value); }
		FString GetHeard() const { return Heard; }
		FString Heard;
	};
}

TEST(Delegates, ObjectsAreHeldWeaklyAndKeptForTheCall)
{
	TSharedPtr<FListener> Listener = MakeShared<FListener>();
	TWeakPtr<FListener> Weak = Listener;
	FTestOnText OnText = FTestOnText::CreateSPLambda(Listener.ToSharedRef(),
		[&](const FString& Text)
		{
			Listener.Reset();
			EXPECT_TRUE(Weak.IsValid()) << "kept to the end of the call";
		});
	const FTestOnText Copy = OnText;
	EXPECT_TRUE(Copy.ExecuteIfBound(TEXT("x")));
	EXPECT_FALSE(Weak.IsValid());
	EXPECT_FALSE(OnText.IsBound() || Copy.ExecuteIfBound(TEXT("x")));
}

TEST(Delegates, AHandlerMayUnbindItself)
{
	FSimpleDelegate Delegate;
	int32 Calls = 0;
	Delegate.BindLambda(
		[&Delegate, &Calls, Kept = MakeShared<int32>(4)]
		{
			Delegate.Unbind();
			Calls += *Kept;
		});
	Delegate.Execute();
	EXPECT_EQ(Calls, 4);
	EXPECT_FALSE(Delegate.IsBound());
}

TEST(MulticastDelegates, OrderHandlesAndRemoval)
{
	FTestChanged Changed;
	FString Log;
	EXPECT_FALSE(Changed.IsBound());
	const FDelegateHandle A = Changed.AddLambda([&Log](int32) { Log += TEXT("A"); });
	const FDelegateHandle B = Changed.AddLambda([&Log](int32) { Log += TEXT("B"); });
	const TSharedRef<FListener> Listener = MakeShared<FListener>();
	Changed.AddSP(Listener, &FListener::OnChanged);
	Changed.AddRaw(&Listener.Get(), &FListener::OnChanged);
	Changed.Broadcast(7);
	EXPECT_EQ(Utf8(Log), "BA") << "last added first";
	EXPECT_EQ(Utf8(Listener->Heard), "77");
	EXPECT_EQ(Changed.RemoveAll(&Listener.Get()), 2);
	EXPECT_TRUE(Changed.Remove(B));
	EXPECT_FALSE(Changed.Remove(B));
	const FTestChanged Copy = Changed;
	Changed.Clear();
	Changed.Broadcast(8);
	Copy.Broadcast(9);
	EXPECT_EQ(Utf8(Log), "BAA");
	EXPECT_EQ(Utf8(Listener->Heard), "77");
	EXPECT_TRUE(A.IsValid() && A != B && !FDelegateHandle().IsValid());
}

TEST(MulticastDelegates, ChangesWhileBroadcasting)
{
	FString Log;
	FSimpleMulticastDelegate Event;
	FDelegateHandle Oldest = Event.AddLambda([&Log] { Log += TEXT("oldest "); });
	FDelegateHandle Middle;
	Middle = Event.AddLambda(
		[&]
		{
			Log += TEXT("middle ");
			Event.Remove(Middle);
		});
	Event.AddLambda(
		[&]
		{
			Log += TEXT("newest ");
			Event.Remove(Oldest);
			Event.AddLambda([&Log] { Log += TEXT("added "); });
		});
	Event.Broadcast();
	EXPECT_EQ(Utf8(Log), "newest middle ") << "removed ones are not called any more, added ones not yet";
	Log.Reset();
	Event.Broadcast();
	EXPECT_EQ(Utf8(Log), "added newest ");
}

TEST(MulticastDelegates, NestedBroadcastsAndDestruction)
{
	FString Log;
	TUniquePtr<TMulticastDelegate<void(int32)>> Event = MakeUnique<TMulticastDelegate<void(int32)>>();
	Event->AddLambda([&](int32 Depth) { Log += FString::Printf(TEXT("last%d "), Depth); });
	Event->AddLambda(
		[&, Kept = MakeShared<int32>(1)](int32 Depth)
		{
			Log += FString::Printf(TEXT("in%d "), Depth);
			if (Depth < 2)
			{
				Event->Broadcast(Depth + 1);
			}
			else
			{
				Event.Reset();
			}
			Log += FString::Printf(TEXT("out%d "), Depth + *Kept);
		});
	Event->Broadcast(0);
	EXPECT_EQ(Utf8(Log), "in0 in1 in2 out3 out2 out1 ") << "nothing is called once the delegate is gone";
}

TEST(Attributes, ValuesFunctionsAndDeadObjects)
{
	TAttribute<FString> Attribute;
	EXPECT_FALSE(Attribute.IsSet());
	EXPECT_EQ(Utf8(Attribute.Get(TEXT("default"))), "default");
	Attribute = TEXT("value");
	EXPECT_EQ(Utf8(Attribute.Get()), "value");
	EXPECT_TRUE(Attribute.IsSet() && !Attribute.IsBound());
	TSharedPtr<FListener> Listener = MakeShared<FListener>();
	Attribute = TAttribute<FString>::CreateSP(Listener.Get(), &FListener::GetHeard);
	const TAttribute<FString> Copy = Attribute;
	EXPECT_TRUE(Copy.IdenticalTo(Attribute));
	Listener->Heard = TEXT("heard");
	EXPECT_EQ(Utf8(Copy.Get()), "heard");
	Listener.Reset();
	EXPECT_FALSE(Copy.IsBound());
	EXPECT_EQ(Utf8(Copy.Get()), "heard") << "the last value stays";
	EXPECT_EQ(Utf8(Attribute.Get()), "") << "never read before";
	int32 Reads = 0;
	TAttribute<int32> Counter = TAttribute<int32>::CreateLambda([&Reads] { return ++Reads; });
	EXPECT_EQ(Counter.Get() * 10 + Counter.Get(), 12);
	Counter.Set(5);
	EXPECT_EQ(Counter.Get(), 5);
	EXPECT_FALSE(Counter.IsBound());
	EXPECT_TRUE(TAttribute<int32>(3).IdenticalTo(3) && !TAttribute<int32>(3).IdenticalTo(4));
}

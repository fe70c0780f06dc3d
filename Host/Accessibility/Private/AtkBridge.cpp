#include "AtkBridge.h"

#include "AtkKeys.h"
#include "AtkObjects.h"
#include "AtkWords.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/HostAnnouncements.h"
#include "Host/HostKeyWatch.h"

#include <atk-bridge.h>

// A look is taken at most twenty times a second, and only when there was a frame: whoever reads the window aloud cannot be faster,
// and a long answer that runs in costs a look now and then instead of one a frame.

namespace
{
	constexpr float LookSeconds = 0.05f;

	FAtkBridge* Current = nullptr;

	const gchar* GetToolkitName()
	{
		return "velmora";
	}

	const gchar* GetToolkitVersion()
	{
		return "1";
	}
}

FAtkBridge* FAtkBridge::Get()
{
	return Current;
}

// Made once and never given back: ATK keeps the root of the first connection for the life of the process.
AtkObject* FAtkBridge::GetApplication()
{
	static AtkObject* const Application = AtkObjects::Make(nullptr);
	return Application;
}

FAtkBridge::FAtkBridge()
{
	Current = this;
	// 1. What the library asks when it connects.
	AtkUtilClass* const Util = static_cast<AtkUtilClass*>(g_type_class_ref(ATK_TYPE_UTIL));
	Util->get_root = &FAtkBridge::GetApplication;
	Util->get_toolkit_name = &GetToolkitName;
	Util->get_toolkit_version = &GetToolkitVersion;
	AtkKeys::Install(*Util);
	if (!g_get_prgname())
	{
		g_set_prgname("velmora");
	}
	Tree.Update();
	bConnected = atk_bridge_adaptor_init(nullptr, nullptr) == 0;
	if (!bConnected)
	{
		return;
	}

	// 2. What it is told from now on. Whoever listens wants to know at once which window has the keyboard.
	Pump = MakeUnique<FGlibPump>();
	FHostKeyWatch::SetListener(
		[](const FKey& Key, const FModifierKeysState& Modifiers, bool bDown) { return AtkKeys::Tell(Key, Modifiers, bDown); });
	FHostAnnouncements::SetListener([this](const FString& Text) { Announce(Text); });
	Ticker = FTSTicker::GetCoreTicker().AddTicker(TEXT("Accessibility"), LookSeconds,
		[this](float)
		{
			OnTick();
			return true;
		});
	AtkObject* const Window = GetObject(FAccessTree::RootId);
	g_signal_emit_by_name(Window, "create");
	g_signal_emit_by_name(Window, "activate");
	TellFocus(Tree.GetFocused());
	Pump->Serve();
}

// The library stays connected until the process ends, as it does under other toolkits; whoever asks it for objects hears that they
// are gone.
FAtkBridge::~FAtkBridge()
{
	if (bConnected)
	{
		FHostAnnouncements::SetListener(nullptr);
		FHostKeyWatch::SetListener(nullptr);
		FTSTicker::RemoveTicker(Ticker);
	}
	Current = nullptr;
	Pump.Reset();
	for (const TPair<uint32, AtkObject*>& Pair : Objects)
	{
		g_object_unref(Pair.Value);
	}
}

AtkObject* FAtkBridge::FindObject(uint32 Id) const
{
	return Id == AtkObjects::ApplicationId ? GetApplication() : Objects.FindRef(Id);
}

AtkObject* FAtkBridge::GetObject(uint32 Id)
{
	if (AtkObject* const Known = FindObject(Id))
	{
		return Known;
	}
	const FAccessNode* const Node = Tree.Find(Id);
	AtkObject* const Made = Node ? AtkObjects::Make(Node) : nullptr;
	if (Made)
	{
		Objects.Add(Id, Made);
	}
	return Made;
}

void FAtkBridge::Drop(uint32 Id)
{
	if (AtkObject* const Object = Objects.FindRef(Id))
	{
		Objects.Remove(Id);
		atk_object_notify_state_change(Object, ATK_STATE_DEFUNCT, TRUE);
		g_object_unref(Object);
	}
}

void FAtkBridge::DropGone()
{
	TArray<uint32> Gone;
	for (const TPair<uint32, AtkObject*>& Pair : Objects)
	{
		if (!Tree.Find(Pair.Key))
		{
			Gone.Add(Pair.Key);
		}
	}
	for (const uint32 Id : Gone)
	{
		Drop(Id);
	}
}

void FAtkBridge::OnTick()
{
	if (!FSlateApplication::IsInitialized() || FSlateApplication::Get().GetFrameStats().FrameCount == SeenFrames)
	{
		return;
	}
	SeenFrames = FSlateApplication::Get().GetFrameStats().FrameCount;
	Look();
	Pump->Serve();
}

void FAtkBridge::Look()
{
	const TArray<FAccessChange> Changes = Tree.Update();
	for (const FAccessChange& Change : Changes)
	{
		Tell(Change);
	}
	DropGone();
}

void FAtkBridge::Tell(const FAccessChange& Change)
{
	using EKind = FAccessChange::EKind;
	if (Change.Kind == EKind::Removed)
	{
		TellChild(Change, "children-changed::remove");
		Drop(Change.Id);
		return;
	}
	if (Change.Kind == EKind::Added)
	{
		TellChild(Change, "children-changed::add");
		return;
	}
	if (Change.Kind == EKind::Focus)
	{
		TellFocus(Change.Id);
		return;
	}
	AtkObject* const Object = FindObject(Change.Id);
	if (!Object)
	{
		return;
	}
	switch (Change.Kind)
	{
	case EKind::Name:
		g_object_notify(G_OBJECT(Object), "accessible-name");
		break;
	case EKind::Description:
		g_object_notify(G_OBJECT(Object), "accessible-description");
		break;
	case EKind::States:
		TellStates(Object, Change);
		break;
	case EKind::TextRemoved:
		TellText(Object, Change, "text-remove");
		break;
	case EKind::TextInserted:
		TellText(Object, Change, "text-insert");
		break;
	case EKind::Caret:
		g_signal_emit_by_name(Object, "text-caret-moved", AtkWords::ToCharacters(Tree.Find(Change.Id)->Text.ToString(), Change.Index));
		break;
	case EKind::Selection:
		g_signal_emit_by_name(Object, "text-selection-changed");
		break;
	case EKind::Value:
		if (ATK_IS_VALUE(Object))
		{
			g_object_notify(G_OBJECT(Object), "accessible-value");
		}
		break;
	case EKind::Bounds:
	{
		const FSlateRect& Rect = Tree.Find(Change.Id)->Rect;
		AtkRectangle Bounds{ static_cast<gint>(Rect.Left), static_cast<gint>(Rect.Top), static_cast<gint>(Rect.Width()),
			static_cast<gint>(Rect.Height()) };
		g_signal_emit_by_name(Object, "bounds-changed", &Bounds);
		break;
	}
	case EKind::Added:
	case EKind::Removed:
	case EKind::Focus:
		break;
	}
}

// Whoever has not met the parent does not wait for its children.
void FAtkBridge::TellChild(const FAccessChange& Change, const char* Signal)
{
	AtkObject* const Parent = FindObject(Change.Parent);
	const bool bCame = Change.Kind == FAccessChange::EKind::Added;
	AtkObject* const Child = !Parent ? nullptr : (bCame ? GetObject(Change.Id) : FindObject(Change.Id));
	if (Child)
	{
		g_signal_emit_by_name(Parent, Signal, static_cast<guint>(Change.Index), Child, nullptr);
	}
	const FAccessNode* const Node = bCame ? Tree.Find(Change.Id) : nullptr;
	if (Child && Node && Node->Role == EHostRole::Notification)
	{
		// How readers know toasts.
		atk_object_notify_state_change(Child, ATK_STATE_SHOWING, TRUE);
	}
}

void FAtkBridge::TellStates(AtkObject* Object, const FAccessChange& Change)
{
	const FAccessNode& Node = *Tree.Find(Change.Id);
	if (Change.Id == FAccessTree::RootId)
	{
		const bool bActive = (Node.States & EHostAccessState::Focused) != 0;
		g_signal_emit_by_name(Object, bActive ? "activate" : "deactivate");
		atk_object_notify_state_change(Object, ATK_STATE_ACTIVE, bActive);
		return;
	}
	AtkWords::ForEachState(Change.Bits,
		[&](AtkStateType State, uint32 Bit)
		{
			// The focus has a change of its own.
			if (State != ATK_STATE_FOCUSED)
			{
				atk_object_notify_state_change(Object, State, (Node.States & Bit) != 0);
			}
		});
	if ((Change.Bits & EHostAccessState::Selected) != 0)
	{
		AtkObject* const Parent = FindObject(Node.Parent);
		if (Parent && ATK_IS_SELECTION(Parent))
		{
			g_signal_emit_by_name(Parent, "selection-changed");
		}
	}
}

void FAtkBridge::TellText(AtkObject* Object, const FAccessChange& Change, const char* Signal)
{
	const FString& Text = Tree.Find(Change.Id)->Text.ToString();
	// What stands before the change is the same in both texts.
	const int32 Place = AtkWords::ToCharacters(Text, Change.Index);
	const int32 Length = AtkWords::ToCharacters(Change.Text, Change.Text.Len());
	g_signal_emit_by_name(Object, Signal, Place, Length, AtkWords::ToUtf8(Change.Text).c_str());
}

void FAtkBridge::TellFocus(uint32 Id)
{
	AtkObject* const Before = ToldFocus != Id ? FindObject(ToldFocus) : nullptr;
	if (Before && ToldFocus != AtkObjects::ApplicationId)
	{
		atk_object_notify_state_change(Before, ATK_STATE_FOCUSED, FALSE);
	}
	ToldFocus = Id;
	if (AtkObject* const Object = GetObject(Id))
	{
		atk_object_notify_state_change(Object, ATK_STATE_FOCUSED, TRUE);
	}
}

void FAtkBridge::Announce(const FString& Text)
{
	g_signal_emit_by_name(GetObject(FAccessTree::RootId), "announcement", AtkWords::ToUtf8(Text).c_str());
	Pump->Serve();
}

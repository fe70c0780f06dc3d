#include "Host/AccessTree.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/AccessChanges.h"
#include "Host/AccessLook.h"
#include "Host/HostTextWidget.h"
#include "Host/WidgetFinder.h"

FAccessTree::FAccessTree()
{
	FAccessNode Window;
	Window.Id = RootId;
	Window.Role = EHostRole::Window;
	Nodes.Add(RootId, Window);
}

FAccessTree::~FAccessTree() = default;

TArray<FAccessChange> FAccessTree::Update()
{
	const TMap<uint32, FAccessNode> Before = MoveTemp(Nodes);
	Nodes.Reset();
	TakeNodes(FAccessLook::Take());
	TArray<FAccessChange> Changes = FAccessChanges::Compare(Before, Nodes, RootId);
	const uint32 Focused = FindFocused();
	if (Focused != FocusedId)
	{
		FocusedId = Focused;
		FAccessChange& Change = Changes.AddDefaulted_GetRef();
		Change.Kind = FAccessChange::EKind::Focus;
		Change.Id = Focused;
	}
	return Changes;
}

// A widget keeps its id while it is shown. An address alone proves nothing: another widget may have been made there since.
void FAccessTree::TakeNodes(TArray<FAccessNode>&& Look)
{
	TMap<const SWidget*, FKnown> Seen;
	TArray<uint32> Ids;
	for (const FAccessNode& Node : Look)
	{
		const TSharedPtr<SWidget> Widget = Node.Widget.Pin();
		if (!Widget)
		{
			Ids.Add(RootId);
			continue;
		}
		const FKnown* const Old = Known.Find(Widget.Get());
		const uint32 Id = Old && Old->Widget.HasSameObject(Widget.Get()) && Old->Widget.IsValid() ? Old->Id : NextId++;
		Ids.Add(Id);
		Seen.Add(Widget.Get(), { Id, Node.Widget });
	}
	Known = MoveTemp(Seen);
	for (int32 Index = 0; Index < Look.Num(); ++Index)
	{
		FAccessNode& Node = Look[Index];
		Node.Parent = Index == 0 ? 0 : Ids[static_cast<int32>(Node.Parent)];
		Node.LabelledBy = Node.LabelledBy == 0 ? 0 : Ids[static_cast<int32>(Node.LabelledBy)];
		Node.Id = Ids[Index];
		for (uint32& Child : Node.Children)
		{
			Child = Ids[static_cast<int32>(Child)];
		}
		Nodes.Add(Ids[Index], MoveTemp(Node));
	}
}

// What a panel works on counts before the panel itself; where the widget with the keyboard has no role, what it stands in does.
uint32 FAccessTree::FindFocused() const
{
	const TSharedPtr<SWidget> Widget = FSlateApplication::IsInitialized() ? FSlateApplication::Get().GetKeyboardFocusedWidget() : nullptr;
	uint32 Holder = RootId;
	for (TSharedPtr<SWidget> Step = Widget; Step && Holder == RootId; Step = Step->GetParentWidget())
	{
		const uint32 Id = FindWidget(*Step);
		Holder = Id != 0 ? Id : RootId;
	}
	if (!Widget)
	{
		return RootId;
	}
	for (uint32 Id = Holder; Id != 0;)
	{
		uint32 Inner = 0;
		TArray<uint32> Waiting = Nodes.Find(Id)->Children;
		while (Waiting.Num() > 0 && Inner == 0)
		{
			const FAccessNode& Node = *Nodes.Find(Waiting.Pop());
			Inner = (Node.States & EHostAccessState::Focused) != 0 ? Node.Id : 0;
			Waiting.Append(Node.Children);
		}
		if (Inner == 0)
		{
			return Id;
		}
		Id = Inner;
	}
	return Holder;
}

const FAccessNode* FAccessTree::Find(uint32 Id) const
{
	return Nodes.Find(Id);
}

const FAccessNode& FAccessTree::GetRoot() const
{
	return *Nodes.Find(RootId);
}

uint32 FAccessTree::FindWidget(const SWidget& Widget) const
{
	const FKnown* const Found = Known.Find(&Widget);
	return Found ? Found->Id : 0;
}

uint32 FAccessTree::FindAt(const FVector2D& Position) const
{
	uint32 Id = RootId;
	for (bool bGoesOn = true; bGoesOn;)
	{
		bGoesOn = false;
		const TArray<uint32>& Children = Nodes.Find(Id)->Children;
		// What is painted last lies on top.
		for (int32 Index = Children.Num() - 1; Index >= 0 && !bGoesOn; --Index)
		{
			if (Nodes.Find(Children[Index])->Rect.ContainsPoint(Position))
			{
				Id = Children[Index];
				bGoesOn = true;
			}
		}
	}
	return Id;
}

int32 FAccessTree::GetIndexInParent(const FAccessNode& Node) const
{
	const FAccessNode* const Parent = Nodes.Find(Node.Parent);
	return Parent ? Parent->Children.Find(Node.Id) : INDEX_NONE;
}

namespace
{
	/** The widget of a node that can be used; null when it has gone or is disabled. */
	TSharedPtr<SWidget> GetUsable(const FAccessNode* Node)
	{
		const TSharedPtr<SWidget> Widget = Node ? Node->Widget.Pin() : nullptr;
		const bool bUsable = Widget && (Node->States & EHostAccessState::Enabled) != 0 && FWidgetFinder::IsEnabledInTree(*Widget);
		return bUsable && FSlateApplication::IsInitialized() ? Widget : nullptr;
	}

	TSharedPtr<SHostTextWidget> GetTextBox(const FAccessNode* Node)
	{
		const bool bBox = Node && Node->Role == EHostRole::TextBox;
		return bBox ? StaticCastSharedPtr<SHostTextWidget>(GetUsable(Node)) : nullptr;
	}
}

bool FAccessTree::HasAction(uint32 Id) const
{
	const FAccessNode* const Node = Find(Id);
	return Node && Node->Action && GetUsable(Node);
}

bool FAccessTree::DoAction(uint32 Id) const
{
	const FAccessNode* const Node = Find(Id);
	const TSharedPtr<SWidget> Widget = Node && Node->Action ? GetUsable(Node) : nullptr;
	return Widget && FSlateApplication::Get().DoAccessAction(Widget.ToSharedRef());
}

bool FAccessTree::SetFocus(uint32 Id) const
{
	const FAccessNode* const Node = Find(Id);
	const bool bTakesKeyboard = Node && (Node->States & EHostAccessState::Focusable) != 0;
	const TSharedPtr<SWidget> Widget = bTakesKeyboard ? GetUsable(Node) : nullptr;
	if (!Widget)
	{
		return false;
	}
	FSlateApplication::Get().NoteActivity();
	// As by the Tab key, so that the ring shows where the keyboard is.
	return FSlateApplication::Get().SetKeyboardFocus(Widget, EFocusCause::Navigation);
}

bool FAccessTree::SetValue(uint32 Id, double Value) const
{
	const FAccessNode* const Node = Find(Id);
	const bool bCanBeSet = Node && Node->Range.IsSet() && Node->Range->bCanBeSet;
	const TSharedPtr<SWidget> Widget = bCanBeSet ? GetUsable(Node) : nullptr;
	if (!Widget || !Widget->SetAccessValue(Value))
	{
		return false;
	}
	FSlateApplication::Get().NoteActivity();
	return true;
}

bool FAccessTree::ReplaceText(uint32 Id, int32 Begin, int32 End, const FString& Text) const
{
	const TSharedPtr<SHostTextWidget> Box = GetTextBox(Find(Id));
	if (!Box || Box->IsReadOnly())
	{
		return false;
	}
	FSlateApplication::Get().NoteActivity();
	Box->SelectOffsets(Begin, End);
	if (!Text.IsEmpty())
	{
		Box->InsertTextAtCursor(Text);
	}
	else if (Box->AnyTextSelected())
	{
		// A paste of nothing leaves the selection alone.
		(void)Box->OnKeyDown(Box->GetCachedGeometry(), FKeyEvent(EKeys::Delete, FModifierKeysState()));
	}
	return true;
}

bool FAccessTree::Select(uint32 Id, int32 Begin, int32 End) const
{
	const TSharedPtr<SHostTextWidget> Box = GetTextBox(Find(Id));
	if (!Box)
	{
		return false;
	}
	FSlateApplication::Get().NoteActivity();
	Box->SelectOffsets(Begin, End);
	return true;
}

bool FAccessTree::CopyText(uint32 Id, int32 Begin, int32 End, bool bCut) const
{
	const TSharedPtr<SHostTextWidget> Box = GetTextBox(Find(Id));
	if (!Box || (bCut && Box->IsReadOnly()))
	{
		return false;
	}
	FSlateApplication::Get().NoteActivity();
	Box->SelectOffsets(Begin, End);
	bCut ? Box->CutSelectedText() : Box->CopySelectedText();
	return true;
}

bool FAccessTree::PasteText(uint32 Id, int32 Place) const
{
	const TSharedPtr<SHostTextWidget> Box = GetTextBox(Find(Id));
	if (!Box || Box->IsReadOnly())
	{
		return false;
	}
	FSlateApplication::Get().NoteActivity();
	Box->SelectOffsets(Place, Place);
	Box->PasteText();
	return true;
}

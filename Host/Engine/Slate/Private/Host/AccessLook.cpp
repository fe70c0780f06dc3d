#include "Host/AccessLook.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/AccessRules.h"
#include "Host/HostFocus.h"
#include "Host/HostTextWidget.h"
#include "Host/SFoldingRow.h"

// The tree is arranged on the way, as for a hit test: panels leave out what is scrolled away, and a list of any length costs what
// can be seen of it.

namespace
{
	using namespace EHostAccessState;

	/** Pixels that a label beside something has at its height. */
	constexpr float LeastOverlap = 3.0f;

	FString GetFirstLine(const FString& Text)
	{
		int32 End = INDEX_NONE;
		return Text.FindChar(TEXT('\n'), End) ? Text.Left(End) : Text;
	}

	bool IsText(EHostRole Role)
	{
		return Role == EHostRole::Label || Role == EHostRole::Paragraph;
	}

	/** What is inside is what was chosen or typed, so the name has to come from elsewhere. */
	bool HoldsValue(EHostRole Role)
	{
		return Role == EHostRole::TextBox || Role == EHostRole::ComboBox || Role == EHostRole::ProgressBar || Role == EHostRole::List;
	}

	/** Pieces of one text: words that wrap together, or the coloured pieces of a line of code in its column. */
	bool HoldsPieces(const SWidget& Widget)
	{
		static const FName WrapBox(TEXT("SWrapBox"));
		static const FName Row(TEXT("SHorizontalBox"));
		static const FName ScrollBox(TEXT("SScrollBox"));
		if (Widget.GetType() == WrapBox)
		{
			return true;
		}
		const TSharedPtr<SWidget> Column = Widget.GetType() == Row ? Widget.GetParentWidget() : nullptr;
		const TSharedPtr<SWidget> Around = Column ? Column->GetParentWidget() : nullptr;
		return Around && Around->GetType() == ScrollBox;
	}

	/** Also one that is scrolled away: what it names keeps its name then. */
	FString FindFirstText(SWidget& Widget)
	{
		FHostAccess Access;
		Widget.DescribeAccess(Access);
		if (Access.Role == EHostRole::Label && !Access.Name.IsEmpty())
		{
			return Access.Name.ToString();
		}
		FString First;
		FChildren* const Children = Widget.GetChildren();
		for (int32 Index = 0; First.IsEmpty() && Index < Children->Num(); ++Index)
		{
			const TSharedRef<SWidget> Child = Children->GetChildAt(Index);
			First = Child->GetVisibility().IsVisible() ? FindFirstText(Child.Get()) : FString();
		}
		return First;
	}
}

void FAccessLook::FCollector::Add(const FString& Piece)
{
	if (Piece.IsEmpty())
	{
		return;
	}
	Text += Text.IsEmpty() || bJoins ? Piece : TEXT(" ") + Piece;
}

TArray<FAccessNode> FAccessLook::Take()
{
	FAccessLook Look;
	FAccessNode& Window = Look.Nodes.AddDefaulted_GetRef();
	Window.Role = EHostRole::Window;
	Window.Name = FAccessRules::GetTitle();
	Window.States = Enabled | (FHostFocus::Get().bWindowActive ? Focused : None);
	if (FSlateApplication::IsInitialized())
	{
		const FIntPoint Size = FSlateApplication::Get().GetWindow().GetPixelSize();
		Window.Rect = FSlateRect(0.0f, 0.0f, static_cast<float>(Size.X), static_cast<float>(Size.Y));
		Look.VisitLayers();
		Look.NameRest();
	}
	return MoveTemp(Look.Nodes);
}

// What lies below a modal window is still seen, but nothing can be done there.
void FAccessLook::VisitLayers()
{
	const TArray<TSharedRef<SWidget>> Roots = FSlateApplication::Get().GetLayerRoots();
	int32 FirstReachable = 0;
	for (int32 Index = 0; Index < Roots.Num(); ++Index)
	{
		FHostAccess Access;
		Roots[Index]->DescribeAccess(Access);
		FirstReachable = (Access.States & Modal) != 0 ? Index : FirstReachable;
	}
	for (int32 Index = 0; Index < Roots.Num(); ++Index)
	{
		FContext Context;
		Context.Clip = Nodes[0].Rect;
		Context.bEnabled = Index >= FirstReachable;
		Visit(FArrangedWidget(Roots[Index], Roots[Index]->GetCachedGeometry()), Context);
		FirstAbove = Index == 0 ? Nodes.Num() : FirstAbove;
	}
}

void FAccessLook::Visit(const FArrangedWidget& Arranged, const FContext& Context)
{
	SWidget& Widget = Arranged.Widget.Get();
	if (!Widget.GetVisibility().IsVisible() || Widget.GetRenderOpacity() <= 0.0f)
	{
		return;
	}
	// 1. What it is: by itself, or by what the program knows of it.
	FHostAccess Access;
	Widget.DescribeAccess(Access);
	const FAccessRule* const Rule = FAccessRules::Find(Widget);
	if (Rule)
	{
		Access.Role = Rule->Role != EHostRole::None ? Rule->Role : Access.Role;
		Access.Name = Rule->Name ? FText::FromString(Rule->Name) : Access.Name;
	}
	if (Access.Role == EHostRole::Status && Access.Name.IsEmpty())
	{
		// A line that says nothing now.
		Access.Role = EHostRole::None;
	}
	FContext Inner = Context;
	Inner.bEnabled = Context.bEnabled && Widget.IsEnabled();
	Inner.bJoinsTexts = Context.bJoinsTexts || (Rule && Rule->bJoinsTexts);
	Inner.BoxName = Rule && Rule->BoxName ? Rule->BoxName : Context.BoxName;

	// 2. Texts go to whoever collects them.
	if (Access.Role == EHostRole::Label && Context.Texts)
	{
		Context.Texts->Add(Access.Name.ToString());
		return;
	}
	// 3. What cannot be seen has no node.
	const bool bSeen = !Arranged.Geometry.GetLayoutBoundingRect().IntersectionWith(Context.Clip).IsEmpty();
	if (Access.Role != EHostRole::None && bSeen)
	{
		AddNode(Arranged, Inner, Access, Rule);
	}
	else if (Inner.bJoinsTexts && !Context.Texts && bSeen && HoldsPieces(Widget))
	{
		AddParagraph(Arranged, Inner);
	}
	else
	{
		VisitChildren(Arranged, Inner);
	}
}

void FAccessLook::VisitChildren(const FArrangedWidget& Arranged, const FContext& Context)
{
	FContext Inner = Context;
	if (Arranged.Widget->GetClipping() != EWidgetClipping::Inherit)
	{
		Inner.Clip = Context.Clip.IntersectionWith(Arranged.Geometry.GetLayoutBoundingRect());
		if (Inner.Clip.IsEmpty())
		{
			return;
		}
	}
	FArrangedChildren Children(EVisibility::Visible, Inner.Clip);
	Arranged.Widget->ArrangeChildren(Arranged.Geometry, Children);
	for (int32 Index = 0; Index < Children.Num(); ++Index)
	{
		Visit(Children[Index], Inner);
	}
}

// 1. What it says. 2. What is seen from outside. 3. Its text. 4. What is in it, whose texts may be its name.
void FAccessLook::AddNode(const FArrangedWidget& Arranged, const FContext& Context, const FHostAccess& Access, const FAccessRule* Rule)
{
	SWidget& Widget = Arranged.Widget.Get();
	const int32 Index = Nodes.Num();
	{
		FAccessNode& Node = Nodes.AddDefaulted_GetRef();
		Node.Id = static_cast<uint32>(Index);
		Node.Parent = static_cast<uint32>(Context.Parent);
		Node.Widget = Arranged.Widget;
		Node.Role = Access.Role;
		Node.Name = Access.Name.ToString();
		Node.Rect = Arranged.Geometry.GetLayoutBoundingRect().IntersectionWith(Context.Clip);
		Node.Action = Access.Action;
		Node.Range = Access.Range;
		Node.States = Access.States | (Context.bEnabled ? Enabled : None);
		Node.States |= Widget.SupportsKeyboardFocus() ? Focusable : None;
		Node.States |= Widget.HasKeyboardFocus() ? Focused : None;
		Node.Description = Widget.GetToolTipText().ToString();
		if (IsText(Access.Role))
		{
			Node.bHasText = true;
			Node.Text = Access.Name;
		}
		else if (Access.Role == EHostRole::TextBox)
		{
			const SHostTextWidget& Box = static_cast<const SHostTextWidget&>(Widget);
			Node.bHasText = true;
			Node.Text = Box.GetText();
			Node.Caret = Box.GetCaretOffset();
			Box.GetSelectionOffsets(Node.SelectionBegin, Node.SelectionEnd);
			const bool bNamed = !Node.Name.IsEmpty() || !Context.BoxName || (Access.States & ReadOnly) == 0;
			Node.Name = bNamed ? Node.Name : FString(Context.BoxName);
		}
	}
	Nodes[Context.Parent].Children.Add(static_cast<uint32>(Index));

	FCollector Collector;
	FContext Inner = Context;
	Inner.Parent = Index;
	Inner.Texts = Access.bNamedByContents || HoldsValue(Access.Role) ? &Collector : nullptr;
	Inner.Texts = Access.Role == EHostRole::List ? nullptr : Inner.Texts;
	VisitChildren(Arranged, Inner);

	// Taken anew: the children have moved the array.
	FAccessNode& Node = Nodes[Index];
	if (Access.Role == EHostRole::ComboBox)
	{
		Node.bHasText = true;
		Node.Text = FText::FromString(Collector.Text);
	}
	else if (Node.Name.IsEmpty() && Rule && Rule->bNamedByFirstText)
	{
		Node.Name = FindFirstText(Widget);
	}
	else if (Node.Name.IsEmpty() && Access.bNamedByContents)
	{
		Node.Name = Collector.Text;
	}
	else if (Node.Name.IsEmpty() && Access.Role == EHostRole::Group)
	{
		Node.Name = FindFirstName(Index);
	}
	// A link in a sentence is a part of it, and so is what stands there to be copied.
	if (Context.Texts && Context.Texts->bJoins)
	{
		Context.Texts->Add(Access.Role == EHostRole::TextBox ? Node.Text.ToString() : Node.Name);
	}
}

// What begins with a heading has that for a name, also when the heading can be pressed. What shows no text by itself is called as the
// first thing in it is.
FString FAccessLook::FindFirstName(int32 Index) const
{
	FString First;
	for (int32 Child = Index + 1; Child < Nodes.Num(); ++Child)
	{
		const FAccessNode& Node = Nodes[Child];
		if (IsText(Node.Role) || Node.Role == EHostRole::Button)
		{
			return Node.Name;
		}
		First = First.IsEmpty() ? Node.Name : First;
	}
	return First;
}

void FAccessLook::AddParagraph(const FArrangedWidget& Arranged, const FContext& Context)
{
	const int32 Index = Nodes.Num();
	FAccessNode& New = Nodes.AddDefaulted_GetRef();
	New.Id = static_cast<uint32>(Index);
	New.Parent = static_cast<uint32>(Context.Parent);
	New.Widget = Arranged.Widget;
	New.Role = EHostRole::Paragraph;
	New.Rect = Arranged.Geometry.GetLayoutBoundingRect().IntersectionWith(Context.Clip);
	New.States = Context.bEnabled ? Enabled : None;
	FCollector Collector;
	Collector.bJoins = true;
	FContext Inner = Context;
	Inner.Parent = Index;
	Inner.Texts = &Collector;
	VisitChildren(Arranged, Inner);
	if (Collector.Text.IsEmpty() && Nodes.Num() == Index + 1)
	{
		Nodes.Pop();
		return;
	}
	Nodes[Index].Name = Collector.Text;
	Nodes[Index].bHasText = true;
	Nodes[Index].Text = FText::FromString(Collector.Text);
	Nodes[Context.Parent].Children.Add(static_cast<uint32>(Index));
}

// A row of settings has its label at the left of what is set. A button without words has its tooltip, and an empty box its hint.
void FAccessLook::NameRest()
{
	int32 OpenBox = 0;
	for (int32 Index = 1; Index < Nodes.Num(); ++Index)
	{
		FAccessNode& Node = Nodes[Index];
		OpenBox = Node.Role == EHostRole::ComboBox && (Node.States & Expanded) != 0 ? Index : OpenBox;
		if (Node.Name.IsEmpty() && Node.Role == EHostRole::List && OpenBox != 0 && Index >= FirstAbove)
		{
			// What lies beside it belongs to the page below it.
			Node.Name = Nodes[OpenBox].Name;
		}
		else if (const FString RowName = FindRowName(Node); !RowName.IsEmpty())
		{
			Node.Name = Node.Role == EHostRole::CheckBox && !Node.Name.IsEmpty() ? RowName + TEXT(", ") + Node.Name : RowName;
		}
		else if (Node.Name.IsEmpty() && HoldsValue(Node.Role))
		{
			NameByNeighbour(Node, true);
		}
		else if (Node.Role == EHostRole::CheckBox)
		{
			// "On" says nothing without the row that it stands in.
			const FString Own = Node.Name;
			NameByNeighbour(Node, false);
			Node.Name += Own.IsEmpty() || Own.Equals(Node.Name) ? FString() : TEXT(", ") + Own;
		}
		const TSharedPtr<SWidget> Widget = Node.Widget.Pin();
		if (Node.Name.IsEmpty() && Node.Role == EHostRole::TextBox)
		{
			Node.Name = StaticCastSharedPtr<SHostTextWidget>(Widget)->GetHintText().ToString();
		}
		Node.Name = Node.Name.IsEmpty() ? GetFirstLine(Node.Description) : Node.Name;
		if (Node.Name.IsEmpty() && Node.Role == EHostRole::List)
		{
			Node.Name = TEXT("List");
		}
		Node.Description = Node.Description.Equals(Node.Name) ? FString() : Node.Description;
	}
}

// Below the name of a row stands what explains it, so that the nearest text does not tell.
FString FAccessLook::FindRowName(const FAccessNode& Node) const
{
	static const FName RowType(TEXT("SFoldingRow"));
	const bool bWantsName = (Node.Name.IsEmpty() && HoldsValue(Node.Role)) || Node.Role == EHostRole::CheckBox;
	for (TSharedPtr<SWidget> Around = bWantsName ? Node.Widget.Pin() : nullptr; Around; Around = Around->GetParentWidget())
	{
		if (Around->GetType() == RowType)
		{
			SFoldingRow& Row = static_cast<SFoldingRow&>(*Around);
			return Row.IsFolded() && Row.IsNaming() ? FindFirstText(Row.GetChildren()->GetChildRefAt(0)) : FString();
		}
	}
	return FString();
}

void FAccessLook::NameByNeighbour(FAccessNode& Node, bool bAlsoAbove)
{
	const FAccessNode* Beside = nullptr;
	const FAccessNode* Above = nullptr;
	for (const uint32 Sibling : Nodes[static_cast<int32>(Node.Parent)].Children)
	{
		const FAccessNode& Other = Nodes[static_cast<int32>(Sibling)];
		if (Other.Role != EHostRole::Label)
		{
			continue;
		}
		const float Overlap = FMath::Min(Other.Rect.Bottom, Node.Rect.Bottom) - FMath::Max(Other.Rect.Top, Node.Rect.Top);
		const bool bBeside = Other.Rect.Right <= Node.Rect.Left + 1.0f && Overlap >= LeastOverlap;
		// A heading of its own, and not a text that happens to end above.
		const float Gap = Node.Rect.Top - Other.Rect.Bottom;
		const bool bAbove =
			Gap >= -1.0f && Gap <= Other.Rect.Height() && FMath::Abs(Other.Rect.Left - Node.Rect.Left) <= Other.Rect.Height();
		Beside = bBeside && (!Beside || Other.Rect.Right > Beside->Rect.Right) ? &Other : Beside;
		Above = bAbove && (!Above || Other.Rect.Bottom > Above->Rect.Bottom) ? &Other : Above;
	}
	if (const FAccessNode* const Label = Beside || !bAlsoAbove ? Beside : Above)
	{
		Node.Name = Label->Name;
		Node.LabelledBy = Label->Id;
	}
}

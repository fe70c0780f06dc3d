#pragma once

#include "Containers/Map.h"
#include "Host/HostAccess.h"
#include "Layout/SlateRect.h"
#include "Widgets/SWidget.h"

/** Something in the window that has a role. */
struct FAccessNode
{
	/** Stays the same as long as its widget is shown. */
	uint32 Id = 0;
	/** Zero for the window. */
	uint32 Parent = 0;
	/** In the order in which they are painted. */
	TArray<uint32> Children;
	TWeakPtr<SWidget> Widget;
	EHostRole Role = EHostRole::None;
	/** EHostAccessState. */
	uint32 States = 0;
	FString Name;
	/** What the tooltip says, unless it is the name. */
	FString Description;
	/** Device pixels, cut to what can be seen. */
	FSlateRect Rect;
	const char* Action = nullptr;
	TOptional<FHostAccessRange> Range;
	/** The label beside it, if that names it. */
	uint32 LabelledBy = 0;

	// Of what shows a text. Places are UTF-16 units.
	bool bHasText = false;
	FText Text;
	int32 Caret = 0;
	int32 SelectionBegin = 0;
	int32 SelectionEnd = 0;
};

/** What became different between two looks. */
struct FAccessChange
{
	enum class EKind : uint8
	{
		/** With all below it. Index counts among the children of its parent. */
		Added,
		/** With all below it; Parent and Index are where it was. */
		Removed,
		Name,
		Description,
		/** Bits are those that differ. */
		States,
		/** Text stood at Index, or stands there now. */
		TextRemoved,
		TextInserted,
		Caret,
		Selection,
		Value,
		Bounds,
		/** The keyboard went here. */
		Focus,
	};
	EKind Kind = EKind::Added;
	uint32 Id = 0;
	uint32 Parent = 0;
	int32 Index = 0;
	uint32 Bits = 0;
	FString Text;
};

/**
 * The window for those who do not see it: what is on screen, with its role, name and state, as a tree. Widgets say what they are
 * (SWidget::DescribeAccess), the program adds what plug-ins' widgets cannot say (FAccessRules), and what only holds others is left out.
 *
 * A look is a copy: it stays as it is until the next one, whatever becomes of the widgets. It takes in what can be seen and nothing else,
 * so that it costs the same in a conversation of any length. Nobody has one unless an assistive technology asks. Game thread.
 */
class SLATE_API FAccessTree
{
public:
	static constexpr uint32 RootId = 1;

	FAccessTree();
	~FAccessTree();

	/** Looks anew. @return What differs from the last look, in an order in which it can be told: first what went, then what came. */
	TArray<FAccessChange> Update();

	/** Null for one that is gone. */
	const FAccessNode* Find(uint32 Id) const;
	const FAccessNode& GetRoot() const;
	/** The root when nothing has the keyboard. */
	uint32 GetFocused() const { return FocusedId; }
	/** The topmost node at a place in device pixels; the root outside of all others. */
	uint32 FindAt(const FVector2D& Position) const;
	/** Zero when the widget is not shown or has no role. */
	uint32 FindWidget(const SWidget& Widget) const;
	/** Of the node within its parent; INDEX_NONE for the root. */
	int32 GetIndexInParent(const FAccessNode& Node) const;
	/** One line a node: role, name, states; children indented. For tests and scripts. */
	FString Describe() const;

	// What can be done; all go the way that input goes. False when it cannot be done (any more).
	/** May run a loop of its own, as that of a dialog, before it returns. */
	bool DoAction(uint32 Id) const;
	/** Something to do is there, and its widget can be used now. */
	bool HasAction(uint32 Id) const;
	bool SetFocus(uint32 Id) const;
	bool SetValue(uint32 Id, double Value) const;
	/** Replaces a part of a text that can be edited; one step of its undo. */
	bool ReplaceText(uint32 Id, int32 Begin, int32 End, const FString& Text) const;
	bool Select(uint32 Id, int32 Begin, int32 End) const;
	/** Puts a part of a text on the clipboard; cutting does nothing where the text cannot be edited. */
	bool CopyText(uint32 Id, int32 Begin, int32 End, bool bCut) const;
	bool PasteText(uint32 Id, int32 Place) const;

	static const TCHAR* GetRoleWord(EHostRole Role);
	/** "focused, checked"; what can be done with it is left out, what cannot is "disabled". */
	static FString GetStateWords(uint32 States);

private:
	struct FKnown
	{
		uint32 Id = 0;
		TWeakPtr<SWidget> Widget;
	};

	/** Gives ids to the nodes of a look, which come with indices for ids. */
	void TakeNodes(TArray<FAccessNode>&& Look);
	uint32 FindFocused() const;

	TMap<uint32, FAccessNode> Nodes;
	TMap<const SWidget*, FKnown> Known;
	uint32 NextId = RootId + 1;
	uint32 FocusedId = RootId;
};

#include "Widgets/SMessageList.h"

#include "Widgets/Layout/SScrollBox.h"

namespace
{

	/** So many rows before the end are made at once: more than any window shows. Those before them have time. */
	constexpr int32 ReadyRows = 200;

	/** A copy that leaves alone what is the same at the front: that of a long conversation would touch every message of it. */
	void CopyMessages(const TArray<TSharedPtr<FChatMessage>>& From, TArray<TSharedPtr<FChatMessage>>& To)
	{
		int32 Same = 0;
		while (Same < FMath::Min(From.Num(), To.Num()) && From[Same] == To[Same])
		{
			++Same;
		}
		To.SetNum(Same);
		for (int32 Index = Same; Index < From.Num(); ++Index)
		{
			To.Add(From[Index]);
		}
	}

} // namespace

const float SMessageList::ScrollBottomThreshold = 50.0f;

void SMessageList::Construct(const FArguments& InArgs)
{
	Messages = InArgs._Messages;
	bAutoScroll = InArgs._AutoScroll;
	CanUndoDelegate = InArgs._CanUndo;
	OnUndoToMessageDelegate = InArgs._OnUndoToMessage;
	StayAwake.SetUp(*this, [this] { return bPendingScrollToBottom; });

	// clang-format off
	ChildSlot
	[
		SAssignNew(ScrollBox, SScrollBox)
	];
	// clang-format on

	RebuildMessageList();
	if (bAutoScroll && Messages.Num() > 0)
	{
		ScrollToBottom();
	}
}

void SMessageList::SetMessages(const TArray<TSharedPtr<FChatMessage>>& NewMessages)
{
	// 1. Where the reader was, before the rows change.
	const bool bWasAtBottom = IsScrolledToBottom();
	const int32 OldCount = Messages.Num();
	CopyMessages(NewMessages, Messages);
	const int32 NewCount = Messages.Num();

	// 2. The least work that gives the rows: nearly always a message was added, sometimes the last one taken away.
	const bool bRowsFitOldMessages = LastMessageCount == OldCount;
	if (NewCount > LastMessageCount && bRowsFitOldMessages)
	{
		AppendNewMessages(LastMessageCount);
	}
	else if (NewCount == LastMessageCount - 1 && bRowsFitOldMessages)
	{
		RemoveLastMessage();
	}
	// What else there is, a load or an undo, makes all rows anew. As many as before means that only their flags have changed.
	else if (NewCount != LastMessageCount)
	{
		RebuildMessageList();
	}

	// 3. Follow the end, unless the reader has gone up to read.
	if (bAutoScroll && (!bUserScrolledUp || bWasAtBottom))
	{
		RequestScrollToEnd();
	}
	StayAwake.Start();
}

void SMessageList::RebuildMessageList()
{
	if (ScrollBox.IsValid())
	{
		ScrollBox->ClearChildren();
		AddRowsFrom(0);
	}
}

void SMessageList::AppendNewMessages(int32 StartIndex)
{
	if (ScrollBox.IsValid())
	{
		AddRowsFrom(StartIndex);
	}
}

void SMessageList::AddRowsFrom(int32 StartIndex)
{
	for (int32 Index = StartIndex; Index < Messages.Num(); ++Index)
	{
		const TSharedPtr<FChatMessage>& Message = Messages[Index];
		// Leaves no row, and the count below still counts it: rows and messages are compared by number.
		if (!Message.IsValid())
		{
			continue;
		}
		const bool bIsLatest = Index == Messages.Num() - 1;
		// clang-format off
		ScrollBox->AddSlot()
		.Padding(0.0f, 4.0f)
		[
			SNew(SMessageRow)
			.Message(Message)
			.IsLatestMessage(bIsLatest)
			.BuildWhenShown(Messages.Num() - Index > ReadyRows)
			.CanUndo(CanUndoDelegate)
			.OnUndo(this, &SMessageList::RequestUndo, Message)
		];
		// clang-format on
	}
	LastMessageCount = Messages.Num();
}

void SMessageList::RemoveLastMessage()
{
	if (!ScrollBox.IsValid())
	{
		return;
	}
	if (ScrollBox->NumSlots() > 0)
	{
		const TSharedRef<SWidget> LastRow = ScrollBox->GetSlot(ScrollBox->NumSlots() - 1).GetWidget();
		ScrollBox->RemoveSlot(LastRow);
	}
	LastMessageCount = Messages.Num();
}

void SMessageList::ScrollToBottom()
{
	bUserScrolledUp = false;
	RequestScrollToEnd();
}

void SMessageList::RequestScrollToEnd()
{
	// Two frames later: the new rows are measured with the first, and only then the end is known.
	bPendingScrollToBottom = true;
	ScrollDelayFrames = 2;
	StayAwake.Start();
}

void SMessageList::ScrollToTop()
{
	if (ScrollBox.IsValid())
	{
		ScrollBox->ScrollToStart();
	}
}

bool SMessageList::IsScrolledToBottom() const
{
	return !ScrollBox.IsValid() || !bUserScrolledUp;
}

void SMessageList::SetCanUndo(bool bInCanUndo)
{
	bCanUndo = bInCanUndo;
}

void SMessageList::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	if (bPendingScrollToBottom && ScrollBox.IsValid())
	{
		if (ScrollDelayFrames < 1)
		{
			ScrollBox->ScrollToEnd();
			bPendingScrollToBottom = false;
		}
		else
		{
			--ScrollDelayFrames;
		}
	}
	StayAwake.Update();
}

void SMessageList::RequestUndo(TSharedPtr<FChatMessage> Message)
{
	OnUndoToMessageDelegate.ExecuteIfBound(Message);
}

void SMessageList::OnListScrolled(float Offset)
{
	// Moving back down does not count as having returned: only ScrollToBottom does.
	if (Offset < LastScrollOffset - 1.0)
	{
		bUserScrolledUp = true;
	}
	LastScrollOffset = Offset;
}

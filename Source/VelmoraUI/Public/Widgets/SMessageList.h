#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "Templates/SharedPointer.h"
#include "ViewModels/ChatMessage.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"
#include "Widgets/SMessageRow.h"
#include "Widgets/StayAwake.h"

class SScrollBox;

/** The user asks to go back to before a message. */
DECLARE_DELEGATE_OneParam(FOnUndoToMessage, TSharedPtr<FChatMessage>);

/**
 * The messages of the current conversation as a column of rows that follows its end. The owner hands over the whole
 * array at each change; rows are added, taken away or made anew by comparing counts alone.
 */
class VELMORAUI_API SMessageList : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SMessageList)
		: _AutoScroll(true)
	{
	}
	SLATE_ARGUMENT(TArray<TSharedPtr<FChatMessage>>, Messages)
	/** Follow the end at each change. */
	SLATE_ARGUMENT(bool, AutoScroll)
	SLATE_EVENT(FOnUndoToMessage, OnUndoToMessage)
	/** Asked by the rows whether an undo may run now. */
	SLATE_EVENT(FCanUndoMessage, CanUndo)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** As many messages as before leave the rows as they stand, whatever the messages are. Null entries get no row. */
	void SetMessages(const TArray<TSharedPtr<FChatMessage>>& NewMessages);

	/** Reaches the end on the third tick from now, when new rows have their size. */
	void ScrollToBottom();
	void ScrollToTop();

	/** Whether the user has stayed at the end, by what OnListScrolled was given; the offset is not measured. */
	bool IsScrolledToBottom() const;

	/** Kept for callers that push; rows ask the CanUndo delegate. */
	void SetCanUndo(bool bInCanUndo);

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	void RebuildMessageList();
	void AppendNewMessages(int32 StartIndex);
	void RemoveLastMessage();
	void AddRowsFrom(int32 StartIndex);
	void RequestScrollToEnd();
	void RequestUndo(TSharedPtr<FChatMessage> Message);
	/** Not bound to the scroll box: the list follows its end wherever the user has scrolled to. */
	void OnListScrolled(float Offset);

	/** Slate units. */
	static const float ScrollBottomThreshold;

	TSharedPtr<SScrollBox> ScrollBox;
	TArray<TSharedPtr<FChatMessage>> Messages;
	/** Length of Messages when the rows were last made to fit it. */
	int32 LastMessageCount = 0;
	bool bAutoScroll = true;
	bool bUserScrolledUp = false;
	double LastScrollOffset = 0.0;
	bool bPendingScrollToBottom = false;
	int32 ScrollDelayFrames = 0;
	FCanUndoMessage CanUndoDelegate;
	bool bCanUndo = false;
	FOnUndoToMessage OnUndoToMessageDelegate;
	FStayAwake StayAwake;
};

#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "Input/Reply.h"
#include "Layout/Visibility.h"
#include "Misc/Attribute.h"
#include "Templates/SharedPointer.h"
#include "ViewModels/ChatMessage.h"
#include "Widgets/DeclarativeSyntaxSupport.h"
#include "Widgets/SCompoundWidget.h"

class SVerticalBox;
struct FSlateBrush;

/**
 * The tool runs of one step: a header with a count that opens and closes a list with one row per run. Whether it is
 * open is the owner's knowledge. Rows are made once; of a row, only the mark of its status follows the message.
 */
class VELMORAUI_API SToolExecutionContainer : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SToolExecutionContainer)
		: _IsExpanded(true)
	{
	}
	SLATE_ARGUMENT(TArray<TSharedPtr<FChatMessage>>, ToolExecutions)
	/** Polled every frame. */
	SLATE_ATTRIBUTE(bool, IsExpanded)
	/** The header was clicked. The list opens or closes only if IsExpanded changes. */
	SLATE_EVENT(FSimpleDelegate, OnToggleExpanded)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);

	/** Adds rows for the messages after those that are shown. Rows are never taken away or made anew. */
	void UpdateToolList(const TArray<TSharedPtr<FChatMessage>>& NewToolExecutions);

private:
	TSharedRef<SWidget> BuildHeader();
	TSharedRef<SWidget> BuildToolRow(TSharedPtr<FChatMessage> Message);
	void AddToolRow(const TSharedPtr<FChatMessage>& Message);

	EVisibility GetBodyVisibility() const;
	const FSlateBrush* GetChevronBrush() const;
	FText GetToolExecutionsText() const;
	FReply OnHeaderClicked();

	TArray<TSharedPtr<FChatMessage>> ToolMessages;
	TAttribute<bool> IsExpanded;
	FSimpleDelegate OnToggleExpanded;
	TSharedPtr<SVerticalBox> ToolListBox;
};

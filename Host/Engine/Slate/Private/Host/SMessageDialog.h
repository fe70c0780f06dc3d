#pragma once

#include "Host/HostServices.h"
#include "Widgets/SCompoundWidget.h"

class SButton;

DECLARE_DELEGATE_OneParam(FOnMessageDialogAnswer, EAppReturnType::Type)

	/** What a message dialog's window holds: a mark, the message and the buttons. */
	class SMessageDialog : public SCompoundWidget
{
public:
	SLATE_BEGIN_ARGS(SMessageDialog) {}
	SLATE_EVENT(FOnMessageDialogAnswer, OnAnswer)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const FHostMessageDialog& Dialog);

	/** From left to right. */
	static TArray<EAppReturnType::Type> GetButtons(EAppMsgType::Type Type);
	/** What closing without a choice means. */
	static EAppReturnType::Type GetEscapeAnswer(EAppMsgType::Type Type);
	static FText GetLabel(EAppReturnType::Type Answer);

	virtual bool SupportsKeyboardFocus() const override { return true; }
	virtual bool IsTabStop() const override { return false; }
	virtual FReply OnFocusReceived(const FGeometry& MyGeometry, const FFocusEvent& InFocusEvent) override;
	virtual FReply OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent) override;
	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override;

private:
	/** The mark of its category, then the message. */
	TSharedRef<SWidget> MakeMessageRow(const FHostMessageDialog& Dialog) const;
	/** The buttons of the dialog's type; the one of the default answer is the primary one. */
	TSharedRef<SWidget> MakeButtonRow(const FHostMessageDialog& Dialog);
	FReply OnButtonClicked(EAppReturnType::Type Answer);

	FOnMessageDialogAnswer AnswerHandler;
	TArray<TSharedPtr<SButton>> Buttons;
	TSharedPtr<SButton> Primary;
	bool bShown = false;
};

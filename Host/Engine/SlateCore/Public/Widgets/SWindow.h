#pragma once

#include "Widgets/SCompoundWidget.h"

/** How a window's size is found. */
enum class ESizingRule : uint8
{
	FixedSize,
	Autosized,
	UserSized,
};

/**
 * A window inside the program's own: a layer with a title bar, shown modally by FSlateApplication::AddModalWindow
 * or freely by AddWindow. The application draws the frame.
 */
class SLATECORE_API SWindow : public SCompoundWidget
{
public:
	DECLARE_DELEGATE_OneParam(FOnWindowClosed, const TSharedRef<SWindow>&)

		SLATE_BEGIN_ARGS(SWindow)
	{
	}
	SLATE_ATTRIBUTE(FText, Title)
	SLATE_ARGUMENT_DEFAULT(FVector2D, ClientSize) = FVector2D(0, 0);
	SLATE_ARGUMENT_DEFAULT(ESizingRule, SizingRule) = ESizingRule::UserSized;
	SLATE_ARGUMENT_DEFAULT(bool, SupportsMinimize) = true;
	SLATE_ARGUMENT_DEFAULT(bool, SupportsMaximize) = true;
	SLATE_DEFAULT_SLOT(FArguments, Content)
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs);
	void SetContent(const TSharedRef<SWidget>& InContent);
	const TSharedRef<SWidget>& GetContent() const { return Content; }
	FText GetTitle() const { return Title.Get(); }
	const FVector2D& GetClientSize() const { return ClientSize; }
	/** Closes the window at the end of the current event; AddModalWindow returns then. */
	void RequestDestroyWindow();
	bool IsDestroyRequested() const { return bDestroyRequested; }
	/** The application calls this once the window is gone. */
	void NotifyClosed();

private:
	TAttribute<FText> Title;
	FVector2D ClientSize = FVector2D(0, 0);
	ESizingRule SizingRule = ESizingRule::UserSized;
	bool bDestroyRequested = false;
	TSharedRef<SWidget> Content = SNullWidget::NullWidget;
	FOnWindowClosed OnWindowClosed;
};

#include "Widgets/SWindow.h"

void SWindow::Construct(const FArguments& InArgs)
{
	Title = InArgs._Title;
	ClientSize = InArgs._ClientSize;
	SizingRule = InArgs._SizingRule;
	SetContent(InArgs._Content.Widget);
}

void SWindow::SetContent(const TSharedRef<SWidget>& InContent)
{
	Content = InContent;
	ChildSlot[InContent];
}

void SWindow::RequestDestroyWindow()
{
	bDestroyRequested = true;
}

void SWindow::NotifyClosed()
{
	const FOnWindowClosed Closed = OnWindowClosed;
	Closed.ExecuteIfBound(SharedThis(this));
}

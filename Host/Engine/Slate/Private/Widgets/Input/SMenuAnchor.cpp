#include "Widgets/Input/SMenuAnchor.h"

#include "Framework/Application/SlateApplication.h"

SMenuAnchor::~SMenuAnchor() = default;

void SMenuAnchor::Construct(const FArguments& InArgs)
{
	GetMenuContentHandler = InArgs._OnGetMenuContent;
	OpenChangedHandler = InArgs._OnMenuOpenChanged;
	MenuContent = InArgs._MenuContent;
	if (InArgs._Placement.IsSet())
	{
		Placement = InArgs._Placement;
	}
	ChildSlot[InArgs._Content.Widget];
}

bool SMenuAnchor::IsOpen() const
{
	return Menu && Menu->IsOpen();
}

void SMenuAnchor::SetIsOpen(bool bInIsOpen, bool bFocusMenu, int32 FocusUserIndex)
{
	if (bInIsOpen == IsOpen())
	{
		return;
	}
	if (!bInIsOpen)
	{
		const TSharedPtr<IMenu> Closing = Menu;
		Closing->Dismiss();
		return;
	}
	if (const TSharedPtr<SWidget> Content = MakeMenuContent())
	{
		const EHostOwnerPress OwnerPress = bFocusMenu || OpensByPress() ? EHostOwnerPress::OnlyCloses : EHostOwnerPress::Reaches;
		Menu = FSlateApplication::Get().PushMenu(
			AsShared(), Content.ToSharedRef(), GetCachedGeometry().GetLayoutBoundingRect(), Placement.Get(), bFocusMenu, OwnerPress);
		Menu->GetOnMenuDismissed().AddSP(this, &SMenuAnchor::OnMenuDismissed);
		OnOpenChanged(true);
	}
}

TSharedPtr<SWidget> SMenuAnchor::MakeMenuContent()
{
	const FOnGetContent Handler = GetMenuContentHandler;
	return Handler.IsBound() ? TSharedPtr<SWidget>(Handler.Execute()) : MenuContent;
}

void SMenuAnchor::OnOpenChanged(bool bIsOpen)
{
	const FOnIsOpenChanged Handler = OpenChangedHandler;
	Handler.ExecuteIfBound(bIsOpen);
}

void SMenuAnchor::OnMenuDismissed(TSharedRef<IMenu> InMenu)
{
	// Another one may have been opened meanwhile.
	if (Menu == InMenu)
	{
		Menu.Reset();
		OnOpenChanged(false);
	}
}

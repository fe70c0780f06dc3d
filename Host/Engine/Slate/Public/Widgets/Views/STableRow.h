#pragma once

#include "Host/HostTableRow.h"

/** A row of a list with content of the caller's. */
template <typename ItemType>
class STableRow : public SHostTableRow
{
public:
	SLATE_BEGIN_ARGS(STableRow<ItemType>) {}
	/** The widget keeps the pointer. Without one: the list's. */
	SLATE_STYLE_ARGUMENT(FTableRowStyle, Style)
	SLATE_DEFAULT_SLOT(typename STableRow<ItemType>::FArguments, Content)
	SLATE_ATTRIBUTE(FMargin, Padding)
	SLATE_ARGUMENT_DEFAULT(bool, ShowSelection) = true;
	SLATE_END_ARGS()

	void Construct(const FArguments& InArgs, const TSharedRef<STableViewBase>& InOwnerTableView)
	{
		ConstructRow(InArgs._Style, InArgs._Padding, InArgs._ShowSelection, InArgs._Content.Widget, InOwnerTableView);
	}
};

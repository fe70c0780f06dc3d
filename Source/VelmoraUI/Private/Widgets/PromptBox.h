#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "Framework/Text/TextLayout.h"
#include "Layout/Geometry.h"
#include "Templates/UnrealTemplate.h"

/** Where the cursor of a prompt stands now. */
DECLARE_DELEGATE_OneParam(FOnPromptCursorMoved, const FTextLocation&);

/**
 * A multi-line text box that reports where its cursor goes. Not every version of the box has an argument for that: where it lacks one,
 * the cursor is looked at in each tick, so that a move is reported with the frame that shows it.
 */
template <typename BoxType>
class TPromptBox : public BoxType
{
public:
	using FArguments = typename BoxType::FArguments;

	/** A template of its own, since only there an argument that is missing is an answer and not an error. */
	template <typename ArgumentsType>
	static constexpr bool HasCursorArgument()
	{
		return requires(ArgumentsType & Arguments)
		{
			Arguments.OnCursorMoved_Lambda([](const FTextLocation&) {});
		};
	}
	static constexpr bool bReportsCursor = HasCursorArgument<FArguments>();

	void Construct(const FArguments& InArgs, const FOnPromptCursorMoved& InOnCursorMoved)
	{
		OnPromptCursorMoved = InOnCursorMoved;
		FArguments Arguments(InArgs);
		ReportCursor(Arguments);
		BoxType::Construct(Arguments);
		LastLocation = this->GetCursorLocation();
	}

	virtual void Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime) override
	{
		BoxType::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
		if constexpr (!bReportsCursor)
		{
			const FTextLocation Location = this->GetCursorLocation();
			if (!(Location == LastLocation))
			{
				LastLocation = Location;
				OnPromptCursorMoved.ExecuteIfBound(Location);
			}
		}
	}

private:
	template <typename ArgumentsType>
	void ReportCursor(ArgumentsType& Arguments)
	{
		if constexpr (bReportsCursor)
		{
			Arguments.OnCursorMoved_Lambda(
				[Moved = OnPromptCursorMoved](const FTextLocation& Location) { Moved.ExecuteIfBound(Location); });
		}
	}

	FOnPromptCursorMoved OnPromptCursorMoved;
	FTextLocation LastLocation;
};

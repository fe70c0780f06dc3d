#pragma once

#include "CoreMinimal.h"
#include "FileSearch/AtTokenState.h"
#include "Framework/Text/TextLayout.h"
#include "Templates/Function.h"

namespace Velmora::UI
{

	/**
	 * Speaks the prompt box's lines and columns, and remembers what the dropdown was last given. Touches no widget: the owner
	 * acts on the records that come back. Game thread.
	 */
	class VELMORAUI_API FAtFileReferenceController
	{
	public:
		using FLocationToIndex = TFunction<int32(const FString&, const FTextLocation&)>;
		using FIndexToLocation = TFunction<FTextLocation(const FString&, int32)>;

		/** What a change of text or cursor means for the dropdown. All clear while updates are suppressed. */
		struct FDropdownDelta
		{
			/** A token is active. Set also when it was active before. */
			bool bShouldOpen = false;
			/** No token is active. Set also when none was before. */
			bool bShouldClose = false;
			/** Query is new and goes to the dropdown. */
			bool bQueryChanged = false;
			/** Empty unless it changed. */
			FString Query;
			/** Of the active '@', otherwise -1. */
			int32 AtIndex = -1;
		};

		/** What the box holds after a pick. */
		struct FReplacement
		{
			/** False when there was nothing to replace. */
			bool bApplied = false;
			/** The whole text. */
			FString NewText;
			FTextLocation NewCursor;
		};

		/** Suppresses updates while it lives. A flag, not a count: of two, the first to end ends both. Must not outlive its controller. */
		class FScopedSuppression
		{
		public:
			explicit FScopedSuppression(FAtFileReferenceController& InController)
				: Controller(&InController)
			{
				Controller->bSuppressed = true;
			}

			~FScopedSuppression() { Controller->bSuppressed = false; }

			FScopedSuppression(const FScopedSuppression&) = delete;
			FScopedSuppression& operator=(const FScopedSuppression&) = delete;

		private:
			FAtFileReferenceController* Controller;
		};

		/**
		 * Either function may be unbound. Without the first the cursor counts as standing at the end of the text; without
		 * the second a new cursor is given as a line index.
		 */
		FAtFileReferenceController(FLocationToIndex InLocationToIndex, FIndexToLocation InIndexToLocation);

		/** To be called after every change of text or cursor. */
		FDropdownDelta Update(const FString& Text, const FTextLocation& Cursor);

		/**
		 * The text with the token at the cursor, '@' included, replaced by InsertText and exactly one blank. Applies also
		 * when the cursor stands after the token.
		 */
		FReplacement BuildReplacement(const FString& Text, const FTextLocation& Cursor, const FString& InsertText) const;

		/** While the result lives, Update and BuildReplacement do nothing. */
		[[nodiscard]] FScopedSuppression SuppressUpdates();

		/** Tells the controller what the dropdown was given by others, so that it is not reported as new. */
		void SetLastQuery(const FString& Query);

		/** Forgets token and query. Suppression stays as it is. */
		void Reset();

	private:
		FAtTokenState ComputeState(const FString& Text, const FTextLocation& Cursor) const;

		FLocationToIndex LocationToIndex;
		FIndexToLocation IndexToLocation;
		bool bSuppressed = false;
		bool bTokenActive = false;
		FString LastQuery;
	};

} // namespace Velmora::UI

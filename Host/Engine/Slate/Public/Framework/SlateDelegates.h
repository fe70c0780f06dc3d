#pragma once

#include "CoreMinimal.h"
#include "Input/Events.h"
#include "Input/Reply.h"
#include "Types/SlateEnums.h"
// Brings FPointerEventHandler.
#include "Widgets/Images/SImage.h"

/** Signatures that many widgets share. */
DECLARE_DELEGATE_RetVal(FReply, FOnClicked) DECLARE_DELEGATE_RetVal(TSharedRef<SWidget>, FOnGetContent)
	DECLARE_DELEGATE_RetVal_TwoParams(FReply, FOnKeyDown, const FGeometry&, const FKeyEvent&)
		DECLARE_DELEGATE_RetVal_TwoParams(FReply, FOnKeyChar, const FGeometry&, const FCharacterEvent&)
			DECLARE_DELEGATE_OneParam(FOnBooleanValueChanged, bool) DECLARE_DELEGATE_OneParam(FOnCheckStateChanged, ECheckBoxState)
				DECLARE_DELEGATE_OneParam(FOnTextChanged, const FText&)
					DECLARE_DELEGATE_TwoParams(FOnTextCommitted, const FText&, ETextCommit::Type)

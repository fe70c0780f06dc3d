#include "Host/SMessageDialog.h"

#include "Framework/Application/SlateApplication.h"
#include "Host/HostFocus.h"
#include "Host/HostWidgetPaint.h"
#include "Styling/AppStyle.h"
#include "Widgets/Images/SImage.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

// A question with its buttons. It has one answer at all times: Escape, closing and a session that ends give the one that
// changes nothing (GetEscapeAnswer), so that whoever asks is never left waiting.

namespace
{
	constexpr double DialogMarkSize = 32.0;
	constexpr float DialogMarkGap = 16.0f;
	constexpr float DialogLineHeight = 18.0f;
	constexpr float DialogButtonGap = 8.0f;
	constexpr float DialogButtonsTop = 20.0f;

	struct FDialogMark
	{
		const TCHAR* Icon;
		const TCHAR* Color;
	};

	FDialogMark GetDialogMark(EAppMsgCategory Category)
	{
		switch (Category)
		{
		case EAppMsgCategory::Warning:
			return { TEXT("Icons.Warning"), TEXT("Colors.Warning") };
		case EAppMsgCategory::Error:
			return { TEXT("Icons.Error"), TEXT("Colors.Error") };
		case EAppMsgCategory::Success:
			return { TEXT("Icons.Success"), TEXT("Colors.Success") };
		case EAppMsgCategory::Info:
			break;
		}
		return { TEXT("Icons.Info"), TEXT("Colors.Accent") };
	}
}

// In the order in which they stand, which is the editor's.
TArray<EAppReturnType::Type> SMessageDialog::GetButtons(EAppMsgType::Type Type)
{
	using namespace EAppReturnType;
	switch (Type)
	{
	case EAppMsgType::Ok:
		return { Ok };
	case EAppMsgType::YesNo:
		return { Yes, No };
	case EAppMsgType::OkCancel:
		return { Ok, Cancel };
	case EAppMsgType::YesNoCancel:
		return { Yes, No, Cancel };
	case EAppMsgType::CancelRetryContinue:
		return { Cancel, Retry, Continue };
	case EAppMsgType::YesNoYesAllNoAll:
		return { Yes, YesAll, No, NoAll };
	case EAppMsgType::YesNoYesAllNoAllCancel:
		return { Yes, YesAll, No, NoAll, Cancel };
	case EAppMsgType::YesNoYesAll:
		return { Yes, YesAll, No };
	}
	return { Ok };
}

EAppReturnType::Type SMessageDialog::GetEscapeAnswer(EAppMsgType::Type Type)
{
	const TArray<EAppReturnType::Type> All = GetButtons(Type);
	for (const EAppReturnType::Type Answer : { EAppReturnType::Cancel, EAppReturnType::No })
	{
		if (All.Contains(Answer))
		{
			return Answer;
		}
	}
	return All[0];
}

FText SMessageDialog::GetLabel(EAppReturnType::Type Answer)
{
	switch (Answer)
	{
	case EAppReturnType::YesAll:
		return NSLOCTEXT("HostDialog", "YesAll", "Yes to All");
	case EAppReturnType::NoAll:
		return NSLOCTEXT("HostDialog", "NoAll", "No to All");
	case EAppReturnType::Ok:
		return NSLOCTEXT("HostDialog", "Ok", "OK");
	default:
		return FText::FromString(LexToString(Answer));
	}
}

void SMessageDialog::Construct(const FArguments& InArgs, const FHostMessageDialog& Dialog)
{
	AnswerHandler = InArgs._OnAnswer;
	// clang-format off
	ChildSlot
	[
		SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			MakeMessageRow(Dialog)
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.HAlign(HAlign_Right)
		.Padding(0.0f, DialogButtonsTop, 0.0f, 0.0f)
		[
			MakeButtonRow(Dialog)
		]
	];
	// clang-format on
}

TSharedRef<SWidget> SMessageDialog::MakeMessageRow(const FHostMessageDialog& Dialog) const
{
	const FDialogMark Mark = GetDialogMark(Dialog.Category);
	const FTextBlockStyle& TextStyle = FAppStyle::Get().GetWidgetStyle<FTextBlockStyle>(TEXT("NormalText"));
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Top)
		[
			SNew(SImage)
			.Image(FAppStyle::GetBrush(Mark.Icon))
			.DesiredSizeOverride(FVector2D(DialogMarkSize, DialogMarkSize))
			.ColorAndOpacity(FAppStyle::GetColor(Mark.Color))
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.Padding(DialogMarkGap, 0.0f, 0.0f, 0.0f)
		[
			SNew(STextBlock)
			.Text(Dialog.Message)
			.TextStyle(&TextStyle)
			.AutoWrapText(true)
			.LineHeightPercentage(FHostWidgetPaint::GetLineHeightPercentage(TextStyle.Font, DialogLineHeight))
		];
	// clang-format on
}

// Enter goes to the default answer, and to the first button where none was named.
TSharedRef<SWidget> SMessageDialog::MakeButtonRow(const FHostMessageDialog& Dialog)
{
	const TSharedRef<SHorizontalBox> Row = SNew(SHorizontalBox);
	for (const EAppReturnType::Type Answer : GetButtons(Dialog.Type))
	{
		const bool bPrimary = Answer == Dialog.DefaultAnswer;
		TSharedPtr<SButton> Button;
		// clang-format off
		Row->AddSlot()
		.AutoWidth()
		.Padding(Buttons.Num() > 0 ? DialogButtonGap : 0.0f, 0.0f, 0.0f, 0.0f)
		[
			SAssignNew(Button, SButton)
			.ButtonStyle(FAppStyle::Get(), bPrimary ? TEXT("PrimaryButton") : TEXT("Button"))
			.Text(GetLabel(Answer))
			.OnClicked(this, &SMessageDialog::OnButtonClicked, Answer)
		];
		// clang-format on
		Buttons.Add(Button);
		if (bPrimary || !Primary)
		{
			Primary = Button;
		}
	}
	return Row;
}

FReply SMessageDialog::OnFocusReceived(const FGeometry& MyGeometry, const FFocusEvent& InFocusEvent)
{
	return FReply::Handled().SetUserFocus(Primary.ToSharedRef());
}

void SMessageDialog::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	if (!bShown)
	{
		// The user did not move the focus here, so it is shown where it is.
		bShown = true;
		FHostFocus::Get().bShowRing = true;
	}
}

// The arrows go along the row and stop at its ends; Tab goes around as everywhere.
FReply SMessageDialog::OnKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	const FKey Key = InKeyEvent.GetKey();
	const int32 Focused = Buttons.IndexOfByPredicate([](const TSharedPtr<SButton>& Button) { return Button->HasKeyboardFocus(); });
	if (Focused == INDEX_NONE || (Key != EKeys::Left && Key != EKeys::Right))
	{
		return FReply::Unhandled();
	}
	const int32 Next = FMath::Clamp(Focused + (Key == EKeys::Left ? -1 : 1), 0, Buttons.Num() - 1);
	return FReply::Handled().SetUserFocus(Buttons[Next].ToSharedRef(), EFocusCause::Navigation);
}

// A copy of the handler: the answer takes the dialog down.
FReply SMessageDialog::OnButtonClicked(EAppReturnType::Type Answer)
{
	const FOnMessageDialogAnswer Handler = AnswerHandler;
	Handler.ExecuteIfBound(Answer);
	return FReply::Handled();
}

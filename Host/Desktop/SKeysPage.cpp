#include "SKeysPage.h"

#include "EditorFrameCommands.h"
#include "ISettingsModule.h"
#include "KeyBindings.h"
#include "Modules/ModuleManager.h"
#include "SettingRows.h"
#include "Styling/AppStyle.h"
#include "Styling/CoreStyle.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "KeysPage"

namespace
{
	const FName KeysContainer(TEXT("Project"));
	const FName KeysCategory(TEXT("Program"));
	constexpr float MinKeyWidth = 92.0f;
	constexpr float MaxKeyWidth = 150.0f;
	/** Of two buttons, with what rounding takes. */
	constexpr float ButtonsWidth = 170.0f;

	bool CanChange(const FUICommandInfo& Command)
	{
		// What only text boxes do has the keys of text boxes.
		static const FName Fixed[] = { "Undo", "Redo", "Cut", "Copy", "Paste", "SelectAll" };
		for (const FName& Name : Fixed)
		{
			if (Command.GetCommandName() == Name)
			{
				return false;
			}
		}
		return true;
	}
}

FKeysPage::FKeysPage()
	: Page(SNew(SKeysPage))
{
	if (ISettingsModule* const Settings = FModuleManager::GetModulePtr<ISettingsModule>("Settings"))
	{
		Settings->RegisterSettings(KeysContainer, KeysCategory, SKeysPage::GetPageName(), LOCTEXT("Keys", "Keys"),
			LOCTEXT("KeysText", "What can be done with a key. Your keys hold in every project."), Page.ToSharedRef());
	}
}

FKeysPage::~FKeysPage()
{
	if (ISettingsModule* const Settings = FModuleManager::GetModulePtr<ISettingsModule>("Settings"))
	{
		Settings->UnregisterSettings(KeysContainer, KeysCategory, SKeysPage::GetPageName());
	}
}

void SKeysPage::ShowPage()
{
	if (ISettingsModule* const Settings = FModuleManager::GetModulePtr<ISettingsModule>("Settings"))
	{
		Settings->ShowViewer(KeysContainer, KeysCategory, GetPageName());
	}
}

void SKeysPage::Construct(const FArguments& InArgs)
{
	// clang-format off
	ChildSlot
	[
		SNew(SScrollBox)
		+ SScrollBox::Slot()
		[
			SAssignNew(Rows, SVerticalBox)
		]
	];
	// clang-format on
	Rebuild();
}

SKeysPage::~SKeysPage()
{
	FKeyBindings::SetCapturing(false);
}

void SKeysPage::Rebuild()
{
	bWantsRebuild = false;
	Rows->ClearChildren();
	Rows->AddSlot().AutoHeight()[SettingRows::MakeGroupHeading(LOCTEXT("Commands", "Commands"))];
	bool bOdd = false;
	for (const TSharedRef<FUICommandInfo>& Command : FEditorFrameCommands::Get().GetBindingContext()->GetCommands())
	{
		const FName Name = Command->GetCommandName();
		const auto GetComplaint = [this, Name]() { return ComplainedOf == Name ? Complaint : FText(); };
		Rows->AddSlot().AutoHeight()[SettingRows::MakeRow(
			Command->GetLabel(), Command->GetDescription(), MakeValue(*Command), bOdd, TAttribute<FText>::CreateLambda(GetComplaint))];
		bOdd = !bOdd;
	}
	// clang-format off
	Rows->AddSlot()
	.AutoHeight()
	.Padding(16.0f, 8.0f)
	[
		SettingRows::MakeNote(LOCTEXT("Note",
			"Press Change, then the new key; Escape leaves it as it was. Escape itself, the keys of text boxes and those that move in "
			"texts and lists stay what they are."))
	];
	// clang-format on
}

TSharedRef<SWidget> SKeysPage::MakeValue(const FUICommandInfo& Command)
{
	const FName Name = Command.GetCommandName();
	const FText Own = Command.GetDefaultChord().IsValidChord() ? Command.GetInputText() : LOCTEXT("None", "none");
	const auto GetText = [this, Name, Own]() { return Captured == Name ? LOCTEXT("Press", "Press the new key\u2026") : Own; };
	const TSharedRef<SWrapBox> Buttons = SNew(SWrapBox).UseAllottedSize(true).InnerSlotPadding(FVector2D(8.0, 4.0));
	// clang-format off
	// At the width of a settings page the two usual buttons stand beside the key; only the third one begins a new line.
	const TSharedRef<SWidget> Value = SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.MinWidth(MinKeyWidth)
		.MaxWidth(MaxKeyWidth)
		.VAlign(VAlign_Center)
		.Padding(0.0f, 0.0f, 4.0f, 0.0f)
		[
			SNew(STextBlock)
			.Tag(FName(*(TEXT("Key.") + Name.ToString())))
			.Text_Lambda(GetText)
			.AutoWrapText(true)
		]
		+ SHorizontalBox::Slot()
		.FillWidth(2.0f)
		.MinWidth(ButtonsWidth)
		.VAlign(VAlign_Center)
		[
			Buttons
		];
	// clang-format on
	if (!CanChange(Command))
	{
		Buttons->AddSlot().VAlign(VAlign_Center)[SettingRows::MakeNote(LOCTEXT("Fixed", "of text boxes"))];
		return Value;
	}
	Buttons->AddSlot()[MakeButton(TEXT("ChangeKey.") + Name.ToString(), LOCTEXT("Change", "Change"),
		FText::Format(LOCTEXT("ChangeTip", "Take another key for \u201c{0}\u201d"), Command.GetLabel()),
		[this, Name] { BeginCapture(Name); })];
	if (Command.GetDefaultChord().IsValidChord())
	{
		Buttons->AddSlot()[MakeButton(TEXT("RemoveKey.") + Name.ToString(), LOCTEXT("Remove", "Remove"),
			FText::Format(LOCTEXT("RemoveTip", "Leave \u201c{0}\u201d without a key"), Command.GetLabel()),
			[this, Name] { Take(Name, FInputChord()); })];
	}
	if (const FInputChord Default = FKeyBindings::GetDefault(Name); !(Default == Command.GetDefaultChord()))
	{
		const FText Words = Default.IsValidChord() ? Default.GetInputText() : LOCTEXT("NoKey", "no key");
		Buttons->AddSlot()[MakeButton(TEXT("DefaultKey.") + Name.ToString(), LOCTEXT("Default", "Default"),
			FText::Format(LOCTEXT("DefaultTip", "Back to {0}"), Words), [this, Name, Default] { Take(Name, Default); })];
	}
	return Value;
}

TSharedRef<SWidget> SKeysPage::MakeButton(const FString& Tag, const FText& Label, const FText& ToolTip, TFunction<void()> Action)
{
	const auto OnClicked = [Action = MoveTemp(Action)]()
	{
		Action();
		return FReply::Handled();
	};
	return SNew(SButton).Tag(FName(*Tag)).Text(Label).ToolTipText(ToolTip).OnClicked_Lambda(OnClicked);
}

void SKeysPage::BeginCapture(FName Command)
{
	Captured = Command;
	ComplainedOf = FName();
	FKeyBindings::SetCapturing(true);
}

void SKeysPage::EndCapture()
{
	Captured = FName();
	FKeyBindings::SetCapturing(false);
}

FReply SKeysPage::OnPreviewKeyDown(const FGeometry& MyGeometry, const FKeyEvent& InKeyEvent)
{
	if (Captured.IsNone() || InKeyEvent.GetKey().IsModifierKey())
	{
		return FReply::Unhandled();
	}
	const FName Command = Captured;
	EndCapture();
	if (InKeyEvent.GetKey() != EKeys::Escape)
	{
		Take(Command, FInputChord(InKeyEvent.GetKey(), InKeyEvent.IsShiftDown(), InKeyEvent.IsControlDown(), InKeyEvent.IsAltDown()));
	}
	return FReply::Handled();
}

FString SKeysPage::FindClash(FName Command, const FInputChord& Chord)
{
	for (const TSharedRef<FUICommandInfo>& Other : FEditorFrameCommands::Get().GetBindingContext()->GetCommands())
	{
		if (Chord.IsValidChord() && Other->GetCommandName() != Command && Other->GetDefaultChord() == Chord)
		{
			return FString::Printf(TEXT("%s is the key of \u201c%s\u201d%s Nothing was changed."), *Chord.GetInputText().ToString(),
				*Other->GetLabel().ToString(), CanChange(*Other) ? TEXT(". Take it from that one first.") : TEXT(" in text boxes."));
		}
	}
	return FString();
}

void SKeysPage::Take(FName Command, const FInputChord& Chord)
{
	FString Words = FindClash(Command, Chord);
	if (Words.IsEmpty())
	{
		Words = FKeyBindings::Change(Command, Chord);
	}
	ComplainedOf = Command;
	Complaint = FText::FromString(Words);
	// The button that was pressed is among the rows.
	bWantsRebuild = true;
	Invalidate(EInvalidateWidgetReason::Layout);
}

void SKeysPage::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	if (bWantsRebuild)
	{
		Rebuild();
	}
	// Who goes elsewhere wants no key taken.
	if (!Captured.IsNone() && !HasFocusedDescendants())
	{
		EndCapture();
	}
}

#undef LOCTEXT_NAMESPACE

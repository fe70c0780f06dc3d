#include "SConnectionsPage.h"

#include "AgentChoice.h"
#include "Brushes/SlateRoundedBoxBrush.h"
#include "ConnectionFields.h"
#include "Framework/Application/SlateApplication.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Host/SFoldingRow.h"
#include "SettingRows.h"
#include "Styling/AppStyle.h"
#include "Widgets/Input/SButton.h"
#include "Widgets/Input/SComboBox.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Layout/SBorder.h"
#include "Widgets/Layout/SBox.h"
#include "Widgets/Layout/SScrollBox.h"
#include "Widgets/Layout/SWrapBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/Text/STextBlock.h"

#define LOCTEXT_NAMESPACE "ConnectionsPage"

namespace
{
	constexpr float ListColumnWidth = 176.0f;
	/** On a page that is narrower the list stands above the fields. */
	constexpr float FoldWidth = 420.0f;
	/** A page that was away for so long may find another file. */
	constexpr double AwaySeconds = 1.0;

	const FSlateBrush* GetChosenBrush()
	{
		static const FSlateRoundedBoxBrush Brush(FLinearColor(FColor::FromHex(TEXT("7CB9FF3D"))), 4.0f);
		return &Brush;
	}
}

void SConnectionsPage::Construct(const FArguments& InArgs)
{
	// clang-format off
	ChildSlot
	[
		SNew(SFoldingRow)
		.FirstWidth(ListColumnWidth)
		.FoldWidth(FoldWidth)
		.Gap(0.0f)
		+ SFoldingRow::Slot()
		[
			MakeListColumn()
		]
		+ SFoldingRow::Slot()
		[
			SNew(SScrollBox)
			+ SScrollBox::Slot()
			[
				SAssignNew(Fields, SBox)
			]
		]
	];
	// clang-format on
	ShowFirst();
}

void SConnectionsPage::ShowFirst()
{
	const TArray<FItem>& Items = Connections.GetItems();
	Show(Items.IsEmpty() ? nullptr : TSharedPtr<FEditedConnection>(Items[0]));
}

void SConnectionsPage::Tick(const FGeometry& AllottedGeometry, const double InCurrentTime, const float InDeltaTime)
{
	SCompoundWidget::Tick(AllottedGeometry, InCurrentTime, InDeltaTime);
	// Another window of this program, or an editor, may have written the file meanwhile.
	if (InCurrentTime - LastTick > AwaySeconds && Connections.Reload())
	{
		ShowFirst();
	}
	LastTick = InCurrentTime;
	if (bWantsKey)
	{
		LookUpKey();
	}
}

TSharedRef<SWidget> SConnectionsPage::MakeListColumn()
{
	const auto Add = [this]()
	{
		Show(Connections.Add());
		// Who adds one types its name next; the box selects the name that is there.
		FSlateApplication::Get().SetKeyboardFocus(NameBox, EFocusCause::SetDirectly);
		return FReply::Handled();
	};
	// clang-format off
	return SNew(SScrollBox)
		+ SScrollBox::Slot()
		.Padding(FMargin(12.0f, 0.0f, 4.0f, 8.0f))
		[
			SAssignNew(List, SVerticalBox)
		]
		+ SScrollBox::Slot()
		.Padding(FMargin(12.0f, 0.0f, 4.0f, 12.0f))
		[
			SNew(SButton)
			.Tag("AddConnection")
			.Text(LOCTEXT("Add", "Add"))
			.ToolTipText(LOCTEXT("AddTip", "Set up another model"))
			.OnClicked_Lambda(Add)
		];
	// clang-format on
}

TSharedRef<SWidget> SConnectionsPage::MakeListRow(const FItem& Item)
{
	const bool bIsShown = Shown == Item;
	const auto Choose = [this, Item]()
	{
		Show(Item);
		return FReply::Handled();
	};
	const auto GetName = [this, Item]()
	{
		const FText Name = FText::FromString(Item->Now.Name);
		return Connections.IsDefault(*Item) ? FText::Format(LOCTEXT("Default", "{0} (default)"), Name) : Name;
	};
	// clang-format off
	return SNew(SBorder)
		.BorderImage(bIsShown ? GetChosenBrush() : FAppStyle::GetBrush("NoBorder"))
		.Padding(FMargin(0.0f))
		[
			SNew(SButton)
			.ButtonStyle(FAppStyle::Get(), TEXT("SimpleButton"))
			.HAlign(HAlign_Left)
			.ContentPadding(FMargin(8.0f, 4.0f))
			.OnClicked_Lambda(Choose)
			[
				SNew(STextBlock)
				.Text_Lambda(GetName)
				.AutoWrapText(true)
				.ColorAndOpacity(FSlateColor(FAppStyle::GetColor(bIsShown ? "Colors.ForegroundHover" : "Colors.Foreground")))
			]
		];
	// clang-format on
}

void SConnectionsPage::RebuildList()
{
	List->ClearChildren();
	for (const FItem& Item : Connections.GetItems())
	{
		List->AddSlot().AutoHeight()[MakeListRow(Item)];
	}
}

void SConnectionsPage::Show(const TSharedPtr<FEditedConnection>& Item)
{
	Shown = Item;
	++ShownNumber;
	Complaints.Empty();
	TestText = FText::GetEmpty();
	bIsTesting = false;
	SetModelOptions({}, TEXT("Asking the server\u2026"));
	RebuildList();
	RebuildFields();
	// Where the key comes from is looked up off this thread, and not before somebody looks here.
	bWantsKey = true;
}

TSharedRef<SWidget> SConnectionsPage::MakeEmptyText() const
{
	const auto GetText = [this]()
	{
		const FString Problem = Connections.GetProblem();
		return Problem.IsEmpty()
			? LOCTEXT("None", "The built-in agent answers. Add a connection to let a model answer: on this machine, or elsewhere.")
			: FText::FromString(Problem);
	};
	// clang-format off
	return SNew(SBox)
		.Padding(FMargin(16.0f, 6.0f))
		[
			SettingRows::MakeNote(TAttribute<FText>::CreateLambda(GetText))
		];
	// clang-format on
}

void SConnectionsPage::RebuildFields()
{
	if (!Shown)
	{
		Fields->SetContent(MakeEmptyText());
		return;
	}
	const TSharedRef<SVerticalBox> Rows = SNew(SVerticalBox);
	bool bOdd = false;
	const auto AddRow = [&Rows, &bOdd](const FText& Label, const FText& ToolTip, const TSharedRef<SWidget>& Value)
	{
		Rows->AddSlot().AutoHeight()[SettingRows::MakeRow(Label, ToolTip, Value, bOdd)];
		bOdd = !bOdd;
	};
	// 1. What it is, whether it can be used, and what can be done with it.
	AddRow(LOCTEXT("Name", "Name"), LOCTEXT("NameTip", "As the menu and --connection call it"), MakeNameBox());
	AddRow(LOCTEXT("State", "State"), FText::GetEmpty(),
		SettingRows::MakeState(TAttribute<FSlateColor>::CreateSP(this, &SConnectionsPage::GetStateColor),
			TAttribute<FText>::CreateSP(this, &SConnectionsPage::GetStateText)));
	AddRow(FText::GetEmpty(), FText::GetEmpty(), MakeActions());
	AddRow(LOCTEXT("Test", "Test"), FText::GetEmpty(), MakeTestRow());

	// 2. Its fields. Those of the server end with the key, those of the model begin with its name.
	for (const FConnectionFieldGroup& Group : GetConnectionFields())
	{
		Rows->AddSlot().AutoHeight()[SettingRows::MakeGroupHeading(Group.Heading)];
		bOdd = false;
		const bool bIsServer = &Group == &GetConnectionFields()[0];
		const bool bIsModel = &Group == &GetConnectionFields()[1];
		if (bIsServer)
		{
			AddRow(LOCTEXT("Dialect", "Dialect"), LOCTEXT("DialectTip", "What llama.cpp, Ollama, vLLM and most clouds speak"),
				SettingRows::MakeNote(LOCTEXT("ChatCompletions", "Chat completions")));
		}
		if (bIsModel)
		{
			AddRow(LOCTEXT("Model", "Model"), LOCTEXT("ModelTip", "The list shows what the server has; any other name can be typed"),
				MakeModelBox());
		}
		for (const FConnectionField& Field : Group.Fields)
		{
			Rows->AddSlot().AutoHeight()[MakeField(Field, bOdd)];
			bOdd = !bOdd;
		}
		if (bIsServer)
		{
			AddRow(LOCTEXT("Key", "Key"), LOCTEXT("KeyTip", "Belongs to the server's scheme, host and port, and goes nowhere else"),
				MakeKeyRow());
		}
	}
	Fields->SetContent(Rows);
}

TSharedRef<SWidget> SConnectionsPage::MakeField(const FConnectionField& Field, bool bOdd)
{
	const FString Tag = Field.Tag;
	const auto OnChanged = [this, Set = Field.Set, Tag](const FText& Text)
	{
		if (Shown)
		{
			Complaints.Add(Tag, Set(Shown->Now, Text.ToString()));
			NoteChange();
		}
	};
	const auto OnCommitted = [this](const FText&, ETextCommit::Type) { LookUpKey(); };
	const auto GetComplaint = [this, Tag]()
	{
		const FString* const Found = Complaints.Find(Tag);
		return Found ? FText::FromString(*Found) : FText::GetEmpty();
	};
	// clang-format off
	return SettingRows::MakeRow(Field.Label, Field.ToolTip,
		SNew(SEditableTextBox)
		.Tag(FName(Field.Tag))
		.Text(FText::FromString(Field.Get(Shown->Now)))
		.HintText(Field.Hint)
		.ClearKeyboardFocusOnCommit(false)
		.OnTextChanged_Lambda(OnChanged)
		.OnTextCommitted_Lambda(OnCommitted),
		bOdd, TAttribute<FText>::CreateLambda(GetComplaint));
	// clang-format on
}

TSharedRef<SWidget> SConnectionsPage::MakeNameBox()
{
	const auto OnChanged = [this](const FText& Text)
	{
		if (Shown)
		{
			Shown->Now.Name = Text.ToString().TrimStartAndEnd();
			NoteChange();
		}
	};
	// clang-format off
	return SAssignNew(NameBox, SEditableTextBox)
		.Tag("ConnectionName")
		.Text(FText::FromString(Shown->Now.Name))
		.SelectAllTextWhenFocused(true)
		.ClearKeyboardFocusOnCommit(false)
		.OnTextChanged_Lambda(OnChanged);
	// clang-format on
}

TSharedRef<SWidget> SConnectionsPage::MakeModelBox()
{
	const auto OnChanged = [this](const FText& Text)
	{
		if (Shown)
		{
			Shown->Now.Model = Text.ToString().TrimStartAndEnd();
			NoteChange();
		}
	};
	const auto MakeOption = [](TSharedPtr<FString> Option)
	{ return TSharedRef<SWidget>(SNew(STextBlock).Text(FText::FromString(Option ? *Option : FString()))); };
	const auto OnChosen = [this](TSharedPtr<FString> Option, ESelectInfo::Type)
	{
		if (Option && bOffersModels && ModelBox)
		{
			ModelBox->SetText(FText::FromString(*Option));
		}
	};
	// clang-format off
	// Below the box and not beside it: a list is as wide as what opens it, and names of models are long.
	return SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SAssignNew(ModelBox, SEditableTextBox)
			.Tag("ConnectionModel")
			.Text(FText::FromString(Shown->Now.Model))
			.HintText(LOCTEXT("ModelHint", "the first that the server lists"))
			.ClearKeyboardFocusOnCommit(false)
			.OnTextChanged_Lambda(OnChanged)
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, 4.0f, 0.0f, 0.0f)
		[
			SAssignNew(ModelList, SModelList)
			.Tag("ConnectionModelList")
			.ToolTipText(LOCTEXT("ModelListTip", "Show what the server has"))
			.OptionsSource(&ModelOptions)
			.OnGenerateWidget_Lambda(MakeOption)
			.OnSelectionChanged_Lambda(OnChosen)
			.OnComboBoxOpening(this, &SConnectionsPage::ListModels)
			[
				SNew(STextBlock)
				.Text(LOCTEXT("ModelList", "What the server has"))
				.OverflowPolicy(ETextOverflowPolicy::Ellipsis)
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SConnectionsPage::MakeKeyRow()
{
	const auto OnPaste = [this]()
	{
		FString Key;
		FPlatformApplicationMisc::ClipboardPaste(Key);
		Key = Key.TrimStartAndEnd();
		if (Key.IsEmpty() || Key.Contains(TEXT("\n")))
		{
			Complaints.Add(TEXT("Key"), TEXT("The clipboard holds no key: copy it first, it is one line."));
			return FReply::Handled();
		}
		StoreKey(Key);
		return FReply::Handled();
	};
	const auto OnForget = [this]()
	{
		StoreKey(FString());
		return FReply::Handled();
	};
	const auto GetPasteText = [this]() { return KeySource.IsEmpty() ? LOCTEXT("PasteKey", "Paste") : LOCTEXT("ReplaceKey", "Replace"); };
	// clang-format off
	return SNew(SVerticalBox)
		+ SVerticalBox::Slot()
		.AutoHeight()
		[
			SettingRows::MakeNote(TAttribute<FText>::CreateSP(this, &SConnectionsPage::GetKeyText))
		]
		+ SVerticalBox::Slot()
		.AutoHeight()
		.Padding(0.0f, 4.0f, 0.0f, 0.0f)
		[
			SNew(SWrapBox)
			.UseAllottedSize(true)
			.InnerSlotPadding(FVector2D(8.0, 4.0))
			+ SWrapBox::Slot()
			[
				SNew(SButton)
				.Tag("PasteKey")
				.Text_Lambda(GetPasteText)
				.ToolTipText(LOCTEXT("PasteKeyTip", "Takes the key from the clipboard, so that it never stands on the screen"))
				.OnClicked_Lambda(OnPaste)
			]
			+ SWrapBox::Slot()
			[
				SNew(SButton)
				.Tag("ForgetKey")
				.Text(LOCTEXT("ForgetKey", "Forget"))
				.ToolTipText(LOCTEXT("ForgetKeyTip", "Takes it out of the key file"))
				.IsEnabled_Lambda([this]() { return !KeySource.IsEmpty(); })
				.OnClicked_Lambda(OnForget)
			]
		];
	// clang-format on
}

TSharedRef<SWidget> SConnectionsPage::MakeTestRow()
{
	const auto OnTest = [this]()
	{
		Test();
		return FReply::Handled();
	};
	// clang-format off
	return SNew(SHorizontalBox)
		+ SHorizontalBox::Slot()
		.AutoWidth()
		.VAlign(VAlign_Top)
		.Padding(0.0f, 0.0f, 8.0f, 0.0f)
		[
			SNew(SButton)
			.Tag("TestConnection")
			.Text(LOCTEXT("TestButton", "Test"))
			.ToolTipText(LOCTEXT("TestTip", "Asks the server for its models and the model for one word; nothing of the project is sent"))
			.IsEnabled_Lambda([this]() { return !bIsTesting && Shown && Shown->Complaint.IsEmpty(); })
			.OnClicked_Lambda(OnTest)
		]
		+ SHorizontalBox::Slot()
		.FillWidth(1.0f)
		.VAlign(VAlign_Center)
		[
			SNew(STextBlock)
			.Tag("TestResult")
			.Text_Lambda([this]() { return TestText; })
			.AutoWrapText(true)
		];
	// clang-format on
}

TSharedRef<SWidget> SConnectionsPage::MakeActions()
{
	// The stored one is used: what is half typed cannot answer anybody.
	const auto OnUse = [this]() { FAgentChoice::Choose(Shown->Stored); };
	const auto OnDefault = [this]() { Connections.SetDefault(Connections.IsDefault(*Shown) ? nullptr : Shown.Get()); };
	const auto OnRemove = [this]()
	{
		Connections.Remove(Shown.ToSharedRef());
		ShowFirst();
	};
	const TAttribute<bool> IsUsable = TAttribute<bool>::CreateLambda([this]() { return Shown && Shown->Stored.IsSet(); });
	const TAttribute<FText> DefaultText = TAttribute<FText>::CreateLambda([this]()
		{ return Shown && Connections.IsDefault(*Shown) ? LOCTEXT("NoDefault", "No Default") : LOCTEXT("MakeDefault", "Make Default"); });
	// clang-format off
	return SNew(SWrapBox)
		.UseAllottedSize(true)
		.InnerSlotPadding(FVector2D(8.0, 4.0))
		+ SWrapBox::Slot()
		[
			SettingRows::MakeButton("UseConnection", LOCTEXT("Use", "Use Now"),
				LOCTEXT("UseTip", "It answers from the next message on, as in the menu Tools, Agent"), OnUse, IsUsable)
		]
		+ SWrapBox::Slot()
		[
			SettingRows::MakeButton("DefaultConnection", DefaultText,
				LOCTEXT("DefaultTip", "The default answers when the program starts; without one the built-in agent does"), OnDefault,
				IsUsable)
		]
		+ SWrapBox::Slot()
		[
			SettingRows::MakeButton("RemoveConnection", LOCTEXT("Remove", "Remove"),
				LOCTEXT("RemoveTip", "Takes it off the list; its key stays until it is forgotten"), OnRemove)
		];
	// clang-format on
}

void SConnectionsPage::NoteChange()
{
	if (Shown)
	{
		Connections.NoteChange(Shown.ToSharedRef());
	}
}

FSlateColor SConnectionsPage::GetStateColor() const
{
	return !Connections.GetProblem().IsEmpty() ? SettingRows::GetFailedColor()
		: Shown && Shown->Complaint.IsEmpty()  ? SettingRows::GetReadyColor()
											   : SettingRows::GetNeedsColor();
}

FText SConnectionsPage::GetStateText() const
{
	const FString Problem = Connections.GetProblem();
	if (!Problem.IsEmpty())
	{
		return FText::Format(LOCTEXT("NotKept", "Not stored. {0}"), FText::FromString(Problem));
	}
	return !Shown || Shown->Complaint.IsEmpty()
		? LOCTEXT("Stored", "Stored")
		: FText::Format(LOCTEXT("NotStored", "Not stored yet. {0}"), FText::FromString(Shown->Complaint));
}

FText SConnectionsPage::GetKeyText() const
{
	const FString* const Complaint = Complaints.Find(TEXT("Key"));
	if (Complaint && !Complaint->IsEmpty())
	{
		return FText::FromString(*Complaint);
	}
	return !bKnowsKey ? FText::GetEmpty()
		: KeySource.IsEmpty()
		? LOCTEXT("NoKey", "No key. Servers on this machine need none.")
		: FText::Format(LOCTEXT("HasKey", "\u2022\u2022\u2022\u2022\u2022\u2022\u2022\u2022  {0}"), FText::FromString(KeySource));
}

#undef LOCTEXT_NAMESPACE

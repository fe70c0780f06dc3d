#include "StateDump.h"

#include "ConversationPrinter.h"
#include "Dom/JsonObject.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/HostClock.h"
#include "Host/HostDialogs.h"
#include "Host/HostFileDialogs.h"
#include "Host/HostNotifications.h"
#include "Host/WidgetFinder.h"
#include "Serialization/JsonSerializer.h"
#include "Serialization/JsonWriter.h"
#include "StateWords.h"
#include "ViewModels/ChatViewModel.h"

#include <cstdio>
#include <unistd.h>

namespace
{
	const TCHAR* GetTypeWord(EChatMessageType Type)
	{
		switch (Type)
		{
		case EChatMessageType::User:
			return TEXT("User");
		case EChatMessageType::AI:
			return TEXT("AI");
		case EChatMessageType::System:
			return TEXT("System");
		case EChatMessageType::Tool:
			return TEXT("Tool");
		case EChatMessageType::ToolSummary:
			return TEXT("ToolSummary");
		}
		return TEXT("Unknown");
	}

	const TCHAR* GetStatusWord(EToolStatus Status)
	{
		switch (Status)
		{
		case EToolStatus::Running:
			return TEXT("Running");
		case EToolStatus::Success:
			return TEXT("Success");
		case EToolStatus::Failed:
			return TEXT("Failed");
		}
		return TEXT("Unknown");
	}

	TSharedPtr<FJsonValue> DescribeMessage(const FChatMessage& Message)
	{
		const TSharedRef<FJsonObject> Object = MakeShared<FJsonObject>();
		Object->SetStringField(TEXT("type"), GetTypeWord(Message.Type));
		Object->SetStringField(TEXT("content"), Message.Content);
		TArray<TSharedPtr<FJsonValue>> Tools;
		for (const TSharedPtr<FChatMessage>& Tool : Message.ToolExecutions)
		{
			const TSharedRef<FJsonObject> Row = MakeShared<FJsonObject>();
			Row->SetStringField(TEXT("name"), Tool->ToolName);
			Row->SetStringField(TEXT("label"), FConversationPrinter::GetToolLabel(*Tool));
			Row->SetStringField(TEXT("status"), GetStatusWord(Tool->ToolStatus));
			Row->SetStringField(TEXT("result"), Tool->ToolResult);
			Tools.Add(MakeShared<FJsonValueObject>(Row));
		}
		Object->SetArrayField(TEXT("toolRows"), Tools);
		return MakeShared<FJsonValueObject>(Object);
	}

	/** What a control reads: its own text, or that of the first text inside. */
	FString FindText(SWidget& Widget)
	{
		const FText Own = Widget.GetDisplayedText();
		if (!Own.IsEmpty())
		{
			return Own.ToString();
		}
		FChildren& Children = *Widget.GetChildren();
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			SWidget& Child = Children.GetChildRefAt(Index);
			const FString Text = Child.GetVisibility().IsVisible() ? FindText(Child) : FString();
			if (!Text.IsEmpty())
			{
				return Text;
			}
		}
		return FString();
	}

	/** All tagged widgets, hidden ones included: what is hidden is part of the state. */
	void CollectControls(const TSharedRef<SWidget>& Widget, bool bShown, bool bEnabled, TArray<TSharedPtr<FJsonValue>>& Out)
	{
		const bool bNowShown = bShown && Widget->GetVisibility().IsVisible();
		const bool bNowEnabled = bEnabled && Widget->IsEnabled();
		if (!Widget->GetTag().IsNone())
		{
			const TSharedRef<FJsonObject> Control = MakeShared<FJsonObject>();
			Control->SetStringField(TEXT("tag"), Widget->GetTag().ToString());
			Control->SetBoolField(TEXT("visible"), bNowShown);
			Control->SetBoolField(TEXT("enabled"), bNowEnabled);
			Control->SetStringField(TEXT("text"), FindText(Widget.Get()));
			Out.Add(MakeShared<FJsonValueObject>(Control));
		}
		FChildren& Children = *Widget->GetChildren();
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			CollectControls(Children.GetChildAt(Index), bNowShown, bNowEnabled, Out);
		}
	}

	/** The entries of the open menus, those of the innermost first. */
	TArray<TSharedPtr<FJsonValue>> DescribeMenus()
	{
		TArray<TSharedPtr<FJsonValue>> Rows;
		for (const TSharedRef<SWidget>& Widget : FWidgetFinder::FindByType(TEXT("SMenuRow")))
		{
			const TSharedRef<FJsonObject> Row = MakeShared<FJsonObject>();
			Row->SetStringField(TEXT("label"), FindText(Widget.Get()));
			Row->SetBoolField(TEXT("enabled"), Widget->IsEnabled());
			Rows.Add(MakeShared<FJsonValueObject>(Row));
		}
		return Rows;
	}

	TArray<TSharedPtr<FJsonValue>> ToValues(const TArray<FString>& Texts)
	{
		TArray<TSharedPtr<FJsonValue>> Values;
		for (const FString& Text : Texts)
		{
			Values.Add(MakeShared<FJsonValueString>(Text));
		}
		return Values;
	}

	double GetResidentBytes()
	{
		long long Pages = 0;
		if (FILE* File = fopen("/proc/self/statm", "r"))
		{
			long long Total = 0;
			if (fscanf(File, "%lld %lld", &Total, &Pages) != 2)
			{
				Pages = 0;
			}
			fclose(File);
		}
		return static_cast<double>(Pages) * static_cast<double>(sysconf(_SC_PAGESIZE));
	}
}

FString FStateDump::Make(const FChatViewModel* ViewModel)
{
	const TSharedRef<FJsonObject> Root = MakeShared<FJsonObject>();
	Root->SetStringField(TEXT("statusText"), ViewModel ? ViewModel->GetStatusText() : FString(TEXT("Not initialized")));
	Root->SetStringField(
		TEXT("state"), ViewModel ? FStateWords::Get(ViewModel->GetState()) : FStateWords::Get(Velmora::EConversationState::NotStarted));
	TArray<TSharedPtr<FJsonValue>> Messages;
	TArray<FString> Chips;
	if (ViewModel)
	{
		for (const TSharedPtr<FChatMessage>& Message : ViewModel->GetMessages())
		{
			Messages.Add(DescribeMessage(*Message));
		}
		Chips = ViewModel->GetContextFiles();
	}
	Root->SetArrayField(TEXT("messages"), Messages);

	TArray<TSharedPtr<FJsonValue>> Controls;
	for (const TSharedRef<SWidget>& Layer : FSlateApplication::Get().GetLayerRoots())
	{
		CollectControls(Layer, true, true, Controls);
	}
	Root->SetArrayField(TEXT("controls"), Controls);
	Root->SetArrayField(TEXT("menu"), DescribeMenus());
	const TSharedPtr<SWidget> Box = FWidgetFinder::FindByTag(TEXT("InputTextBox"));
	Root->SetStringField(TEXT("promptText"), Box ? Box->GetDisplayedText().ToString() : FString());
	Root->SetArrayField(TEXT("chips"), ToValues(Chips));

	TArray<TSharedPtr<FJsonValue>> Dialogs;
	for (const FHostOpenDialog& Dialog : FHostDialogs::GetOpenDialogs())
	{
		const TSharedRef<FJsonObject> Object = MakeShared<FJsonObject>();
		Object->SetStringField(TEXT("title"), Dialog.Title);
		Object->SetStringField(TEXT("text"), Dialog.Message);
		Object->SetArrayField(TEXT("buttons"), ToValues(Dialog.Buttons));
		Dialogs.Add(MakeShared<FJsonValueObject>(Object));
	}
	if (FHostFileDialogs::GetOpen().IsSet())
	{
		const FHostOpenSaveDialog Dialog = FHostFileDialogs::GetOpen().GetValue();
		const TSharedRef<FJsonObject> Object = MakeShared<FJsonObject>();
		Object->SetStringField(TEXT("title"), Dialog.Title);
		Object->SetStringField(TEXT("text"), Dialog.Problem);
		Object->SetStringField(TEXT("folder"), Dialog.Folder);
		Object->SetStringField(TEXT("file"), Dialog.Name);
		Object->SetArrayField(TEXT("buttons"), ToValues({ TEXT("Save"), TEXT("Cancel") }));
		// Messages are asked over it.
		Dialogs.Insert(MakeShared<FJsonValueObject>(Object), 0);
	}
	Root->SetArrayField(TEXT("dialogs"), Dialogs);
	TArray<FString> Toasts;
	for (const FHostToast& Toast : FHostNotifications::GetVisible())
	{
		Toasts.Add(Toast.Text.ToString());
	}
	Root->SetArrayField(TEXT("toasts"), ToValues(Toasts));

	const FHostFrameStats& Stats = FSlateApplication::Get().GetFrameStats();
	Root->SetNumberField(TEXT("frameCount"), static_cast<double>(Stats.FrameCount));
	const bool bRepeats = FHostClock::IsSimulated();
	Root->SetNumberField(TEXT("worstFrameMs"), bRepeats ? 0.0 : Stats.WorstFrameSeconds * 1000.0);
	Root->SetNumberField(TEXT("residentBytes"), bRepeats ? 0.0 : GetResidentBytes());

	FString Out;
	const TSharedRef<TJsonWriter<>> Writer = TJsonWriterFactory<>::Create(&Out);
	FJsonSerializer::Serialize(Root, Writer);
	return Out;
}

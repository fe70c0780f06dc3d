#include "StateDump.h"

#include "AgentChoice.h"
#include "ConversationPrinter.h"
#include "Dom/JsonObject.h"
#include "Framework/Application/SlateApplication.h"
#include "Host/AccessTree.h"
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

	/** A row of the conversation, its tools in it as they stand on screen. */
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

	/** For the writer, which takes values only. */
	TArray<TSharedPtr<FJsonValue>> ToValues(const TArray<FString>& Texts)
	{
		TArray<TSharedPtr<FJsonValue>> Values;
		for (const FString& Text : Texts)
		{
			Values.Add(MakeShared<FJsonValueString>(Text));
		}
		return Values;
	}

	/** Of this process, as the system counts it; zero where it does not tell. */
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

	/** Messages and chips: what is in the conversation, whether it is on screen or not. */
	void DescribeConversation(FJsonObject& Root, const FChatViewModel* ViewModel)
	{
		Root.SetStringField(TEXT("statusText"), ViewModel ? ViewModel->GetStatusText() : FString(TEXT("Not initialized")));
		Root.SetStringField(TEXT("state"), FStateWords::Get(ViewModel ? ViewModel->GetState() : Velmora::EConversationState::NotStarted));
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
		Root.SetArrayField(TEXT("messages"), Messages);
		Root.SetArrayField(TEXT("chips"), ToValues(Chips));
	}

	TSharedPtr<FJsonValue> DescribeDialog(const FString& Title, const FString& Text, const TArray<FString>& Buttons)
	{
		const TSharedRef<FJsonObject> Object = MakeShared<FJsonObject>();
		Object->SetStringField(TEXT("title"), Title);
		Object->SetStringField(TEXT("text"), Text);
		Object->SetArrayField(TEXT("buttons"), ToValues(Buttons));
		return MakeShared<FJsonValueObject>(Object);
	}

	/** What has the keyboard, as a script would name it: its tag or that of what it stands in, else what it reads. */
	FString DescribeFocus()
	{
		const TSharedPtr<SWidget> Focused = FSlateApplication::Get().GetKeyboardFocusedWidget();
		for (TSharedPtr<SWidget> Widget = Focused; Widget; Widget = Widget->GetParentWidget())
		{
			if (!Widget->GetTag().IsNone())
			{
				return TEXT("#") + Widget->GetTag().ToString();
			}
		}
		return Focused ? FindText(*Focused) : FString();
	}

	TArray<TSharedPtr<FJsonValue>> DescribeDialogs()
	{
		TArray<TSharedPtr<FJsonValue>> Dialogs;
		// The save dialog comes first: messages are asked over it.
		if (FHostFileDialogs::GetOpen().IsSet())
		{
			const FHostOpenSaveDialog Dialog = FHostFileDialogs::GetOpen().GetValue();
			Dialogs.Add(
				DescribeDialog(Dialog.Title, Dialog.Problem, { Dialog.bChoosesFolder ? TEXT("Choose") : TEXT("Save"), TEXT("Cancel") }));
			Dialogs.Last()->AsObject()->SetStringField(TEXT("folder"), Dialog.Folder);
			Dialogs.Last()->AsObject()->SetStringField(TEXT("file"), Dialog.Name);
		}
		for (const FHostOpenDialog& Dialog : FHostDialogs::GetOpenDialogs())
		{
			Dialogs.Add(DescribeDialog(Dialog.Title, Dialog.Message, Dialog.Buttons));
		}
		return Dialogs;
	}

	/** The window as a screen reader finds it, a line for each thing in it. */
	TArray<TSharedPtr<FJsonValue>> DescribeAccess()
	{
		FAccessTree Tree;
		Tree.Update();
		TArray<FString> Lines;
		Tree.Describe().ParseIntoArray(Lines, TEXT("\n"), true);
		return ToValues(Lines);
	}

	/** What is on screen, the window's own layers above the tab included. */
	void DescribeScreen(FJsonObject& Root)
	{
		Root.SetStringField(TEXT("windowTitle"), FAgentChoice::MakeTitle());
		TArray<TSharedPtr<FJsonValue>> Controls;
		for (const TSharedRef<SWidget>& Layer : FSlateApplication::Get().GetLayerRoots())
		{
			CollectControls(Layer, true, true, Controls);
		}
		Root.SetArrayField(TEXT("controls"), Controls);
		Root.SetArrayField(TEXT("menu"), DescribeMenus());
		Root.SetArrayField(TEXT("accessible"), DescribeAccess());
		const TSharedPtr<SWidget> Box = FWidgetFinder::FindByTag(TEXT("InputTextBox"));
		Root.SetStringField(TEXT("promptText"), Box ? Box->GetDisplayedText().ToString() : FString());
		Root.SetStringField(TEXT("focus"), DescribeFocus());
		Root.SetArrayField(TEXT("dialogs"), DescribeDialogs());
		TArray<FString> Toasts;
		for (const FHostToast& Toast : FHostNotifications::GetVisible())
		{
			Toasts.Add(Toast.Text.ToString());
		}
		Root.SetArrayField(TEXT("toasts"), ToValues(Toasts));
	}

	void DescribeCost(FJsonObject& Root)
	{
		const FHostFrameStats& Stats = FSlateApplication::Get().GetFrameStats();
		Root.SetNumberField(TEXT("frameCount"), static_cast<double>(Stats.FrameCount));
		// With simulated time a run repeats byte by byte, and its dump with it; what the machine takes differs.
		const bool bRepeats = FHostClock::IsSimulated();
		Root.SetNumberField(TEXT("worstFrameMs"), bRepeats ? 0.0 : Stats.WorstFrameSeconds * 1000.0);
		Root.SetNumberField(TEXT("residentBytes"), bRepeats ? 0.0 : GetResidentBytes());
	}
}

FString FStateDump::Make(const FChatViewModel* ViewModel)
{
	const TSharedRef<FJsonObject> Root = MakeShared<FJsonObject>();
	DescribeConversation(*Root, ViewModel);
	DescribeScreen(*Root);
	DescribeCost(*Root);
	FString Out;
	const TSharedRef<TJsonWriter<>> Writer = TJsonWriterFactory<>::Create(&Out);
	FJsonSerializer::Serialize(Root, Writer);
	return Out;
}

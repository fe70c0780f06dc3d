#include "Agent/ConversationTypes.h"
#include "Framework/Application/SlateApplication.h"
#include "HAL/PlatformApplicationMisc.h"
#include "History/FileHistoryTracker.h"
#include "Host/AccessTree.h"
#include "Host/HostPaths.h"
#include "Host/HostTasks.h"
#include "Host/ProjectFolder.h"
#include "Host/StoreLocation.h"
#include "Host/TextShaper.h"
#include "Host/WidgetFinder.h"
#include "Misc/Paths.h"
#include "Support/AllocationCount.h"
#include "Support/HeadlessApplication.h"
#include "Support/MadeStore.h"
#include "Support/RecordedMix.h"
#include "ViewModels/ChatViewModel.h"
#include "Widgets/Docking/SDockTab.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/SChangedFilesList.h"
#include "Widgets/SChatWindow.h"
#include "Widgets/SVelmoraTab.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// The whole tab in a window of 1280×800 without a screen: agent, store, view model, chat and side panel, as the module opens
// it. Times are processor time of the game thread, painting included, unless a name says "wall".

namespace
{
	constexpr int32 MessageLength = 300;
	constexpr const TCHAR* EndOfConversation = TEXT("This is the very last line.");

	double GetMilliseconds(double Since)
	{
		return (FHeadlessApplication::GetThreadSeconds() - Since) * 1.0e3;
	}

	void TellTimes(benchmark::State& State, const std::string& Prefix, std::vector<double> Times)
	{
		std::sort(Times.begin(), Times.end());
		State.counters[Prefix + "median_ms"] = Times[Times.size() / 2];
		State.counters[Prefix + "worst_ms"] = Times.back();
	}

	/** A project and a store of its own, gone at the end. */
	class FMadeProjectFolder
	{
	public:
		FMadeProjectFolder()
		{
			std::string Pattern = std::filesystem::temp_directory_path() / "velmora-project-XXXXXX";
			if (!mkdtemp(Pattern.data()))
			{
				fprintf(stderr, "The project folder could not be made.\n");
				exit(1);
			}
			Root = Pattern;
			for (int Number = 0; Number < 1000; ++Number)
			{
				std::ofstream(Root / ("File" + std::to_string(Number) + ".cpp")) << "int Value;\n";
			}
			Velmora::SetProjectFolder(UTF8_TO_TCHAR(Root.c_str()));
			FHostPaths::SetProjectSavedDir(UTF8_TO_TCHAR((Root / "Saved").c_str()));
		}
		~FMadeProjectFolder()
		{
			FHostTasks::WaitForBackground(20.0);
			FHostTasks::RunGameThreadTasks();
			Velmora::SetProjectFolder(FString());
			std::error_code Ignored;
			std::filesystem::remove_all(Root, Ignored);
		}

	private:
		std::filesystem::path Root;
	};

	/** The tab on a project of its own, settled. What the store holds is put there before it opens. */
	class FOpenTab
	{
	public:
		explicit FOpenTab(TFunctionRef<void(const FString& Database)> FillStore)
		{
			const Velmora::FStoreLocation Location = Velmora::GetStoreLocation();
			(void)Velmora::MakePrivateFolder(Location.Folder);
			FillStore(Location.GetDatabasePath());
			DockTab = SNew(SDockTab).TabRole(ETabRole::NomadTab);
			Tab = SNew(SVelmoraTab, DockTab.ToSharedRef());
			Application.Show(Tab.ToSharedRef());
			Settle();
		}
		FOpenTab()
			: FOpenTab([](const FString&) {})
		{
		}
		~FOpenTab()
		{
			Application.Show(SNullWidget::NullWidget);
			Application.PumpFrame();
			Tab.Reset();
			DockTab.Reset();
			FHostTasks::WaitForBackground(20.0);
			FHostTasks::RunGameThreadTasks();
		}

		void Settle()
		{
			Application.Settle();
			FHostTasks::WaitForBackground(20.0);
			Application.Settle();
		}

		void ClickTag(FName Tag)
		{
			const TSharedPtr<SWidget> Widget = FWidgetFinder::FindByTag(Tag);
			if (!Widget)
			{
				fprintf(stderr, "A widget is missing.\n");
				exit(1);
			}
			const FSlateRect Bounds = Widget->GetCachedGeometry().GetLayoutBoundingRect();
			Application.Click(FVector2D((Bounds.Left + Bounds.Right) * 0.5, (Bounds.Top + Bounds.Bottom) * 0.5));
			Application.PumpFrame();
		}

		/** Picks the stored conversation in the history. The last key is left to the caller. */
		void MarkStoredConversation()
		{
			ClickTag(FName("ConversationComboBox"));
			Application.PressKey(EKeys::Down);
			Settle();
		}

		TSharedRef<SMultiLineEditableTextBox> FocusPrompt()
		{
			ClickTag(FName("InputTextBox"));
			return StaticCastSharedPtr<SMultiLineEditableTextBox>(FWidgetFinder::FindByTag(FName("InputTextBox"))).ToSharedRef();
		}

		const TArray<TSharedPtr<FChatMessage>>& GetMessages() const { return Tab->GetViewModel()->GetMessages(); }

		FMadeProjectFolder Project;
		FHeadlessApplication Application;
		TSharedPtr<SDockTab> DockTab;
		TSharedPtr<SVelmoraTab> Tab;
	};

	/** Prompts in plain words, answers with marks, as many as asked; the last one ends with words of its own. */
	FString MakeStoredText(int32 Number, int32 Count)
	{
		FString Text = FRecordedMix::MakeWords(MessageLength - 40, Number);
		Text += Number % 2 == 0 ? TEXT(" Please do it now.") : TEXT(" See `LogInventory` for **all** of it.");
		return Number + 1 == Count ? Text + TEXT("\n\n") + EndOfConversation : Text;
	}

	/** Painted: until then a widget has no place. */
	bool IsEndShown()
	{
		const TArray<TSharedRef<SWidget>> Found = FWidgetFinder::FindByText(EndOfConversation);
		return Found.Num() > 0 && Found[0]->GetCachedGeometry().GetLocalSize().Y > 0.0;
	}

	void LoadStored(FOpenTab& Open)
	{
		Open.MarkStoredConversation();
		Open.Application.PressKey(EKeys::Enter);
		Open.Settle();
	}

	/**
	 * From the key that picks a long conversation in the history to the frame that shows its end, and on until nothing moves.
	 * In place of an empty one, or of another as long.
	 */
	void LoadConversation(benchmark::State& State)
	{
		const int32 Count = static_cast<int32>(State.range(0));
		const bool bReplacesAnother = State.range(1) != 0;
		for (auto _ : State)
		{
			FOpenTab Open([Count](const FString& Database)
				{ FMadeStore::Fill(Database, 2, Count, [Count](int32 Number) { return MakeStoredText(Number, Count); }); });
			if (bReplacesAnother)
			{
				LoadStored(Open);
			}
			const FString Before = Open.Tab->GetViewModel()->GetCurrentConversationMetadata()->Id;
			Open.MarkStoredConversation();
			const FHostFrameStats& Stats = FSlateApplication::Get().GetFrameStats();
			double Milliseconds = 0.0;
			double Wall = 0.0;
			double WorstFrame = 0.0;
			const auto Measure = [&](auto&& Work)
			{
				const auto WallStart = std::chrono::steady_clock::now();
				const double Start = FHeadlessApplication::GetThreadSeconds();
				Work();
				WorstFrame = std::max(WorstFrame, GetMilliseconds(Start));
				Milliseconds += GetMilliseconds(Start);
				Wall += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - WallStart).count();
			};
			Measure([&] { Open.Application.PressKey(EKeys::Enter); });
			State.counters["pick_ms"] = Milliseconds;
			int32 Frames = 0;
			for (; Frames < 100 && !IsEndShown(); ++Frames)
			{
				Measure([&] { Open.Application.PumpFrame(); });
			}
			if (Open.GetMessages().Num() != Count || !IsEndShown() ||
				Open.Tab->GetViewModel()->GetCurrentConversationMetadata()->Id == Before)
			{
				State.SkipWithError("The conversation was not shown.");
				break;
			}
			State.SetIterationTime(Milliseconds * 1.0e-3);
			State.counters["frames"] = Frames;
			State.counters["end_wall_ms"] = Wall;
			for (int32 Quiet = 0; Quiet < 10 && Frames < 1000; ++Frames)
			{
				const uint64 Painted = Stats.PaintedFrames;
				Measure([&] { Open.Application.PumpFrame(); });
				Quiet = Stats.PaintedFrames == Painted ? Quiet + 1 : 0;
			}
			State.counters["still_ms"] = Milliseconds;
			State.counters["still_frames"] = Frames;
			State.counters["worst_frame_ms"] = WorstFrame;
		}
	}
	BENCHMARK(LoadConversation)
		->Args({ 20, 0 })
		->Args({ 10000, 0 })
		->Args({ 10000, 1 })
		->Args({ 100000, 0 })
		->Iterations(3)
		->UseManualTime()
		->Unit(benchmark::kMillisecond);

	/** The history of so many conversations, read by a worker: the frame in which it arrives, then the click that opens it. */
	void RefreshHistory(benchmark::State& State)
	{
		FOpenTab Open(
			[&State](const FString& Database)
			{
				FMadeStore::Fill(Database, static_cast<int32>(State.range(0)), 2,
					[](int32 Number) { return FRecordedMix::MakeWords(MessageLength, Number); });
			});
		const TSharedPtr<SChatWindow> Window = StaticCastSharedPtr<SChatWindow>(FWidgetFinder::FindByTag(FName("ChatWindow")));
		std::vector<double> Arrivals;
		std::vector<double> Openings;
		for (auto _ : State)
		{
			Window->RequestConversationHistoryRefreshForTests();
			FHostTasks::WaitForBackground(20.0);
			const double Start = FHeadlessApplication::GetThreadSeconds();
			Open.Application.PumpFrame();
			Arrivals.push_back(GetMilliseconds(Start));
			State.SetIterationTime(Arrivals.back() * 1.0e-3);
			const double ClickStart = FHeadlessApplication::GetThreadSeconds();
			Open.ClickTag(FName("ConversationComboBox"));
			Openings.push_back(GetMilliseconds(ClickStart));
			Open.Application.PressKey(EKeys::Escape);
			Open.Settle();
		}
		State.counters["options"] = Window->GetConversationDropdownOptionCountForTests();
		TellTimes(State, "arrival_", Arrivals);
		TellTimes(State, "opening_", Openings);
	}
	BENCHMARK(RefreshHistory)->Arg(20)->Arg(10000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Work done in frames of a tab in which nothing happens, ten a second. */
	void MeasureRest(benchmark::State& State, FOpenTab& Open)
	{
		ITextShaper& Shaper = ITextShaper::Get();
		constexpr int32 Frames = 300;
		const auto Measured = SWidget::GetCounters();
		const auto Texts = Shaper.GetCounters();
		const uint64 Painted = FSlateApplication::Get().GetFrameStats().PaintedFrames;
		std::vector<double> Times;
		std::vector<uint64> Allocations;
		for (auto _ : State)
		{
			Times.reserve(Frames);
			Allocations.reserve(Frames);
			for (int32 Frame = 0; Frame < Frames; ++Frame)
			{
				const uint64 Before = GetAllocationCount();
				const double Start = FHeadlessApplication::GetThreadSeconds();
				Open.Application.PumpFrame(0.1);
				Times.push_back(GetMilliseconds(Start));
				Allocations.push_back(GetAllocationCount() - Before);
			}
			State.SetIterationTime(Times.back() * 1.0e-3);
		}
		// The median: the history is read again once in a minute, by a worker.
		std::sort(Allocations.begin(), Allocations.end());
		State.counters["allocations"] = static_cast<double>(Allocations[Allocations.size() / 2]);
		State.counters["measured"] = static_cast<double>(SWidget::GetCounters().Measured - Measured.Measured) / Frames;
		State.counters["painted"] = static_cast<double>(SWidget::GetCounters().Painted - Measured.Painted) / Frames;
		State.counters["layouts"] =
			static_cast<double>(Shaper.GetCounters().ParagraphsMade + Shaper.GetCounters().Wraps - Texts.ParagraphsMade - Texts.Wraps);
		State.counters["words"] = static_cast<double>(Shaper.GetCounters().WordsShaped - Texts.WordsShaped);
		State.counters["repaints"] = static_cast<double>(FSlateApplication::Get().GetFrameStats().PaintedFrames - Painted);
		TellTimes(State, "", Times);
	}

	/** The whole tab with its side panel, at the end of a loaded conversation. */
	void RestOfTab(benchmark::State& State)
	{
		const int32 Count = static_cast<int32>(State.range(0));
		FOpenTab Open([Count](const FString& Database)
			{ FMadeStore::Fill(Database, 1, Count, [Count](int32 Number) { return MakeStoredText(Number, Count); }); });
		LoadStored(Open);
		if (Open.GetMessages().Num() != Count)
		{
			State.SkipWithError("The conversation was not loaded.");
			return;
		}
		MeasureRest(State, Open);
	}
	BENCHMARK(RestOfTab)->Arg(20)->Arg(10000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** What a screen reader costs: a look at the tab for it, at the end of a loaded conversation, of which only the first tells something.
	 */
	void LookForScreenReader(benchmark::State& State)
	{
		const int32 Count = static_cast<int32>(State.range(0));
		FOpenTab Open([Count](const FString& Database)
			{ FMadeStore::Fill(Database, 1, Count, [Count](int32 Number) { return MakeStoredText(Number, Count); }); });
		LoadStored(Open);
		FAccessTree Tree;
		std::vector<double> Times;
		for (auto _ : State)
		{
			Open.Application.PumpFrame(0.1);
			const double Start = FHeadlessApplication::GetThreadSeconds();
			State.counters["changes"] += Tree.Update().Num();
			Times.push_back(GetMilliseconds(Start));
			State.SetIterationTime(Times.back() * 1.0e-3);
		}
		TellTimes(State, "", Times);
	}
	BENCHMARK(LookForScreenReader)->Arg(20)->Arg(10000)->Iterations(300)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** A conversation in which the agent has changed so many files, with the list of them open. */
	void RestWithChangedFiles(benchmark::State& State)
	{
		FOpenTab Open;
		FFileOperation Operation;
		for (int32 Number = 0; Number < State.range(0); ++Number)
		{
			Operation.Path = FString::Printf(TEXT("File%d.cpp"), Number);
			Operation.Action = 2;
			Operation.Time = FDateTime::Now() - FTimespan::FromSeconds(60.0 * (5 + Number));
			FFileHistoryTracker::Get().AddOperation(
				Open.Tab->GetViewModel()->GetCurrentConversationMetadata()->Id, TEXT("measured"), Operation);
		}
		StaticCastSharedPtr<SChangedFilesList>(FWidgetFinder::FindByTag(FName("ChangedFilesList")))->UpdateFileList();
		Open.Settle();
		Open.ClickTag(FName("ChangedFilesHeader"));
		Open.Settle();
		if (FWidgetFinder::FindByText(TEXT("File0.cpp")).Num() == 0)
		{
			State.SkipWithError("The list did not open.");
			return;
		}
		MeasureRest(State, Open);
	}
	BENCHMARK(RestWithChangedFiles)->Arg(3)->Arg(1000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** The same with the pages of the behaviour texts. */
	void RestOfTabWithBehaviour(benchmark::State& State)
	{
		FOpenTab Open;
		Open.Tab->ToggleCustomizeBehaviorVisibility();
		Open.Settle();
		MeasureRest(State, Open);
	}
	BENCHMARK(RestOfTabWithBehaviour)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** A conversation whose first message, which is its title, has so many characters. */
	void RestWithLongTitle(benchmark::State& State)
	{
		const int32 Length = static_cast<int32>(State.range(0));
		FOpenTab Open(
			[Length](const FString& Database)
			{
				FMadeStore::Fill(Database, 1, 2,
					[Length](int32 Number) { return FRecordedMix::MakeWords(Number == 0 ? Length : MessageLength, Number); });
			});
		LoadStored(Open);
		if (Open.GetMessages().Num() != 2)
		{
			State.SkipWithError("The conversation was not loaded.");
			return;
		}
		MeasureRest(State, Open);
	}
	BENCHMARK(RestWithLongTitle)->Arg(100)->Arg(10000000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Text pasted into the prompt of the tab, then single letters, at the end, in the middle and at the start. */
	void TypeIntoPrompt(benchmark::State& State, const FString& Text, const TCHAR* TypedFirst)
	{
		for (auto _ : State)
		{
			FOpenTab Open;
			FHeadlessApplication& Application = Open.Application;
			const TSharedRef<SMultiLineEditableTextBox> Prompt = Open.FocusPrompt();
			FPlatformApplicationMisc::ClipboardCopy(*Text);
			const double Start = FHeadlessApplication::GetThreadSeconds();
			Application.PressControlKey(EKeys::V);
			Application.PumpFrame();
			const double Pasted = FHeadlessApplication::GetThreadSeconds() - Start;
			State.SetIterationTime(Pasted);
			Application.PumpFrame();
			if (Prompt->GetText().ToString().Len() != Text.Len())
			{
				State.SkipWithError("The text did not arrive.");
				break;
			}
			const auto TypeAt = [&](const char* Where)
			{
				for (const TCHAR* Char = TypedFirst; *Char; ++Char)
				{
					Application.Type(FStringView(Char, 1));
					Application.PumpFrame();
				}
				std::vector<double> Times;
				for (int32 Letter = 0; Letter < 20; ++Letter)
				{
					const double LetterStart = FHeadlessApplication::GetThreadSeconds();
					Application.Type(TEXT("x"));
					Application.PumpFrame();
					Times.push_back(GetMilliseconds(LetterStart));
				}
				for (int32 Letter = 0; Letter < 20; ++Letter)
				{
					const double LetterStart = FHeadlessApplication::GetThreadSeconds();
					Application.PressKey(EKeys::BackSpace);
					Application.PumpFrame();
					Times.push_back(GetMilliseconds(LetterStart));
				}
				for (const FKey& Key : { EKeys::Left, EKeys::Right })
				{
					const double KeyStart = FHeadlessApplication::GetThreadSeconds();
					Application.PressKey(Key);
					Application.PumpFrame();
					Times.push_back(GetMilliseconds(KeyStart));
				}
				TellTimes(State, Where, Times);
			};
			TypeAt("end_");
			const int32 Lines = Prompt->GetCursorLocation().GetLineIndex();
			Prompt->GoTo(FTextLocation(Lines / 2, Lines > 0 ? 3 : Text.Len() / 2));
			Application.PumpFrame();
			TypeAt("middle_");
			Prompt->GoTo(FTextLocation(0, 0));
			Application.PumpFrame();
			TypeAt("start_");
			State.counters["dropdown"] = FWidgetFinder::FindByTag(FName("FileSearchDropdown")).IsValid() ? 1.0 : 0.0;
			std::vector<double> Others;
			const auto MeasureKey = [&](auto&& Press)
			{
				const double KeyStart = FHeadlessApplication::GetThreadSeconds();
				Press();
				Application.PumpFrame();
				Others.push_back(GetMilliseconds(KeyStart));
			};
			// Breaks, ends, words, undo; then all is cut away and comes back.
			Application.PressKey(EKeys::Escape);
			Application.PumpFrame();
			for (const FKey& Key : { EKeys::Enter, EKeys::BackSpace, EKeys::Home, EKeys::Down, EKeys::Up, EKeys::PageDown, EKeys::End })
			{
				MeasureKey([&] { Application.PressKey(Key); });
			}
			for (const FKey& Key :
				{ EKeys::End, EKeys::Left, EKeys::Right, EKeys::Home, EKeys::Right, EKeys::Z, EKeys::Y, EKeys::A, EKeys::X, EKeys::Z })
			{
				MeasureKey([&] { Application.PressControlKey(Key); });
			}
			TellTimes(State, "other_", Others);
			std::vector<double> Rest;
			for (int32 Frame = 0; Frame < 20; ++Frame)
			{
				const double FrameStart = FHeadlessApplication::GetThreadSeconds();
				Application.PumpFrame();
				Rest.push_back(GetMilliseconds(FrameStart));
			}
			TellTimes(State, "rest_", Rest);
		}
	}

	constexpr int32 LongPrompt = 5000000;

	FString MakePromptLine()
	{
		return FRecordedMix::MakeWords(LongPrompt, 1);
	}

	FString Repeat(const FString& Part, int32 Length)
	{
		FString Text;
		Text.Reserve(Length + Part.Len());
		while (Text.Len() < Length)
		{
			Text += Part;
		}
		return Text;
	}

	FString MakePromptLines()
	{
		FString Text;
		Text.Reserve(LongPrompt + 1000);
		for (int32 Line = 0; Line < 100000; ++Line)
		{
			Text += FRecordedMix::MakeWords(38, Line).Left(49);
			Text += TEXT("\n");
		}
		return Text;
	}

	BENCHMARK_CAPTURE(TypeIntoPrompt, OneLine, MakePromptLine(), TEXT(""))->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
	BENCHMARK_CAPTURE(TypeIntoPrompt, OneLineWithAt, MakePromptLine(), TEXT(" @fi"))
		->Iterations(1)
		->UseManualTime()
		->Unit(benchmark::kMillisecond);
	BENCHMARK_CAPTURE(TypeIntoPrompt, Lines, MakePromptLines(), TEXT(""))->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
	BENCHMARK_CAPTURE(TypeIntoPrompt, LinesWithAt, MakePromptLines(), TEXT(" @fi"))
		->Iterations(1)
		->UseManualTime()
		->Unit(benchmark::kMillisecond);
	/** The whole text is one token, and with it the query. */
	BENCHMARK_CAPTURE(TypeIntoPrompt, LongToken, TEXT("@") + FString::ChrN(LongPrompt, TEXT('a')), TEXT(""))
		->Iterations(1)
		->UseManualTime()
		->Unit(benchmark::kMillisecond);
	/** Scripts that are shaped whole, in one line. */
	BENCHMARK_CAPTURE(TypeIntoPrompt, OneLineOfArabic,
		Repeat(TEXT("\u0645\u0631\u062D\u0628\u0627 \u0628\u0627\u0644\u0639\u0627\u0644\u0645 "), LongPrompt), TEXT(""))
		->Iterations(1)
		->UseManualTime()
		->Unit(benchmark::kMillisecond);
	BENCHMARK_CAPTURE(TypeIntoPrompt, OneLineOfEmoji, Repeat(TEXT("\U0001F469\u200D\U0001F680"), LongPrompt), TEXT(""))
		->Iterations(1)
		->UseManualTime()
		->Unit(benchmark::kMillisecond);

	/** Letters into an empty prompt below a loaded conversation. */
	void TypeBelowConversation(benchmark::State& State)
	{
		const int32 Count = static_cast<int32>(State.range(0));
		FOpenTab Open([Count](const FString& Database)
			{ FMadeStore::Fill(Database, 1, Count, [Count](int32 Number) { return MakeStoredText(Number, Count); }); });
		LoadStored(Open);
		Open.FocusPrompt();
		std::vector<double> Times;
		for (auto _ : State)
		{
			const double Start = FHeadlessApplication::GetThreadSeconds();
			Open.Application.Type(TEXT("x"));
			Open.Application.PumpFrame();
			Times.push_back(GetMilliseconds(Start));
			State.SetIterationTime(Times.back() * 1.0e-3);
		}
		TellTimes(State, "", Times);
	}
	BENCHMARK(TypeBelowConversation)->Arg(20)->Arg(10000)->Arg(100000)->Iterations(200)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Ctrl+Enter, until nothing moves. The key counts as part of its frame. */
	void SendPrompt(benchmark::State& State, FOpenTab& Open, const FString& Text)
	{
		const TSharedRef<SMultiLineEditableTextBox> Prompt = Open.FocusPrompt();
		Prompt->SetText(FText::FromString(Text));
		Open.Application.PumpFrame();
		double Slowest = 0.0;
		double Together = 0.0;
		constexpr int32 Frames = 120;
		for (int32 Frame = 0; Frame < Frames; ++Frame)
		{
			const double Start = FHeadlessApplication::GetThreadSeconds();
			if (Frame == 0)
			{
				Open.Application.PressControlKey(EKeys::Enter);
				State.counters["key_ms"] = GetMilliseconds(Start);
			}
			Open.Application.PumpFrame();
			const double Milliseconds = GetMilliseconds(Start);
			Together += Milliseconds;
			Slowest = std::max(Slowest, Milliseconds);
		}
		State.SetIterationTime(Together * 1.0e-3);
		State.counters["slowest_ms"] = Slowest;
		State.counters["messages"] = Open.GetMessages().Num();
		State.counters["left"] = Prompt->GetText().ToString().Len();
	}

	void SendLongPrompt(benchmark::State& State)
	{
		const FString Text = State.range(0) == 1 ? MakePromptLine() : MakePromptLines();
		for (auto _ : State)
		{
			FOpenTab Open;
			SendPrompt(State, Open, Text);
		}
	}
	BENCHMARK(SendLongPrompt)->Arg(1)->Arg(100000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** A one-line box that takes a text of so many megabytes from the clipboard, then letters, keys and undo. Frames with their key. */
	void PasteIntoOneLine(benchmark::State& State)
	{
		const int32 Length = static_cast<int32>(State.range(0)) * 1000000;
		const FString Text = Repeat(MakePromptLine(), Length).Left(Length);
		for (auto _ : State)
		{
			FHeadlessApplication Application;
			const TSharedRef<SEditableTextBox> Box = SNew(SEditableTextBox);
			Application.Show(Box);
			Application.Settle();
			FSlateApplication::Get().SetKeyboardFocus(Box);
			FPlatformApplicationMisc::ClipboardCopy(*Text);
			double Slowest = 0.0;
			const auto Measure = [&](const char* Name, auto&& Press)
			{
				const double Start = FHeadlessApplication::GetThreadSeconds();
				Press();
				Application.PumpFrame();
				const double Milliseconds = GetMilliseconds(Start);
				State.counters[Name] = Milliseconds;
				Slowest = std::max(Slowest, Milliseconds);
			};
			Measure("paste_ms", [&] { Application.PressControlKey(EKeys::V); });
			Measure("next_ms", [] {});
			Measure("letter_ms", [&] { Application.Type(TEXT("x")); });
			Measure("start_ms", [&] { Application.PressKey(EKeys::Home); });
			Measure("undo_ms", [&] { Application.PressControlKey(EKeys::Z); });
			Measure("all_ms", [&] { Application.PressControlKey(EKeys::A); });
			Measure("delete_ms", [&] { Application.PressKey(EKeys::Delete); });
			State.SetIterationTime(Slowest * 1.0e-3);
		}
	}
	BENCHMARK(PasteIntoOneLine)->Arg(1)->Arg(40)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	void SendBelowConversation(benchmark::State& State)
	{
		const int32 Count = static_cast<int32>(State.range(0));
		FOpenTab Open([Count](const FString& Database)
			{ FMadeStore::Fill(Database, 1, Count, [Count](int32 Number) { return MakeStoredText(Number, Count); }); });
		LoadStored(Open);
		for (auto _ : State)
		{
			SendPrompt(State, Open, TEXT("What was the last line?"));
		}
	}
	BENCHMARK(SendBelowConversation)->Arg(20)->Arg(100000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK_MAIN();

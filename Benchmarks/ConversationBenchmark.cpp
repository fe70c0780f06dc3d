#include "Containers/UnrealString.h"
#include "HAL/PlatformApplicationMisc.h"
#include "Host/HostServices.h"
#include "Host/TextShaper.h"
#include "Support/AllocationCount.h"
#include "Support/HeadlessApplication.h"
#include "Support/RecordedMix.h"
#include "Widgets/Input/SEditableTextBox.h"
#include "Widgets/Input/SMultiLineEditableTextBox.h"
#include "Widgets/SBoxPanel.h"
#include "Widgets/SMessageList.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// The message list of the chat in a window of 1280×800 without a screen: opening, resting, appending, scrolling, and the
// extremes. Times are processor time of the one thread. Run "ConversationBenchmark --benchmark_filter=Idle" for a part.

namespace
{

	double GetMilliseconds(double Since)
	{
		return (FHeadlessApplication::GetThreadSeconds() - Since) * 1.0e3;
	}

	struct FWork
	{
		uint64 Allocations = GetAllocationCount();
		uint64 Measured = SWidget::GetCounters().Measured;
		uint64 Painted = SWidget::GetCounters().Painted;
		uint64 Layouts = ITextShaper::Get().GetCounters().ParagraphsMade + ITextShaper::Get().GetCounters().Wraps;
		uint64 Words = ITextShaper::Get().GetCounters().WordsShaped;
		uint64 PaintedFrames = FSlateApplication::Get().GetFrameStats().PaintedFrames;
	};

	/** What was done since, for each of so many. */
	void TellWork(benchmark::State& State, const FWork& Before, double Count)
	{
		const FWork Now;
		State.counters["allocations"] = static_cast<double>(Now.Allocations - Before.Allocations) / Count;
		State.counters["measured"] = static_cast<double>(Now.Measured - Before.Measured) / Count;
		State.counters["painted"] = static_cast<double>(Now.Painted - Before.Painted) / Count;
		State.counters["layouts"] = static_cast<double>(Now.Layouts - Before.Layouts) / Count;
		State.counters["words"] = static_cast<double>(Now.Words - Before.Words) / Count;
		State.counters["repaints"] = static_cast<double>(Now.PaintedFrames - Before.PaintedFrames) / Count;
	}

	void TellTimes(benchmark::State& State, std::vector<double>& Times)
	{
		std::sort(Times.begin(), Times.end());
		State.counters["median_ms"] = Times[Times.size() / 2];
		State.counters["worst_ms"] = Times.back();
	}

	int32 CountWidgets(SWidget& Widget)
	{
		int32 Count = 1;
		FChildren& Children = *Widget.GetChildren();
		for (int32 Index = 0; Index < Children.Num(); ++Index)
		{
			Count += CountWidgets(Children.GetChildRefAt(Index));
		}
		return Count;
	}

	/** Messages, rows and laid-out texts together. Run by itself: what an earlier part has given back would be used again. */
	void MemoryOfMessages(benchmark::State& State)
	{
		const int32 Count = static_cast<int32>(State.range(0));
		for (auto _ : State)
		{
			FHeadlessApplication Application;
			Application.Show(SNew(SMessageList).Messages(FRecordedMix::MakeMany(20)));
			Application.Settle();
			const double Before = FHeadlessApplication::GetResidentBytes();
			Application.Show(SNew(SMessageList).Messages(FRecordedMix::MakeMany(Count)));
			Application.Settle();
			State.counters["kB_a_message"] = (FHeadlessApplication::GetResidentBytes() - Before) / 1000.0 / Count;
		}
	}
	BENCHMARK(MemoryOfMessages)->Arg(1000)->Arg(10000)->Iterations(1)->Unit(benchmark::kMillisecond);

	void OpenMessages(benchmark::State& State, const TArray<TSharedPtr<FChatMessage>>& Messages)
	{
		for (auto _ : State)
		{
			FHeadlessApplication Application;
			const double Start = FHeadlessApplication::GetThreadSeconds();
			Application.Show(SNew(SMessageList).Messages(Messages));
			// The list goes to its end on the third frame.
			for (int32 Frame = 0; Frame < 4; ++Frame)
			{
				Application.PumpFrame();
			}
			State.SetIterationTime(FHeadlessApplication::GetThreadSeconds() - Start);
		}
	}

	void OpenConversation(benchmark::State& State)
	{
		OpenMessages(State, FRecordedMix::MakeMany(static_cast<int32>(State.range(0))));
	}
	BENCHMARK(OpenConversation)->Arg(20)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Answers of 1,500 characters each. */
	void OpenLongAnswers(benchmark::State& State)
	{
		TArray<TSharedPtr<FChatMessage>> Messages;
		for (int32 Index = 0; Index < State.range(0); ++Index)
		{
			Messages.Add(FChatMessage::CreateAIMessage(FRecordedMix::MakeWords(1500, Index), false));
		}
		OpenMessages(State, Messages);
	}
	BENCHMARK(OpenLongAnswers)->Arg(1000)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** A settled conversation at its end. */
	void IdleFrame(benchmark::State& State)
	{
		FHeadlessApplication Application;
		const int32 Count = static_cast<int32>(State.range(0));
		Application.Show(SNew(SMessageList).Messages(FRecordedMix::MakeMany(Count)));
		Application.Settle();
		const FWork Before;
		std::vector<double> Times;
		for (auto _ : State)
		{
			const double Start = FHeadlessApplication::GetThreadSeconds();
			Application.PumpFrame(0.1);
			Times.push_back(GetMilliseconds(Start));
			State.SetIterationTime(Times.back() * 1.0e-3);
		}
		TellWork(State, Before, static_cast<double>(State.iterations()));
		TellTimes(State, Times);
	}
	BENCHMARK(IdleFrame)->Arg(20)->Arg(1000)->Arg(10000)->Iterations(500)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** One answer more at the end, until it stands still. The time is that of the append and its first three frames. */
	void AppendMessage(benchmark::State& State)
	{
		FHeadlessApplication Application;
		TArray<TSharedPtr<FChatMessage>> Messages = FRecordedMix::MakeMany(static_cast<int32>(State.range(0)));
		const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
		Application.Show(List);
		Application.Settle();
		// Counted through all runs, so that each answer has a word that was never shaped.
		static int32 Appended = 1000000;
		const FWork Before;
		std::vector<double> Times;
		for (auto _ : State)
		{
			Messages.Add(FRecordedMix::MakeAnswer(++Appended));
			const double Start = FHeadlessApplication::GetThreadSeconds();
			List->SetMessages(Messages);
			for (int32 Frame = 0; Frame < 3; ++Frame)
			{
				Application.PumpFrame();
			}
			Times.push_back(GetMilliseconds(Start));
			State.SetIterationTime(Times.back() * 1.0e-3);
			Application.Settle();
		}
		TellWork(State, Before, static_cast<double>(State.iterations()));
		TellTimes(State, Times);
	}
	BENCHMARK(AppendMessage)->Arg(10)->Arg(20)->Arg(1000)->Arg(10000)->Iterations(30)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** A frame a turn of the wheel: in large steps over parts never seen before, then in small ones. Turns round at either end. */
	void ScrollByWheel(benchmark::State& State, FHeadlessApplication& Application, float LargeStep)
	{
		const FWork Before;
		std::vector<double> Times;
		float Direction = 1.0f;
		for (auto _ : State)
		{
			const uint64 PaintedFrames = FSlateApplication::Get().GetFrameStats().PaintedFrames;
			const float Step = Times.size() % 500 < 250 ? LargeStep : 1.0f;
			const double Start = FHeadlessApplication::GetThreadSeconds();
			Application.Wheel(Direction * Step);
			Application.PumpFrame();
			Times.push_back(GetMilliseconds(Start));
			State.SetIterationTime(Times.back() * 1.0e-3);
			if (FSlateApplication::Get().GetFrameStats().PaintedFrames == PaintedFrames)
			{
				Direction = -Direction;
			}
		}
		TellWork(State, Before, static_cast<double>(State.iterations()));
		TellTimes(State, Times);
	}

	void ScrollFrame(benchmark::State& State)
	{
		FHeadlessApplication Application;
		Application.Show(SNew(SMessageList).Messages(FRecordedMix::MakeMany(static_cast<int32>(State.range(0)))));
		Application.Settle();
		ScrollByWheel(State, Application, 12.0f);
	}
	BENCHMARK(ScrollFrame)->Arg(20)->Arg(1000)->Arg(10000)->Iterations(2000)->UseManualTime()->Unit(benchmark::kMillisecond);

	void ScrollAnswer(benchmark::State& State, const FString& Text)
	{
		FHeadlessApplication Application;
		TArray<TSharedPtr<FChatMessage>> Messages = FRecordedMix::MakeMany(10);
		Messages.Add(FChatMessage::CreateAIMessage(Text, false));
		const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
		Application.Show(List);
		Application.Settle();
		ScrollByWheel(State, Application, 40.0f);
		State.counters["widgets"] = CountWidgets(*List);
	}

	/** Lines of text with line ends between them: every line and every end is a widget. */
	void ScrollRowOfManyWidgets(benchmark::State& State)
	{
		FString Text;
		for (int32 Line = 0; Line < State.range(0) / 2; ++Line)
		{
			Text += FString::Printf(TEXT("Line %d of the log\n"), Line);
		}
		ScrollAnswer(State, Text);
	}
	BENCHMARK(ScrollRowOfManyWidgets)->Arg(1000)->Arg(100000)->Iterations(1000)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Words in bold one after the other: one paragraph of so many widgets. */
	void ScrollParagraphOfManyWidgets(benchmark::State& State)
	{
		FString Text;
		for (int32 Word = 0; Word < State.range(0) / 2; ++Word)
		{
			Text += TEXT("**bold** plain ");
		}
		ScrollAnswer(State, Text);
	}
	BENCHMARK(ScrollParagraphOfManyWidgets)->Arg(100000)->Iterations(1000)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** From the text to its end on screen. */
	void ShowAnswer(benchmark::State& State, const FString& Text)
	{
		for (auto _ : State)
		{
			FHeadlessApplication Application;
			const double ResidentBefore = FHeadlessApplication::GetResidentBytes();
			TArray<TSharedPtr<FChatMessage>> Messages;
			Messages.Add(FChatMessage::CreateAIMessage(Text, false));
			const double Start = FHeadlessApplication::GetThreadSeconds();
			const TSharedRef<SMessageList> List = SNew(SMessageList).Messages(Messages);
			Application.Show(List);
			Application.PumpFrame();
			State.counters["first_frame_ms"] = GetMilliseconds(Start);
			for (int32 Frame = 0; Frame < 3; ++Frame)
			{
				Application.PumpFrame();
			}
			State.SetIterationTime(FHeadlessApplication::GetThreadSeconds() - Start);
			State.counters["resident_MB"] = (FHeadlessApplication::GetResidentBytes() - ResidentBefore) / 1.0e6;
			const double IdleStart = FHeadlessApplication::GetThreadSeconds();
			Application.PumpFrame();
			State.counters["next_frame_ms"] = GetMilliseconds(IdleStart);
			State.counters["widgets"] = CountWidgets(*List);
		}
	}

	void ShowTenMegabytesOfMarkdown(benchmark::State& State)
	{
		ShowAnswer(State, FRecordedMix::MakeMarkdown(10000000));
	}
	BENCHMARK(ShowTenMegabytesOfMarkdown)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	void ShowTenMegabytesInOneParagraph(benchmark::State& State)
	{
		ShowAnswer(State, FRecordedMix::MakeWords(10000000, 1));
	}
	BENCHMARK(ShowTenMegabytesInOneParagraph)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** So many megabytes of nothing but marks: a widget for every one to three characters. Ten of them take up to 5 GB. */
	void ShowMarks(benchmark::State& State, const TCHAR* Marks)
	{
		FString Text;
		Text.Reserve(static_cast<int32>(State.range(0)) * 1000000 + 100);
		while (Text.Len() < State.range(0) * 1000000)
		{
			Text += Marks;
		}
		ShowAnswer(State, Text);
	}
	BENCHMARK_CAPTURE(ShowMarks, Emphases, TEXT("*a* **b** `c` "))
		->Arg(1)
		->Arg(10)
		->Iterations(1)
		->UseManualTime()
		->Unit(benchmark::kMillisecond);
	BENCHMARK_CAPTURE(ShowMarks, Code, TEXT("`c` "))->Arg(1)->Arg(10)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
	BENCHMARK_CAPTURE(ShowMarks, Links, TEXT("[a](b) "))->Arg(1)->Arg(10)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
	BENCHMARK_CAPTURE(ShowMarks, Items, TEXT("- a\n"))->Arg(1)->Arg(10)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
	BENCHMARK_CAPTURE(ShowMarks, Quotes, TEXT("> a\n"))->Arg(1)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	void ShowMillionLineFeeds(benchmark::State& State)
	{
		FString Text = TEXT("Top");
		for (int32 Line = 0; Line < 1000000; ++Line)
		{
			Text += TEXT("\n");
		}
		Text += TEXT("Bottom");
		ShowAnswer(State, Text);
	}
	BENCHMARK(ShowMillionLineFeeds)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Lines of this repository's own C++, as an answer with a block of code. */
	FString MakeCodeAnswer(int32 LineCount)
	{
		std::vector<std::filesystem::path> Paths;
		for (const std::filesystem::directory_entry& Entry : std::filesystem::recursive_directory_iterator(VELMORA_SOURCE_DIR "/Source"))
		{
			if (Entry.path().extension() == ".cpp")
			{
				Paths.push_back(Entry.path());
			}
		}
		std::sort(Paths.begin(), Paths.end());
		std::string Code = "```cpp\n";
		int32 Lines = 0;
		while (Lines < LineCount && !Paths.empty())
		{
			for (const std::filesystem::path& Path : Paths)
			{
				std::ifstream File(Path);
				for (std::string Line; Lines < LineCount && std::getline(File, Line); ++Lines)
				{
					Code += Line + '\n';
				}
			}
		}
		return FString(UTF8_TO_TCHAR((Code + "```\n").c_str()));
	}

	void ShowCode(benchmark::State& State)
	{
		ShowAnswer(State, MakeCodeAnswer(static_cast<int32>(State.range(0))));
	}
	BENCHMARK(ShowCode)->Arg(1000)->Arg(10000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** Code without line ends, as minifiers write it: one line of so many characters. */
	FString MakeMinifiedAnswer(int32 Length)
	{
		FString Text = TEXT("```cpp\n");
		for (int32 Number = 0; Text.Len() < Length; ++Number)
		{
			Text += FString::Printf(TEXT("auto v%d=[](int a,int b){return a+b*%d;};"), Number, Number);
		}
		return Text + TEXT("\n```\n");
	}

	void ShowMinifiedCode(benchmark::State& State)
	{
		ShowAnswer(State, MakeMinifiedAnswer(static_cast<int32>(State.range(0))));
	}
	BENCHMARK(ShowMinifiedCode)->Arg(1000000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

	void ScrollMinifiedCode(benchmark::State& State)
	{
		ScrollAnswer(State, MakeMinifiedAnswer(static_cast<int32>(State.range(0))));
	}
	BENCHMARK(ScrollMinifiedCode)->Arg(1000000)->Iterations(100)->UseManualTime()->Unit(benchmark::kMillisecond);

	void ScrollCode(benchmark::State& State)
	{
		ScrollAnswer(State, MakeCodeAnswer(static_cast<int32>(State.range(0))));
	}
	BENCHMARK(ScrollCode)->Arg(1000)->Arg(10000)->Iterations(1000)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** 5 MB in 50,000 lines into the box of the prompt, then single letters. */
	void PasteIntoPrompt(benchmark::State& State)
	{
		FString Text;
		for (int32 Line = 0; Line < 50000; ++Line)
		{
			Text += FRecordedMix::MakeWords(90, Line);
			Text += TEXT("\n");
		}
		for (auto _ : State)
		{
			FHeadlessApplication Application;
			const TSharedRef<SMultiLineEditableTextBox> Box = SNew(SMultiLineEditableTextBox).AutoWrapText(true);
			Application.Show(Box);
			Application.PumpFrame();
			Application.Click(FVector2D(100.0, 100.0));
			Application.PumpFrame();
			FPlatformApplicationMisc::ClipboardCopy(*Text);
			const double Start = FHeadlessApplication::GetThreadSeconds();
			Application.PressControlKey(EKeys::V);
			Application.PumpFrame();
			State.SetIterationTime(FHeadlessApplication::GetThreadSeconds() - Start);
			State.counters["characters"] = Box->GetText().ToString().Len();
			std::vector<double> Times;
			for (int32 Letter = 0; Letter < 50; ++Letter)
			{
				const double LetterStart = FHeadlessApplication::GetThreadSeconds();
				Application.Type(TEXT("x"));
				Application.PumpFrame();
				Times.push_back(GetMilliseconds(LetterStart));
			}
			TellTimes(State, Times);
		}
	}
	BENCHMARK(PasteIntoPrompt)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

	/** 40 MB into a box of one line, at once or as many lines, which become one; then letters, both ends of the line and undo. */
	void PasteIntoOneLineBox(benchmark::State& State)
	{
		constexpr int32 Length = 40 * 1024 * 1024;
		const bool bHasLines = State.range(0) != 0;
		FString Text;
		Text.Reserve(Length + 100);
		for (int32 Line = 0; Text.Len() < Length; ++Line)
		{
			Text += FRecordedMix::MakeWords(90, Line);
			Text += bHasLines ? TEXT("\n") : TEXT(" ");
		}
		for (auto _ : State)
		{
			FHeadlessApplication Application;
			const TSharedRef<SEditableTextBox> Box = SNew(SEditableTextBox);
			// clang-format off
			Application.Show(
				SNew(SVerticalBox)
				+ SVerticalBox::Slot()
				.AutoHeight()
				[
					Box
				]);
			// clang-format on
			Application.PumpFrame();
			Application.Click(FVector2D(100.0, 10.0));
			Application.PumpFrame();
			FHostServices::ClipboardCopy(Text);
			std::vector<double> Times;
			const auto Measure = [&Application, &Times](TFunctionRef<void()> Do)
			{
				const double Start = FHeadlessApplication::GetThreadSeconds();
				Do();
				Application.PumpFrame();
				Times.push_back(GetMilliseconds(Start));
			};
			Measure([&] { Application.PressControlKey(EKeys::V); });
			State.SetIterationTime(Times.front() / 1000.0);
			State.counters["characters"] = Box->GetText().ToString().Len();
			for (int32 Round = 0; Round < 5; ++Round)
			{
				for (const FKey& Key : { EKeys::Home, EKeys::Right, EKeys::End, EKeys::Left, EKeys::BackSpace })
				{
					Measure([&] { Application.PressKey(Key); });
				}
				Measure([&] { Application.Type(TEXT("x")); });
				Measure([&] { Application.PressControlKey(EKeys::Left); });
			}
			Measure([&] { Application.PressControlKey(EKeys::A); });
			Measure([&] { Application.PressControlKey(EKeys::Z); });
			TellTimes(State, Times);
		}
	}
	BENCHMARK(PasteIntoOneLineBox)->Arg(0)->Arg(1)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();

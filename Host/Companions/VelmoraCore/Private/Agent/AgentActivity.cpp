#include "Host/AgentActivity.h"

#include <map>

#include "HAL/PlatformTime.h"
#include "Host/AgentSeam.h"
#include "Model/ActivityFeed.h"
#include "Text/Utf8Text.h"

// What the game thread knows of the activity: the rows that are shown.

namespace Velmora
{
	namespace
	{
		/** What belongs to a row and is no business of those who draw it. */
		struct FRowState
		{
			double OpenedAt = 0.0;

			/** The first bytes of a character whose rest has not come. */
			std::string HeldText;
			std::string HeldThinking;
		};

		struct FActivityLog
		{
			TArray<TSharedRef<const FAgentActivityEntry>> Entries;
			TArray<TSharedRef<FAgentActivityEntry>> Writable;
			std::map<uint32, FRowState> States;
			TFunction<void()> Listener;
			uint32 Revision = 0;
		};

		FActivityLog& GetLog()
		{
			static FActivityLog Log;
			return Log;
		}

		int64 MeasureEntry(const FAgentActivityEntry& Entry)
		{
			return int64(Entry.Title.Len()) + Entry.Outcome.Len() + Entry.Input.Len() + Entry.Text.Len() + Entry.Thinking.Len();
		}

		/** How many bytes at the end are the beginning of a character. */
		size_t CountHeldBytes(std::string_view Bytes)
		{
			for (size_t Back = 1; Back <= std::min<size_t>(3, Bytes.size()); ++Back)
			{
				const unsigned char Byte = static_cast<unsigned char>(Bytes[Bytes.size() - Back]);
				if (Byte >= 0xC0)
				{
					const size_t Length = Byte >= 0xF0 ? 4 : Byte >= 0xE0 ? 3 : 2;
					return Length > Back ? Back : 0;
				}
				if (Byte < 0x80)
				{
					return 0;
				}
			}
			return 0;
		}

		constexpr const TCHAR* CutMark = TEXT("[…] ");

		void AppendBytes(FString& Text, std::string& Held, const std::string& Bytes)
		{
			Held += Bytes;
			// A frame waits for this, and a fast server sends more in its time than is kept: that is not even converted.
			constexpr size_t MaxBytes = static_cast<size_t>(FAgentActivity::MaxTextLength);
			if (Held.size() > MaxBytes)
			{
				size_t First = Held.size() - MaxBytes;
				while (First < Held.size() && (static_cast<unsigned char>(Held[First]) & 0xC0) == 0x80)
				{
					++First;
				}
				Held.erase(0, First);
				Text = CutMark;
			}
			const size_t Length = Held.size() - CountHeldBytes(Held);
			Text += Utf8Text::ToString(std::string_view(Held).substr(0, Length));
			Held.erase(0, Length);
			// The end of what streams is what one looks at.
			if (Text.Len() > 2 * FAgentActivity::MaxTextLength)
			{
				Text = CutMark + Text.Right(FAgentActivity::MaxTextLength);
			}
		}

		void CutEnd(FString& Text, int32 MaxLength)
		{
			if (Text.Len() > MaxLength)
			{
				Text = Text.Left(MaxLength) + TEXT("\n[The rest is not kept here.]");
			}
		}

		void DropOldest(FActivityLog& Log)
		{
			int64 Total = 0;
			for (const TSharedRef<const FAgentActivityEntry>& Entry : Log.Entries)
			{
				Total += MeasureEntry(*Entry);
			}
			int32 Count = 0;
			while (Log.Entries.Num() - Count > 1 &&
				(Log.Entries.Num() - Count > FAgentActivity::MaxEntries || Total > FAgentActivity::MaxTotalLength))
			{
				Total -= MeasureEntry(*Log.Entries[Count]);
				Log.States.erase(Log.Entries[Count]->Id);
				++Count;
			}
			Log.Entries.RemoveAt(0, Count);
			Log.Writable.RemoveAt(0, Count);
		}

		void TakeItem(FActivityLog& Log, FActivityFeed::FItem& Item)
		{
			if (Item.Opened.IsValid())
			{
				const TSharedRef<FAgentActivityEntry> Entry = Item.Opened.ToSharedRef();
				CutEnd(Entry->Input, FAgentActivity::MaxInputLength);
				Log.Entries.Add(Entry);
				Log.Writable.Add(Entry);
				Log.States[Entry->Id].OpenedAt = Item.OpenedAt;
			}
			const TSharedRef<FAgentActivityEntry>* const Found =
				Log.Writable.FindByPredicate([&Item](const TSharedRef<FAgentActivityEntry>& Entry) { return Entry->Id == Item.Id; });
			if (!Found)
			{
				return; // It was cleared away while it was under way.
			}
			FAgentActivityEntry& Entry = **Found;
			FRowState& State = Log.States[Entry.Id];
			AppendBytes(Entry.Text, State.HeldText, Item.Text);
			AppendBytes(Entry.Thinking, State.HeldThinking, Item.Thinking);
			Entry.PieceCount += Item.Pieces;
			if (Item.Fill)
			{
				Entry.Seconds = Item.ClosedAt - State.OpenedAt;
				Entry.bIsDone = true;
				Item.Fill(Entry);
				CutEnd(Entry.Text, FAgentActivity::MaxTextLength);
				CutEnd(Entry.Thinking, FAgentActivity::MaxTextLength);
			}
		}

		void Announce(FActivityLog& Log)
		{
			++Log.Revision;
			// On a copy, since a listener may set another one.
			if (const TFunction<void()> Listener = Log.Listener)
			{
				Listener();
			}
		}
	}

	void TakeActivity()
	{
		FActivityLog& Log = GetLog();
		std::vector<FActivityFeed::FItem> Items = FActivityFeed::Get().Take();
		for (FActivityFeed::FItem& Item : Items)
		{
			TakeItem(Log, Item);
		}
		DropOldest(Log);
		Announce(Log);
	}

	bool FAgentActivityEntry::GetContext(int64& OutUsed, int64& OutLeft) const
	{
		OutUsed = FMath::Max<int64>(PromptTokens, 0) + FMath::Max<int64>(CompletionTokens, 0);
		OutLeft = FMath::Max<int64>(ContextTokens - OutUsed, 0);
		return PromptTokens >= 0 && ContextTokens > 0;
	}

	const TArray<TSharedRef<const FAgentActivityEntry>>& FAgentActivity::GetEntries()
	{
		return GetLog().Entries;
	}

	uint32 FAgentActivity::GetRevision()
	{
		return GetLog().Revision;
	}

	double FAgentActivity::GetSeconds(const FAgentActivityEntry& Entry)
	{
		const auto State = GetLog().States.find(Entry.Id);
		return Entry.bIsDone || State == GetLog().States.end() ? Entry.Seconds : FPlatformTime::Seconds() - State->second.OpenedAt;
	}

	void FAgentActivity::SetListener(TFunction<void()> Listener)
	{
		GetLog().Listener = MoveTemp(Listener);
	}

	void FAgentActivity::Clear()
	{
		FActivityLog& Log = GetLog();
		Log.Entries.Empty();
		Log.Writable.Empty();
		Log.States.clear();
		Announce(Log);
	}

	FAgentTurnStatus FAgentActivity::GetTurnStatus()
	{
		const auto GetUsual = [] { return FActivityFeed::Get().GetTurnStatus(); };
		const std::shared_ptr<IAgentSeam> Seam = FAgentSeam::Get();
		return Seam ? Seam->GetTurnStatus(GetUsual) : GetUsual();
	}
}

#include "Http/EventStreamReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Velmora
{
	namespace
	{
		// The format is published with HTML as "Server-sent events". Lines end with CR LF, LF or CR.
		constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
		constexpr std::string_view ErrorName = "error";

		/** What is larger is not copied where that can be helped. */
		constexpr size_t LargeBytes = 1024 * 1024;

		size_t FindByte(std::string_view Bytes, char Byte)
		{
			const void* Found = Bytes.empty() ? nullptr : std::memchr(Bytes.data(), Byte, Bytes.size());
			return Found ? static_cast<size_t>(static_cast<const char*>(Found) - Bytes.data()) : std::string_view::npos;
		}
	}

	FEventStreamReader::FEventStreamReader(FOnEvent InOnEvent, size_t InMaxEventBytes)
		: OnEvent(std::move(InOnEvent))
		, MaxEventBytes(InMaxEventBytes)
	{
	}

	FEventStreamReader::EState FEventStreamReader::Push(std::string_view Bytes)
	{
		// The next line feed is looked for once, so that lines that end with CR alone cost no search to the end each.
		size_t LineFeed = FindByte(Bytes, '\n');
		size_t Start = 0;
		while (State == EState::Open && Start < Bytes.size())
		{
			// CR LF may be split between two pieces: the LF that comes first in the next one belongs to the line that is over.
			if (std::exchange(bSkipsLineFeed, false) && Bytes[Start] == '\n')
			{
				++Start;
				LineFeed = FindByte(Bytes.substr(Start), '\n');
				LineFeed = LineFeed == std::string_view::npos ? LineFeed : LineFeed + Start;
				continue;
			}
			const std::string_view Rest = Bytes.substr(Start);
			const size_t Return = FindByte(Bytes.substr(Start, LineFeed == std::string_view::npos ? LineFeed : LineFeed - Start), '\r');
			const size_t Length = Return != std::string_view::npos ? Return
				: LineFeed != std::string_view::npos			   ? LineFeed - Start
																   : std::string_view::npos;
			// Counted before it is kept, so that a server that never ends a line cannot fill the memory; the event's earlier line counts
			// also while it is not copied, so that the same bytes are too many however they are split.
			const size_t DataBytes = bDataIsView ? DataView.size() : DataText.size();
			if (PartialLine.size() + DataBytes + Rest.substr(0, Length).size() > MaxEventBytes)
			{
				State = EState::TooLarge;
				break;
			}
			if (Length == std::string_view::npos)
			{
				Keep(PartialLine, Rest);
				break;
			}
			bSkipsLineFeed = Rest[Length] == '\r';
			// A whole line within the piece is read in place.
			if (PartialLine.empty())
			{
				TakeLine(Rest.substr(0, Length), true);
			}
			else
			{
				Keep(PartialLine, Rest.substr(0, Length));
				TakeLine(PartialLine, false);
				PartialLine.clear();
			}
			Start += Length + 1;
			if (LineFeed != std::string_view::npos && LineFeed < Start)
			{
				LineFeed = FindByte(Bytes.substr(Start), '\n');
				LineFeed = LineFeed == std::string_view::npos ? LineFeed : LineFeed + Start;
			}
		}
		// The view is into a piece that is gone when this returns.
		KeepData();
		return State;
	}

	FEventStreamReader::EState FEventStreamReader::End()
	{
		if (State == EState::Open && !PartialLine.empty())
		{
			TakeLine(PartialLine, false);
			PartialLine.clear();
		}
		// The format would drop an event without its empty line. Servers that end without one mean it, so it counts, marked as cut off.
		if (State == EState::Open && bHasData)
		{
			Dispatch(true);
		}
		return State;
	}

	void FEventStreamReader::TakeLine(std::string_view Line, bool bLineStays)
	{
		if (std::exchange(bIsFirstLine, false) && Line.starts_with(ByteOrderMark))
		{
			Line.remove_prefix(ByteOrderMark.size());
		}
		if (Line.empty())
		{
			Dispatch(false);
			return;
		}
		const size_t Colon = FindByte(Line, ':');
		const std::string_view Name = Line.substr(0, Colon);
		std::string_view Value = Colon == std::string_view::npos ? std::string_view() : Line.substr(Colon + 1);
		// One blank after the colon belongs to the format, a second one to the value.
		if (Value.starts_with(' '))
		{
			Value.remove_prefix(1);
		}
		if (Name == "data")
		{
			AddData(Value, bLineStays);
		}
		else if (Name == "event")
		{
			Type = Value;
		}
		else if (Name == ErrorName)
		{
			// A field of its own by some servers: dropped, an answer would only seem to break off.
			Type = ErrorName;
			AddData(Value, bLineStays);
		}
	}

	void FEventStreamReader::AddData(std::string_view Value, bool bValueStays)
	{
		// Nearly all events have one line of data, which is then never copied.
		if (!bHasData && bValueStays)
		{
			DataView = Value;
			bDataIsView = true;
			bHasData = true;
			return;
		}
		KeepData();
		if (!bHasData && Value.size() > LargeBytes && PartialLine.ends_with(Value))
		{
			// Two copies of the largest event would be more than it may cost.
			DataText.swap(PartialLine);
			DataText.erase(0, DataText.size() - Value.size());
			bHasData = true;
			return;
		}
		if (std::exchange(bHasData, true))
		{
			DataText += '\n';
		}
		Keep(DataText, Value);
	}

	void FEventStreamReader::Keep(std::string& Text, std::string_view Bytes) const
	{
		// What has become large may become the largest: room for that costs nothing before it is used, and growing step by step would
		// leave the memory full of holes as large as what is kept.
		if (Text.size() + Bytes.size() > std::max(Text.capacity(), LargeBytes))
		{
			Text.reserve(MaxEventBytes + 1);
		}
		Text += Bytes;
	}

	void FEventStreamReader::KeepData()
	{
		if (std::exchange(bDataIsView, false))
		{
			DataText = DataView;
		}
	}

	void FEventStreamReader::Dispatch(bool bIsCutOff)
	{
		if (std::exchange(bHasData, false) && !OnEvent({ Type, bDataIsView ? DataView : std::string_view(DataText), bIsCutOff }))
		{
			State = EState::Stopped;
		}
		bDataIsView = false;
		DataText.clear();
		Type.clear();
	}
}

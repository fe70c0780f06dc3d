#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "CoreMinimal.h"

namespace Velmora
{
	/** One event of a stream. The views hold only while it is being told. */
	struct FServerEvent
	{
		/** What its "event" line says; empty without one. "error" as well when the data stands in an "error" line. */
		std::string_view Type;

		/** Its "data" lines, joined by line feeds. May be empty. */
		std::string_view Data;

		/** The stream has ended before the blank line that closes the event; the data may lack its end. */
		bool bIsCutOff = false;
	};

	/**
	 * Reads a text/event-stream as it comes, cut anywhere. Lines end with CR, LF or CRLF; a byte order mark at the
	 * beginning, comments, ids and unknown fields are passed over. An event without any data line is none.
	 * Memory stays below the size of the largest event that is allowed. One thread at a time.
	 */
	class VELMORAWIRE_API FEventStreamReader
	{
	public:
		enum class EState
		{
			Open,
			Stopped, // The receiver wanted no more.
			TooLarge // An event or a line is larger than allowed.
		};

		/** Returns false when no more events are wanted. */
		using FOnEvent = std::function<bool(const FServerEvent&)>;

		/** In bytes. */
		static constexpr size_t DefaultMaxEventBytes = 32 * 1024 * 1024;

		explicit FEventStreamReader(FOnEvent InOnEvent, size_t InMaxEventBytes = DefaultMaxEventBytes);

		/** Tells the events that these bytes complete. Once the state is not Open, nothing is read any more. */
		EState Push(std::string_view Bytes);

		/** The stream is over: tells what was not closed by a blank line. */
		EState End();

	private:
		void TakeLine(std::string_view Line, bool bLineStays);
		void AddData(std::string_view Value, bool bValueStays);
		void Dispatch(bool bIsCutOff);

		void Keep(std::string& Text, std::string_view Bytes) const;

		/** The data seen so far lies in bytes that are about to go: keeps it. */
		void KeepData();

		const FOnEvent OnEvent;
		const size_t MaxEventBytes;
		EState State = EState::Open;

		/** The beginning of a line whose end has not come. */
		std::string PartialLine;

		/** One data line is looked at where it lies; more are joined here. */
		std::string_view DataView;
		std::string DataText;
		bool bDataIsView = false;
		bool bHasData = false;
		std::string Type;
		bool bIsFirstLine = true;

		/** A CR has ended a line; an LF right after it belongs to it. */
		bool bSkipsLineFeed = false;
	};
}

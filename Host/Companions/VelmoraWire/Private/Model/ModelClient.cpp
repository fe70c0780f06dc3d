#include "Model/ModelClient.h"

#include <algorithm>
#include <chrono>

#include "Http/WebAddress.h"
#include "Model/ModelFaults.h"
#include "Text/WireText.h"

namespace Velmora
{
	namespace
	{
		/** Of a refusal or a page that is no answer: what is beyond says nothing more. */
		constexpr size_t MaxRefusalBytes = 64 * 1024;

		/** Of an answer that does not stream, and of one event: its text with what JSON adds to it. */
		constexpr size_t MaxBodyBytes = 24 * 1024 * 1024;

		/** A body that is larger may become the largest. */
		constexpr size_t LargeBodyBytes = 1024 * 1024;

		constexpr const char* PackedText = "it sent compressed data unasked";

		/** Some put the mark of their encoding before everything. */
		constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

		std::string_view SkipMark(std::string_view Text)
		{
			return Text.starts_with(ByteOrderMark) ? Text.substr(ByteOrderMark.size()) : Text;
		}

		bool IsRedirect(int Status)
		{
			return Status >= 300 && Status < 400;
		}

		/** Gives what comes to the dialect: a stream of events, one body, or a refusal. */
		class FAnswerReader : public IHttpReader
		{
		public:
			FAnswerReader(IReplyReader& InReader, FReplyBuilder& InBuilder)
				: Reader(InReader)
				, Builder(InBuilder)
				, Events([this](const FServerEvent& Event) { return Reader.OnEvent(Event); }, MaxBodyBytes)
			{
			}

			virtual void OnHead(const FHttpHead& InHead) override { Head = InHead; }

			virtual EFlow OnBytes(std::string_view Bytes) override
			{
				if (Head.Status != 200)
				{
					Body += Bytes.substr(0, MaxRefusalBytes - Body.size());
					return Body.size() < MaxRefusalBytes ? EFlow::More : EFlow::Stop;
				}
				if (Form == EForm::Unknown)
				{
					DecideForm(Bytes);
				}
				switch (Form)
				{
				case EForm::Unknown:
					return EFlow::More;
				case EForm::Page:
				case EForm::Packed:
					return EFlow::Stop;
				case EForm::Body:
					if (Body.size() + Bytes.size() > MaxBodyBytes)
					{
						Builder.Fail(EModelFault::TooLarge, std::string());
						return EFlow::Stop;
					}
					if (Body.size() + Bytes.size() > std::max(Body.capacity(), LargeBodyBytes))
					{
						// Room that costs nothing before it is used; growing step by step leaves holes of the same size.
						Body.reserve(MaxBodyBytes);
					}
					Body += Bytes;
					return EFlow::More;
				case EForm::Events:
					break;
				}
				const FEventStreamReader::EState State = Events.Push(Bytes);
				if (State == FEventStreamReader::EState::TooLarge)
				{
					Builder.Fail(EModelFault::TooLarge, std::string());
				}
				return Builder.HasFailed() ? EFlow::Stop : State == FEventStreamReader::EState::Open ? EFlow::More : EFlow::Enough;
			}

			/** After the last byte. @param bIsWhole  The server has ended the body in order. */
			void Finish(bool bIsWhole)
			{
				if (Head.Status >= 400)
				{
					Reader.OnRefusal(Head.Status, SkipMark(Body));
				}
				else if (IsRedirect(Head.Status))
				{
					Builder.Fail(EModelFault::Redirected, Head.Location);
				}
				else if (Form == EForm::Page || Form == EForm::Packed)
				{
					Builder.Fail(EModelFault::NoModelServer, Form == EForm::Page ? "it answered with a web page" : PackedText);
				}
				else if (Head.Status != 0 && Head.Status != 200)
				{
					Builder.Fail(EModelFault::NoModelServer, "status " + std::to_string(Head.Status));
				}
				else if (Form == EForm::Events)
				{
					Events.End();
				}
				else if (Form == EForm::Body && bIsWhole)
				{
					Reader.OnBody(SkipMark(Body));
				}
			}

			int GetStatus() const { return Head.Status; }

		private:
			enum class EForm
			{
				Unknown,
				Events,
				Body,
				Page,
				Packed // Compressed, and not called so.
			};

			/** By what comes rather than by what it is called: servers are wrong about that. */
			void DecideForm(std::string_view Bytes)
			{
				const size_t Start = Bytes.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
				if (Start == std::string_view::npos)
				{
					return;
				}
				Form = Bytes[Start] == '{' || Bytes[Start] == '[' ? EForm::Body
					: Bytes[Start] == '<'						  ? EForm::Page
					: Bytes[Start] == '\x1F'					  ? EForm::Packed
																  : EForm::Events;
			}

			IReplyReader& Reader;
			FReplyBuilder& Builder;
			FEventStreamReader Events;
			FHttpHead Head;
			std::string Body;
			EForm Form = EForm::Unknown;
		};

		/** Takes the key out of an answer while it comes, also where it is cut between two pieces. */
		class FPieceFilter
		{
		public:
			FPieceFilter(const FReplyBuilder::FOnPiece& InOnPiece, std::string_view InKey)
				: OnPiece(InOnPiece)
				, Key(InKey)
			{
			}

			void Take(const FReplyPiece& Piece)
			{
				if (Key.empty())
				{
					OnPiece(Piece);
					return;
				}
				if (Piece.Kind != Kind)
				{
					End();
					Kind = Piece.Kind;
				}
				Held += Piece.Bytes;
				WireText::HideKey(Held, Key);
				Tell(Held.size() - WireText::MeasurePartialMark(Held, Key));
			}

			/** What may have been the beginning of the key is none. */
			void End() { Tell(Held.size()); }

		private:
			void Tell(size_t Length)
			{
				if (Length > 0)
				{
					OnPiece({ Kind, std::string_view(Held).substr(0, Length) });
					Held.erase(0, Length);
				}
			}

			const FReplyBuilder::FOnPiece& OnPiece;
			const std::string_view Key;
			FReplyPiece::EKind Kind = FReplyPiece::EKind::Text;
			std::string Held;
		};

		/** The whole body of a short answer. */
		class FBodyReader : public IHttpReader
		{
		public:
			virtual void OnHead(const FHttpHead& InHead) override { Status = InHead.Status; }
			virtual EFlow OnBytes(std::string_view Bytes) override
			{
				Body += Bytes;
				return EFlow::More;
			}

			std::string Body;
			int Status = 0;
		};
	}

	FModelClient::FModelClient(const IModelDialect& InDialect, const FModelServer& InServer)
		: Dialect(InDialect)
		, Server(InServer)
	{
	}

	FModelReply FModelClient::Ask(const FModelRequest& Request, FReplyBuilder::FOnPiece OnPiece, const FOnSend& OnSend)
	{
		const FHttpRequest Http = Dialect.MakeRequest(Server, Request);
		if (OnSend)
		{
			OnSend(Http.Body);
		}
		FPieceFilter Filter(OnPiece, Server.Key);
		FReplyBuilder Builder(
			OnPiece ? FReplyBuilder::FOnPiece([&Filter](const FReplyPiece& Piece) { Filter.Take(Piece); }) : FReplyBuilder::FOnPiece());
		const std::unique_ptr<IReplyReader> Reader = Dialect.MakeReader(Builder);
		FAnswerReader Answer(*Reader, Builder);
		const FHttpReply Exchange = Stream.Run(Http, Answer);

		// 1. A refusal says more than how its connection ended.
		const bool bIsCancelled = Exchange.End == EHttpEnd::Cancelled;
		if (bIsCancelled)
		{
			Builder.Fail(EModelFault::Cancelled, std::string());
		}
		else
		{
			Answer.Finish(Exchange.End == EHttpEnd::Complete);
		}

		// 2. Then the connection: what has the mark of its end is whole, however it closed.
		if (!Builder.HasEnded())
		{
			const EModelFault Fault = ModelFaults::FromEnd(Exchange.End);
			// Not all servers give the mark, and some that do not drop the connection behind the last word or forget it.
			const bool bIsWhole = Builder.HasFinish() && (Fault == EModelFault::CutShort || Fault == EModelFault::Silent);
			if (Fault != EModelFault::None && !bIsWhole)
			{
				Builder.Fail(Fault, Exchange.End == EHttpEnd::Compressed ? std::string(PackedText) : Exchange.Detail);
			}
		}

		// 3. Then the answer itself: an end that was not told, unless the reason was.
		const bool bHasEnded = Builder.HasEnded();
		FModelReply Reply = Builder.Take(Server.Key);
		Filter.End();
		if (!Reply.Problem && !bHasEnded && Reply.Finish == EModelFinish::Missing)
		{
			Reply.Problem.Fault = EModelFault::CutShort;
		}
		if (Reply.Finish == EModelFinish::Missing && !Reply.Problem)
		{
			Reply.Finish = EModelFinish::Stop;
		}
		Reply.Problem.Status = Reply.Problem && Reply.Problem.Status == 0 ? Answer.GetStatus() : Reply.Problem.Status;
		Reply.Problem.RetryAfterSeconds = Exchange.RetryAfterSeconds;
		Reply.FirstByteSeconds = Exchange.FirstByteSeconds;
		Reply.Seconds = Exchange.Seconds;
		Reply.ReceivedBytes = Exchange.ReceivedBytes;
		return Reply;
	}

	FModelProblem FModelClient::ListModels(std::vector<FModelInfo>& OutModels, double MaxSeconds)
	{
		FReplyBuilder Builder;
		const std::unique_ptr<IReplyReader> Refusal = Dialect.MakeReader(Builder);
		FBodyReader Body;
		FHttpRequest Request = Dialect.MakeListRequest(Server);
		Request.Limits.TotalSeconds = MaxSeconds > 0.0 ? std::min(Request.Limits.TotalSeconds, MaxSeconds) : Request.Limits.TotalSeconds;
		const FHttpReply Reply = Stream.Run(Request, Body);
		if (Body.Status >= 400)
		{
			Refusal->OnRefusal(Body.Status, std::string_view(Body.Body).substr(0, MaxRefusalBytes));
		}
		else if (IsRedirect(Body.Status))
		{
			Builder.Fail(EModelFault::Redirected, Reply.Head.Location);
		}
		else if (const EModelFault Fault = ModelFaults::FromEnd(Reply.End); Fault != EModelFault::None)
		{
			Builder.Fail(Fault, Reply.Detail);
		}
		else if (!Dialect.ReadList(SkipMark(Body.Body), OutModels))
		{
			Builder.Fail(EModelFault::NoModelServer, "its answer is no list of models");
		}
		return Builder.Take(Server.Key).Problem;
	}

	std::optional<int64_t> FModelClient::AskForSize(std::string_view Model, double MaxSeconds)
	{
		const auto Start = std::chrono::steady_clock::now();
		for (FHttpRequest& Request : Dialect.MakeSizeRequests(Server, Model))
		{
			const double Left = MaxSeconds - std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
			if (Left <= 0.0)
			{
				break;
			}
			Request.Limits.TotalSeconds = std::min(Request.Limits.TotalSeconds, Left);
			FBodyReader Body;
			const EModelFault Fault = ModelFaults::FromEnd(Stream.Run(Request, Body).End);
			if (Fault == EModelFault::Cancelled)
			{
				return std::nullopt;
			}
			if (Fault == EModelFault::Unreachable || Fault == EModelFault::Silent)
			{
				break;
			}
			const int64_t Size = Fault == EModelFault::None && Body.Status == 200 ? Dialect.ReadSize(SkipMark(Body.Body), Model) : 0;
			if (Size > 0)
			{
				return Size;
			}
		}
		return int64_t(0);
	}
}

#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/** One connection to the peer, as a script sees it. */
class FPeerConnection
{
public:
	struct FRequest
	{
		/** "POST" */
		std::string Method;
		std::string Path;

		/** All header lines, as they came. */
		std::string Head;
		std::string Body;
	};

	FPeerConnection(int InSocket, bool bInTellsSizes)
		: Socket(InSocket)
		, bTellsSizes(bInTellsSizes)
	{
	}

	/** Waits for a whole request; false when the client has gone instead. Questions that this server does not know are answered. */
	bool ReadRequest(FRequest& OutRequest);

	/** False when the client has gone. */
	bool Send(std::string_view Bytes);

	/** Waits until the client closes; false when it does not within that time. */
	bool WaitForClose(double Seconds = 10.0);

	/** Closes so that the client sees an error rather than an end. */
	void Reset();

private:
	bool ReadOne(FRequest& OutRequest);

	const int Socket;
	const bool bTellsSizes;
	std::string Unread;
};

/**
 * A server on a port of this machine that does what a test says, to the byte. One thread per connection, all ended by
 * the destructor.
 */
class FScriptedPeer
{
public:
	/** Called for each connection, on a thread of its own; the connection closes when it returns. */
	using FScript = std::function<void(FPeerConnection&)>;

	/** Answers one request after the other on each connection, up to an answer that closes it. Number counts the requests of all from 0. */
	using FAnswer = std::function<std::string(const FPeerConnection::FRequest& Request, int Number)>;

	/** @param bInTellsSizes  The script is told of questions about sizes, too, which most servers do not know. */
	explicit FScriptedPeer(FScript InScript, bool bInTellsSizes = false);
	static FScript AnswerEach(FAnswer Answer);
	/** Takes one request, sends the bytes and closes; or leaves that to the client. */
	static FScript SendOnce(std::string Bytes, bool bClientCloses = false);
	~FScriptedPeer();
	FScriptedPeer(const FScriptedPeer&) = delete;
	FScriptedPeer& operator=(const FScriptedPeer&) = delete;

	int GetPort() const { return Port; }

	/** "http://127.0.0.1:PORT/v1" */
	std::string GetUrl() const;
	int GetConnectionCount() const { return ConnectionCount; }

private:
	struct FGuest
	{
		int Socket = -1;
		std::thread Thread;
	};

	void Accept();

	const FScript Script;
	const bool bTellsSizes;
	int Listener = -1;
	int Port = 0;
	std::atomic<int> ConnectionCount = 0;
	std::mutex Mutex;
	bool bIsClosing = false;
	std::list<FGuest> Guests;
	std::thread Acceptor;
};

/** What servers of chat completions send, made of parts. */
namespace PeerText
{
	/** A whole answer with its length told. */
	std::string Answer(std::string_view Status, std::string_view ContentType, std::string_view Body, std::string_view MoreHead = "");

	/** The head of a stream that ends with its connection. */
	std::string StreamHead();

	/** One event per text. */
	std::string Events(const std::vector<std::string>& Datas);

	/** A stream in chunks that ends in order. */
	std::string Stream(const std::vector<std::string>& Datas);

	/** {"choices":[{"index":0,"delta":DELTA,"finish_reason":FINISH}]}; an empty finish is null. */
	std::string Chunk(std::string_view Delta, std::string_view Finish = "");

	/** A delta of plain text. */
	std::string Say(std::string_view Text);

	/** A whole call in one delta. Arguments are the text of an object. */
	std::string Call(int Index, std::string_view Id, std::string_view Name, std::string_view Arguments);

	/** The text between quotes of JSON. */
	std::string Quote(std::string_view Text);
}

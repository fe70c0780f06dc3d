#include "Support/Peer/ScriptedPeer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace
{
	/** The value of a header, or nothing. */
	std::string FindHeader(const std::string& Head, std::string_view Name)
	{
		for (size_t Start = 0; Start < Head.size();)
		{
			const size_t End = std::min(Head.find("\r\n", Start), Head.size());
			const std::string_view Line = std::string_view(Head).substr(Start, End - Start);
			if (Line.size() > Name.size() && Line[Name.size()] == ':' && strncasecmp(Line.data(), Name.data(), Name.size()) == 0)
			{
				return std::string(Line.substr(std::min(Line.find_first_not_of(' ', Name.size() + 1), Line.size())));
			}
			Start = End + 2;
		}
		return std::string();
	}
}

bool FPeerConnection::ReadRequest(FRequest& OutRequest)
{
	while (ReadOne(OutRequest))
	{
		// Whole addresses come to a proxy.
		const auto IsFor = [&OutRequest](std::string_view End) { return OutRequest.Path.ends_with(End); };
		const bool bIsAboutSizes = IsFor("/props") || IsFor("/api/ps") || IsFor("/api/show") || IsFor("/api/v0/models");
		if (bTellsSizes || !bIsAboutSizes)
		{
			return true;
		}
		Send(PeerText::Answer("404 Not Found", "text/plain", "unknown"));
	}
	return false;
}

bool FPeerConnection::ReadOne(FRequest& OutRequest)
{
	const auto ReadMore = [this]
	{
		char Buffer[65536];
		const ssize_t Length = recv(Socket, Buffer, sizeof(Buffer), 0);
		Unread.append(Buffer, Length > 0 ? static_cast<size_t>(Length) : 0);
		return Length > 0;
	};
	size_t HeadEnd = Unread.find("\r\n\r\n");
	while (HeadEnd == std::string::npos)
	{
		if (!ReadMore())
		{
			return false;
		}
		HeadEnd = Unread.find("\r\n\r\n");
	}
	OutRequest.Head = Unread.substr(0, HeadEnd + 2);
	const size_t MethodEnd = OutRequest.Head.find(' ');
	const size_t PathEnd = OutRequest.Head.find(' ', MethodEnd + 1);
	OutRequest.Method = OutRequest.Head.substr(0, MethodEnd);
	OutRequest.Path = OutRequest.Head.substr(MethodEnd + 1, PathEnd - MethodEnd - 1);
	const size_t Length = std::strtoul(FindHeader(OutRequest.Head, "Content-Length").c_str(), nullptr, 10);
	while (Unread.size() < HeadEnd + 4 + Length)
	{
		if (!ReadMore())
		{
			return false;
		}
	}
	OutRequest.Body = Unread.substr(HeadEnd + 4, Length);
	Unread.erase(0, HeadEnd + 4 + Length);
	return true;
}

bool FPeerConnection::Send(std::string_view Bytes)
{
	while (!Bytes.empty())
	{
		const ssize_t Sent = send(Socket, Bytes.data(), Bytes.size(), MSG_NOSIGNAL);
		if (Sent <= 0)
		{
			return false;
		}
		Bytes.remove_prefix(static_cast<size_t>(Sent));
	}
	return true;
}

bool FPeerConnection::WaitForClose(double Seconds)
{
	char Buffer[4096];
	while (true)
	{
		pollfd Poll = { Socket, POLLIN, 0 };
		if (poll(&Poll, 1, static_cast<int>(Seconds * 1000.0)) <= 0)
		{
			return false;
		}
		if (recv(Socket, Buffer, sizeof(Buffer), 0) <= 0)
		{
			return true;
		}
	}
}

void FPeerConnection::Reset()
{
	const linger Hard = { 1, 0 };
	setsockopt(Socket, SOL_SOCKET, SO_LINGER, &Hard, sizeof(Hard));
}

FScriptedPeer::FScriptedPeer(FScript InScript, bool bInTellsSizes)
	: Script(std::move(InScript))
	, bTellsSizes(bInTellsSizes)
{
	Listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
	sockaddr_in Address = {};
	Address.sin_family = AF_INET;
	Address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
	socklen_t Length = sizeof(Address);
	if (Listener < 0 || bind(Listener, reinterpret_cast<sockaddr*>(&Address), Length) != 0 || listen(Listener, 64) != 0 ||
		getsockname(Listener, reinterpret_cast<sockaddr*>(&Address), &Length) != 0)
	{
		std::perror("The scripted peer gets no port");
		std::abort();
	}
	Port = ntohs(Address.sin_port);
	Acceptor = std::thread([this] { Accept(); });
}

FScriptedPeer::~FScriptedPeer()
{
	{
		const std::scoped_lock Lock(Mutex);
		bIsClosing = true;
		shutdown(Listener, SHUT_RDWR);
		for (const FGuest& Guest : Guests)
		{
			shutdown(Guest.Socket, SHUT_RDWR);
		}
	}
	Acceptor.join();
	for (FGuest& Guest : Guests)
	{
		Guest.Thread.join();
		close(Guest.Socket);
	}
	close(Listener);
}

void FScriptedPeer::Accept()
{
	while (true)
	{
		const int Socket = accept4(Listener, nullptr, nullptr, SOCK_CLOEXEC);
		if (Socket < 0)
		{
			return;
		}
		const std::scoped_lock Lock(Mutex);
		if (bIsClosing)
		{
			close(Socket);
			return;
		}
		++ConnectionCount;
		FGuest& Guest = Guests.emplace_back();
		Guest.Socket = Socket;
		Guest.Thread = std::thread(
			[this, Socket]
			{
				FPeerConnection Connection(Socket, bTellsSizes);
				Script(Connection);
				// The number of the socket stays taken until the end, so that nobody else's is shut down in its place.
				linger Linger = {};
				socklen_t Length = sizeof(Linger);
				getsockopt(Socket, SOL_SOCKET, SO_LINGER, &Linger, &Length);
				if (Linger.l_onoff)
				{
					const sockaddr Nowhere = { AF_UNSPEC, {} };
					connect(Socket, &Nowhere, sizeof(Nowhere));
				}
				shutdown(Socket, SHUT_RDWR);
			});
	}
}

std::string FScriptedPeer::GetUrl() const
{
	return "http://127.0.0.1:" + std::to_string(Port) + "/v1";
}

FScriptedPeer::FScript FScriptedPeer::SendOnce(std::string Bytes, bool bClientCloses)
{
	return [Bytes = std::move(Bytes), bClientCloses](FPeerConnection& Connection)
	{
		FPeerConnection::FRequest Request;
		if (Connection.ReadRequest(Request) && Connection.Send(Bytes) && bClientCloses)
		{
			Connection.WaitForClose();
		}
	};
}

FScriptedPeer::FScript FScriptedPeer::AnswerEach(FAnswer Answer)
{
	const auto Count = std::make_shared<std::atomic<int>>(0);
	return [Answer = std::move(Answer), Count](FPeerConnection& Connection)
	{
		FPeerConnection::FRequest Request;
		while (Connection.ReadRequest(Request))
		{
			const std::string Text = Answer(Request, (*Count)++);
			if (!Connection.Send(Text) || Text.find("\r\nConnection: close\r\n") != std::string::npos)
			{
				return;
			}
		}
	};
}

namespace PeerText
{
	std::string Answer(std::string_view Status, std::string_view ContentType, std::string_view Body, std::string_view MoreHead)
	{
		return "HTTP/1.1 " + std::string(Status) + "\r\nContent-Type: " + std::string(ContentType) + "\r\n" + std::string(MoreHead) +
			"Content-Length: " + std::to_string(Body.size()) + "\r\n\r\n" + std::string(Body);
	}

	std::string StreamHead()
	{
		return "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nConnection: close\r\n\r\n";
	}

	std::string Events(const std::vector<std::string>& Datas)
	{
		std::string Text;
		for (const std::string& Data : Datas)
		{
			Text += "data: " + Data + "\n\n";
		}
		return Text;
	}

	std::string Stream(const std::vector<std::string>& Datas)
	{
		std::string Text = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nTransfer-Encoding: chunked\r\n\r\n";
		for (const std::string& Data : Datas)
		{
			const std::string Event = Events({ Data });
			char Length[32];
			std::snprintf(Length, sizeof(Length), "%zx\r\n", Event.size());
			Text += Length + Event + "\r\n";
		}
		return Text + "0\r\n\r\n";
	}

	std::string Chunk(std::string_view Delta, std::string_view Finish)
	{
		return R"({"object":"chat.completion.chunk","choices":[{"index":0,"delta":)" + std::string(Delta) + R"(,"finish_reason":)" +
			(Finish.empty() ? std::string("null") : '"' + std::string(Finish) + '"') + "}]}";
	}

	std::string Say(std::string_view Text)
	{
		return Chunk("{\"content\":" + Quote(Text) + "}");
	}

	std::string Call(int Index, std::string_view Id, std::string_view Name, std::string_view Arguments)
	{
		return Chunk(R"({"tool_calls":[{"index":)" + std::to_string(Index) + R"(,"type":"function","id":)" + Quote(Id) +
			R"(,"function":{"name":)" + Quote(Name) + R"(,"arguments":)" + Quote(Arguments) + "}}]}");
	}

	std::string Quote(std::string_view Text)
	{
		std::string Result = "\"";
		for (const char Byte : Text)
		{
			char Escape[8];
			if (Byte == '"' || Byte == '\\')
			{
				Result += '\\';
				Result += Byte;
			}
			else if (static_cast<unsigned char>(Byte) < 0x20)
			{
				std::snprintf(Escape, sizeof(Escape), "\\u%04x", static_cast<unsigned>(Byte));
				Result += Escape;
			}
			else
			{
				Result += Byte;
			}
		}
		return Result + '"';
	}
}

#include "StreamServer.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <signal.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
	/** Reads up to the end of the body that the headers announce. False when the client has left. */
	bool ReadRequest(int Socket)
	{
		std::string Request;
		size_t Wanted = std::string::npos;
		char Block[65536];
		while (Wanted == std::string::npos || Request.size() < Wanted)
		{
			const ssize_t Count = read(Socket, Block, sizeof(Block));
			if (Count <= 0)
			{
				return false;
			}
			Request.append(Block, static_cast<size_t>(Count));
			const size_t HeadEnd = Request.find("\r\n\r\n");
			if (HeadEnd != std::string::npos && Wanted == std::string::npos)
			{
				// Clients write the name in different cases.
				size_t Length = Request.find("ontent-Length: ");
				Length = Length == std::string::npos ? Request.find("ontent-length: ") : Length;
				Wanted = HeadEnd + 4 + (Length < HeadEnd ? strtoul(Request.c_str() + Length + 15, nullptr, 10) : 0);
			}
		}
		return true;
	}

	void Write(int Socket, std::string_view Bytes)
	{
		while (!Bytes.empty())
		{
			const ssize_t Count = send(Socket, Bytes.data(), std::min<size_t>(Bytes.size(), 16384), MSG_NOSIGNAL);
			if (Count <= 0)
			{
				return;
			}
			Bytes.remove_prefix(static_cast<size_t>(Count));
		}
	}

	[[noreturn]] void Serve(int Listener, const std::string& Response)
	{
		prctl(PR_SET_PDEATHSIG, SIGKILL);
		for (;;)
		{
			const int Socket = accept(Listener, nullptr, nullptr);
			if (Socket < 0)
			{
				_exit(0);
			}
			if (ReadRequest(Socket))
			{
				Write(Socket, Response);
			}
			close(Socket);
		}
	}
}

FStreamServer::FStreamServer(const std::string& Response)
{
	const int Listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
	sockaddr_in Address = {};
	Address.sin_family = AF_INET;
	Address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
	socklen_t Length = sizeof(Address);
	if (Listener < 0 || bind(Listener, reinterpret_cast<sockaddr*>(&Address), Length) != 0 || listen(Listener, 16) != 0 ||
		getsockname(Listener, reinterpret_cast<sockaddr*>(&Address), &Length) != 0)
	{
		return;
	}
	Process = fork();
	if (Process == 0)
	{
		Serve(Listener, Response);
	}
	close(Listener);
	Port = Process > 0 ? ntohs(Address.sin_port) : 0;
}

FStreamServer::~FStreamServer()
{
	if (Process > 0)
	{
		kill(Process, SIGKILL);
		waitpid(Process, nullptr, 0);
	}
}

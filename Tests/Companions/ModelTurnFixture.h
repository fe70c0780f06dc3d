#pragma once

#include "AgentFixture.h"
#include "Host/AgentConnections.h"
#include "Support/Peer/ScriptedPeer.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <mutex>

/** The agent with a scripted server as its model. */
class FModelTurnTest : public FAgentTest
{
protected:
	void TearDown() override
	{
		FAgentTest::TearDown();
		Velmora::FAgentConnections::Select({});
	}

	static void Use(const FScriptedPeer& Peer, const TCHAR* Model = TEXT("m"))
	{
		Velmora::FAgentConnection Connection;
		Connection.Name = TEXT("peer");
		Connection.Url = Text(Peer.GetUrl());
		Connection.Model = Model;
		Velmora::FAgentConnections::Select(Connection);
	}

	/** A server that gives these answers in turn, and keeps what it was asked. */
	FScriptedPeer::FScript Give(std::vector<std::string> Answers)
	{
		AnswerCount = 0;
		return FScriptedPeer::AnswerEach(
			[this, Answers = std::move(Answers)](const FPeerConnection::FRequest& Request, int)
			{
				const std::scoped_lock Lock(Mutex);
				if (Request.Method == "GET" && !ModelList.empty())
				{
					++ListCount;
					return ModelList;
				}
				Requests.push_back(Request);
				return Answers[std::min(AnswerCount++, Answers.size() - 1)];
			});
	}

	std::string LastBody()
	{
		const std::scoped_lock Lock(Mutex);
		return Requests.empty() ? std::string() : Requests.back().Body;
	}

	std::string ReadFile(const std::string& Path) const
	{
		std::ifstream File(Project.PathOf(Path), std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(File), {});
	}

	/** What the list of models is answered with; empty: by the answers, in turn. */
	std::string ModelList = PeerText::Answer("404 No", "application/json", R"({"error":"no list"})");
	int ListCount = 0;
	size_t AnswerCount = 0;
	std::mutex Mutex;
	std::vector<FPeerConnection::FRequest> Requests;
};

/** The user's configuration folder is one of the test's. */
class FModelConfigTest : public FModelTurnTest
{
protected:
	void SetUp() override
	{
		const char* const Before = getenv("XDG_CONFIG_HOME");
		Saved = Before ? Before : "";
		setenv("XDG_CONFIG_HOME", Project.PathOf("config").c_str(), 1);
		// The user's own keyring is none of the test's business.
		unsetenv("DBUS_SESSION_BUS_ADDRESS");
		setenv("XDG_RUNTIME_DIR", Project.PathOf("run").c_str(), 1);
		FModelTurnTest::SetUp();
	}
	void TearDown() override
	{
		FModelTurnTest::TearDown();
		Saved.empty() ? unsetenv("XDG_CONFIG_HOME") : setenv("XDG_CONFIG_HOME", Saved.c_str(), 1);
	}

	/** Each test with a connection of its own name, since what a day has used is kept by it. */
	Velmora::FAgentConnection Make(const FScriptedPeer& Peer)
	{
		Velmora::FAgentConnection Connection;
		Connection.Name = Text(Project.MakeName());
		Connection.Url = Text(Peer.GetUrl());
		Connection.Model = TEXT("m");
		return Connection;
	}

private:
	std::string Saved;
};

inline std::string Final(std::string_view Text)
{
	return PeerText::Stream({ PeerText::Say(Text), PeerText::Chunk("{}", "stop"), "[DONE]" });
}

inline std::string WithCalls(std::string_view Text, const std::vector<std::string>& Calls)
{
	std::vector<std::string> Datas = { PeerText::Say(Text) };
	Datas.insert(Datas.end(), Calls.begin(), Calls.end());
	Datas.push_back(PeerText::Chunk("{}", "tool_calls"));
	Datas.push_back("[DONE]");
	return PeerText::Stream(Datas);
}

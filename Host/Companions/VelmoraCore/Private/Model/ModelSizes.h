#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Model/ModelClient.h"
#include "Model/ModelConnection.h"

/**
 * How many tokens a conversation with a model may have: what the connection says, else its server. In a run a server is asked once
 * about each model, whatever it says; what it did not say is 0, and no failure. Any thread.
 */
namespace Velmora::ModelSizes
{
	/** Asks if nothing is known, for some seconds at the most. */
	int64_t Find(FModelClient& Client, const FModelConnection& Connection, const std::string& Model);

	/** The same, with a list of models that the server has just given. */
	int64_t FindWith(
		FModelClient& Client, const FModelConnection& Connection, const std::string& Model, const std::vector<FModelInfo>& Models);

	/** Asks in any case: the model may be another one by now. */
	int64_t AskAgain(
		FModelClient& Client, const FModelConnection& Connection, const std::string& Model, const std::vector<FModelInfo>& Models);

	/** A refusal has told it. */
	void Set(const FModelConnection& Connection, const std::string& Model, int64_t Tokens);
}

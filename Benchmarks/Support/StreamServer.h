#pragma once

#include <string>
#include <sys/types.h>

/** A process of its own that answers every request on loopback with the same bytes, so that its work counts for nobody who is measured. */
class FStreamServer
{
public:
	/** @param Response  Headers and body, as they are on the wire. The connection is closed after them. */
	explicit FStreamServer(const std::string& Response);
	~FStreamServer();
	FStreamServer(const FStreamServer&) = delete;
	FStreamServer& operator=(const FStreamServer&) = delete;

	/** 0 when no socket could be had. */
	int GetPort() const { return Port; }

private:
	int Port = 0;
	pid_t Process = -1;
};

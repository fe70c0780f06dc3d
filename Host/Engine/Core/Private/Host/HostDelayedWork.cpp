#include "Host/HostDelayedWork.h"

#include <utility>

FHostDelayedWork::FHostDelayedWork(TFunction<void()> InWork, double IntervalSeconds)
	: Work(std::move(InWork))
	, Interval(IntervalSeconds)
{
}

FHostDelayedWork::~FHostDelayedWork()
{
	Finish();
}

void FHostDelayedWork::Request()
{
	const std::lock_guard<std::mutex> Lock(Mutex);
	bRequested = true;
	if (!Thread.joinable() && !bFinishing)
	{
		NotBefore = std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(Interval / 2);
		Thread = std::thread([this]() { Run(); });
	}
	Changed.notify_all();
}

void FHostDelayedWork::Finish()
{
	const std::lock_guard<std::mutex> OneAtATime(FinishMutex);
	std::thread Ending;
	{
		const std::lock_guard<std::mutex> Lock(Mutex);
		bFinishing = true;
		Ending = std::move(Thread);
	}
	Changed.notify_all();
	if (Ending.joinable())
	{
		Ending.join();
	}
	// What was asked for too late for the thread is done here. Until then no other thread may begin: the work is never done twice at once.
	for (;;)
	{
		{
			const std::lock_guard<std::mutex> Lock(Mutex);
			if (!bRequested)
			{
				bFinishing = false;
				return;
			}
			bRequested = false;
		}
		Work();
	}
}

void FHostDelayedWork::Run()
{
	std::unique_lock<std::mutex> Lock(Mutex);
	for (;;)
	{
		Changed.wait(Lock, [this]() { return bRequested || bFinishing; });
		if (!bFinishing)
		{
			Changed.wait_until(Lock, NotBefore, [this]() { return bFinishing; });
		}
		if (!bRequested)
		{
			return;
		}
		bRequested = false;
		Lock.unlock();
		Work();
		Lock.lock();
		NotBefore = std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(Interval);
	}
}

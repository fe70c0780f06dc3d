#pragma once

#include "Templates/Function.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

/**
 * Does a piece of work again and again on a thread of its own: soon after it was asked for, but at most once in an interval,
 * however often it was asked for. For saves that must not keep a frame waiting. Real time, also where the clock is simulated.
 * Any thread.
 */
class CORE_API FHostDelayedWork
{
public:
	/** @param IntervalSeconds  From the end of one run to the begin of the next; the first run waits half of it. */
	FHostDelayedWork(TFunction<void()> InWork, double IntervalSeconds);
	/** Finishes. */
	~FHostDelayedWork();
	FHostDelayedWork(const FHostDelayedWork&) = delete;
	FHostDelayedWork& operator=(const FHostDelayedWork&) = delete;

	void Request();
	/** Does now what was asked for, and waits for its end. The thread ends with it; a later request begins another. */
	void Finish();

private:
	using FTime = std::chrono::steady_clock::time_point;

	void Run();

	const TFunction<void()> Work;
	const std::chrono::duration<double> Interval;
	std::mutex Mutex;
	std::condition_variable Changed;
	/** Held while a thread is joined, so that two do not. */
	std::mutex FinishMutex;
	std::thread Thread;
	FTime NotBefore;
	bool bRequested = false;
	bool bFinishing = false;
};

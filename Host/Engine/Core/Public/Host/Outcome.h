#pragma once

#include "Host/HostSystemErrors.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

/** What kind of end an operation came to, for those who go on in different ways. */
enum class EOutcome : uint8
{
	Done,
	Missing, // What it was about does not exist. Nothing has changed.
	Exists, // It stands there already.
	Busy, // Another program or thread is at work on it: worth another try.
	Stopped, // Somebody asked it to end early.
	Denied, // Permissions, a read-only mark or file system.
	Full, // Disk, quota or a bound of our own.
	Damaged, // What was read is not what was written.
	Refused, // A rule of ours forbids it.
	Failed // Anything else; the words say it.
};

/**
 * How an operation ended: the one way to fail. Made where something fails, handed up as it is or with more words in front, and
 * asked or told at the top. The compiler complains when nobody looks at one.
 *
 *     FOutcome Save(...)
 *     {
 *         FFileDescriptor File = FFileDescriptor::Open(Path, O_WRONLY);
 *         if (!File.IsOpen())
 *         {
 *             return FOutcome::FromSystem(errno, Path);
 *         }
 *         ...
 *         return FOutcome::Done();
 *     }
 */
class [[nodiscard]] FOutcome
{
public:
	/** Done. */
	FOutcome() = default;
	static FOutcome Done() { return FOutcome(); }

	/**
	 * @param InWords  UTF-8. A clause for a colon in front and a full stop behind, or a sentence where the operation says so.
	 * @param InPath   The file that it is about, bytes as on disk; empty where it is about none, or the words name it.
	 */
	FOutcome(EOutcome InCode, std::string InWords, std::string InPath = std::string())
		: Code(InCode)
		, Words(std::move(InWords))
		, Path(std::move(InPath))
	{
	}

	/** An error of the system as code and clause. */
	CORE_API static FOutcome FromSystem(int Error, std::string InPath = std::string());

	bool IsDone() const { return Code == EOutcome::Done; }
	explicit operator bool() const { return IsDone(); }
	bool Is(EOutcome Other) const { return Code == Other; }
	EOutcome GetCode() const { return Code; }

	/** Empty when it is done. */
	const std::string& GetWords() const { return Words; }
	const std::string& GetPath() const { return Path; }

	/**
	 * A sentence: what could not be done, and why. "The index could not be read" becomes
	 * "The index could not be read: no permission." Code and path stay. What is done stays so.
	 */
	CORE_API FOutcome Explain(std::string_view What) const;

private:
	EOutcome Code = EOutcome::Done;
	std::string Words;
	std::string Path;
};

/** An outcome with what was made, found or read when it is done. */
template <typename FValue>
class [[nodiscard]] TOutcome : public FOutcome
{
public:
	TOutcome(FValue InValue)
		: Value(std::move(InValue))
	{
	}

	/** Of a failure; without a value it never counts as done. */
	TOutcome(FOutcome Failure)
		: FOutcome(Failure.IsDone() ? FOutcome(EOutcome::Failed, "nothing came of it") : std::move(Failure))
	{
	}

	/** Only when it is done. */
	FValue& operator*() { return *Value; }
	const FValue& operator*() const { return *Value; }
	FValue* operator->() { return &*Value; }
	const FValue* operator->() const { return &*Value; }

private:
	std::optional<FValue> Value;
};

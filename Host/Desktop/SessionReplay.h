#pragma once

#include "CoreMinimal.h"
#include "Host/AgentSeam.h"
#include "Host/ProjectFileCacheControl.h"
#include "ReplayTape.h"
#include "ReplayWindow.h"

#include <memory>

/** What a recording began with. */
struct FReplayHead
{
	FString Version;
	int64 UtcTicks = 0;
	int64 ZoneSeconds = 0;
	FIntPoint Size = FIntPoint(1280, 800);
	float Scale = 1.0f;
	bool bHasUser = false;
	bool bIsMasked = false;
	FString Project;
	/** What the user was told of where things are kept; empty for nowhere. Recordings of before do not say. */
	TOptional<FString> KeptFolder;
	TArray<TPair<FString, FString>> Variables;
	/** Small files of the user's, for RecordSeeds. */
	TArray<FRecordLine> Seeds;
};

/**
 * Shows a recorded session again. Neither its project nor an agent is there: the seams of the agent library answer from the recording,
 * and everything that the run writes stays in a folder of its own, which goes with it. Game thread, where nothing else is said.
 */
class FSessionReplay : public Velmora::IAgentSeam, public Velmora::IProjectFileSeam
{
public:
	virtual ~FSessionReplay() override;

	/** Reads and checks the recording. @param Version  Of this program. @return Empty, or one sentence. */
	FString Load(const FString& Path, const FString& Version);
	/** Makes the folder, moves the clock and the time zone to where the session was. While there is one thread. Empty, or one sentence. */
	FString Begin();
	/** Puts the user's files where they are looked for. Paths and project folder are set. */
	void RestoreFiles() const;
	/** The window as all others are to see it. Once, before the application is made. */
	TSharedRef<IHostWindow> Wrap(const TSharedRef<IHostWindow>& InWindow);
	/** Before anything goes that workers may wait for. */
	void Finish();

	const FReplayHead& GetHead() const { return Head; }
	FString GetProjectFolder() const;
	FString GetDataFolder() const;
	/** Lets go of the window, when the application is gone. */
	void Release();
	/** Null before Wrap and after Release. */
	FReplayWindow* GetWindow() const { return Window.Get(); }
	/** Whether a sentence that somebody wants to show is shown: the recording has its own. */
	bool MayTell() const { return Tape->IsTelling(); }
	/** What the user asked this run for may be written anywhere; what the session does, not. */
	void AllowSaves(bool bEverywhere) const;

	// Velmora::IAgentSeam
	virtual TSharedPtr<Velmora::FAgent> MakeAgent(TFunctionRef<TSharedPtr<Velmora::FAgent>()> MakeUsual) override;
	virtual TArray<Velmora::FConversationMetadata> ReadSummaries(TFunctionRef<TArray<Velmora::FConversationMetadata>()> ReadUsual) override;
	virtual void OnQuestion(const Velmora::FAgentQuestion* Question) override {}
	virtual bool AnswerQuestion(uint32 Id, Velmora::EAgentAnswer Answer, TFunctionRef<bool()> AnswerUsual) override;
	virtual TOptional<Velmora::FLastMessage> GetLastMessage(TFunctionRef<TOptional<Velmora::FLastMessage>()> GetUsual) override;
	virtual FString TakeBackLastMessage(TFunctionRef<FString()> TakeBackUsual) override;
	virtual bool MayConnect() const override { return false; }
	virtual Velmora::FAgentTurnStatus GetTurnStatus(TFunctionRef<Velmora::FAgentTurnStatus()> GetUsual) override;

	// Velmora::IProjectFileSeam
	virtual void GetStatus(bool& bReady, bool& bIndexing, int32& Count) override;
	virtual void GetFiles(TArray<Velmora::FProjectFileCacheEntry>& Files) override;
	virtual bool MayScan() const override { return false; }

private:
	void ReadHead(FRecordReader& Reader);

	FReplayHead Head;
	std::shared_ptr<FReplayTape> Tape;
	TSharedPtr<FReplayWindow> Window;
	std::string Folder;
};

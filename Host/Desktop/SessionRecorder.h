#pragma once

#include "CoreMinimal.h"
#include "Delegates/Delegate.h"
#include "Host/AgentSeam.h"
#include "Host/ProjectFileCacheControl.h"
#include "RecordFile.h"
#include "RecordedWindow.h"
#include "UpdateGate.h"

#include <memory>

struct FDesktopOptions;

/**
 * Writes a session down so that it can be shown again without its project and its agent: what comes in, the time, the window's size, and
 * all that the agent library answers and calls back. From Begin to Finish; game thread, where nothing else is said.
 */
class FSessionRecorder : public Velmora::IAgentSeam, public Velmora::IProjectFileSeam
{
public:
	explicit FSessionRecorder(const std::shared_ptr<FRecordWriter>& InWriter);
	virtual ~FSessionRecorder() override;

	/** Writes what the session begins with. Project folder, settings and clock are there, and nothing is shown yet. */
	void Begin(const FDesktopOptions& Options, bool bHasUser, bool bHasDisplay, const IHostWindow& Window);
	/** The window as all others are to see it. Once, before the application is made. */
	TSharedRef<IHostWindow> Wrap(const TSharedRef<IHostWindow>& InWindow);
	/** The last line, before what was shown goes. */
	void Finish();
	/** Lets go of the window, when the application is gone. */
	void Release();
	/** Null before Wrap and after Release. */
	FRecordedWindow* GetWindow() const { return Window.Get(); }
	/** What a script does without input: "answer", "close-tab", "open-tab", "focus". */
	void NoteDeed(const TCHAR* Deed, const FString& Subject);
	/** A remark for people and tests; none where texts are masked. */
	void NoteRemark(const FString& Remark);
	void NoteToast(const FString& Sentence);
	/** Contrast and motion, right when they change. */
	void NoteLook();
	/** Before each turn: what nobody calls back about. */
	void NoteTurn();

	// Velmora::IAgentSeam
	virtual TSharedPtr<Velmora::FAgent> MakeAgent(TFunctionRef<TSharedPtr<Velmora::FAgent>()> MakeUsual) override;
	virtual TArray<Velmora::FConversationMetadata> ReadSummaries(TFunctionRef<TArray<Velmora::FConversationMetadata>()> ReadUsual) override;
	virtual void OnQuestion(const Velmora::FAgentQuestion* Question) override;
	virtual bool AnswerQuestion(uint32 Id, Velmora::EAgentAnswer Answer, TFunctionRef<bool()> AnswerUsual) override;
	virtual TOptional<Velmora::FLastMessage> GetLastMessage(TFunctionRef<TOptional<Velmora::FLastMessage>()> GetUsual) override;
	virtual FString TakeBackLastMessage(TFunctionRef<FString()> TakeBackUsual) override;
	virtual Velmora::FAgentTurnStatus GetTurnStatus(TFunctionRef<Velmora::FAgentTurnStatus()> GetUsual) override;

	// Velmora::IProjectFileSeam
	virtual void GetStatus(bool& bReady, bool& bIndexing, int32& Count) override;
	virtual void GetFiles(TArray<Velmora::FProjectFileCacheEntry>& Files) override;
	virtual bool MayScan() const override { return true; }

private:
	void NoteGate();
	void NoteOperations();
	/** Writes a line whose text differs from the last one of its kind. */
	void AddChanged(std::string& Last, FRecordWords&& Words);

	const std::shared_ptr<FRecordWriter> Writer;
	TSharedPtr<FRecordedWindow> Window;
	FDelegateHandle GateHandle;
	int32 AgentCount = 0;
	int32 OperationCount = 0;
	// What was written last.
	std::string LastMessage;
	std::string Look;
	std::string TurnStatus;
	std::string FileStatus;
	std::string FileList;
	/** What the last list from the background was, for the next one that is the same. Game thread. */
	std::shared_ptr<std::string> Summaries = std::make_shared<std::string>();
};

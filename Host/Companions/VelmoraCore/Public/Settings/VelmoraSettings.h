#pragma once

#include "CoreMinimal.h"
#include "UObject/Object.h"

/**
 * Settings of the product. Read and written through the class default object, kept with SaveConfig. Game thread.
 */
UCLASS(Config = EditorPerProjectUserSettings)
class VELMORACORE_API UVelmoraSettings : public UObject
{
	GENERATED_BODY()

public:
	using Super = UObject;

	/** Mode of a new conversation, numbered as Velmora::EConversationMode. Anything unknown means General. */
	UPROPERTY(Config, EditAnywhere, Category = "Conversation")
	uint8 DefaultConversationMode = 3;

	/** The engine source may be indexed. */
	UPROPERTY(Config, EditAnywhere, Category = "Code Index")
	bool bIncludeEngineSource = false;

	/** Absolute folder of the engine source. Empty for the folder "Source" of the engine, if there is one. Read when its index is first
	 * asked for. */
	UPROPERTY(Config, EditAnywhere, Category = "Code Index")
	FString EngineSourceFolder;

	/** Free text given to the agent in every conversation, as the three that follow. */
	UPROPERTY(Config, EditAnywhere, Category = "Conversation")
	FString ProjectDescription;

	UPROPERTY(Config, EditAnywhere, Category = "Conversation")
	FString CurrentAreaOfFocus;

	UPROPERTY(Config, EditAnywhere, Category = "Conversation")
	FString GuidelinesAndTips;

	UPROPERTY(Config, EditAnywhere, Category = "Conversation")
	FString Constraints;

	virtual void VisitConfigProperties(FHostConfigVisitor& Visitor) override;
	virtual FString GetConfigName() const override;
};

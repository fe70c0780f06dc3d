#include "Settings/VelmoraSettings.h"

#include "Host/HostConfig.h"
#include "UObject/Class.h"

namespace
{
	/** In the order of Velmora::EConversationMode. */
	constexpr const TCHAR* ModeNames[] = { TEXT("Advisor"), TEXT("Code"), TEXT("Assets"), TEXT("General") };
	constexpr int32 GeneralMode = 3;
}

IMPLEMENT_HOST_CLASS(UVelmoraSettings, UObject, "VelmoraCore")

void UVelmoraSettings::VisitConfigProperties(FHostConfigVisitor& Visitor)
{
	Super::VisitConfigProperties(Visitor);
	Visitor.Group(TEXT("Conversation"));
	int32 Mode = DefaultConversationMode;
	Visitor.Explain(TEXT("What the agent may do in a new conversation: only answer, change code, change assets, or all of it."));
	Visitor.Choice(TEXT("DefaultConversationMode"), Mode, ModeNames);
	DefaultConversationMode = static_cast<uint8>(Mode >= 0 && Mode <= GeneralMode ? Mode : GeneralMode);
	Visitor.Explain(TEXT("What the project is. The agent is given this text in every conversation, as the three below."));
	Visitor.Property(TEXT("ProjectDescription"), ProjectDescription);
	Visitor.Explain(TEXT("What is being worked on now."));
	Visitor.Property(TEXT("CurrentAreaOfFocus"), CurrentAreaOfFocus);
	Visitor.Explain(TEXT("How work is done in this project: style, habits, what has proved itself."));
	Visitor.Property(TEXT("GuidelinesAndTips"), GuidelinesAndTips);
	Visitor.Explain(TEXT("What the agent must not do."));
	Visitor.Property(TEXT("Constraints"), Constraints);
	Visitor.Group(TEXT("Code Index"));
	Visitor.Explain(TEXT("Keep an index of the engine\u2019s source, too, so that its symbols are found."));
	Visitor.Property(TEXT("bIncludeEngineSource"), bIncludeEngineSource);
	Visitor.Explain(TEXT("The folder of the engine\u2019s source. Empty for the folder \u201cSource\u201d of the engine. Read when its "
						 "index is first asked for."));
	Visitor.Property(TEXT("EngineSourceFolder"), EngineSourceFolder);
}

FString UVelmoraSettings::GetConfigName() const
{
	return TEXT("EditorPerProjectUserSettings");
}

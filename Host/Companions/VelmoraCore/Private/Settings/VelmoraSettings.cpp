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
	Visitor.Choice(TEXT("DefaultConversationMode"), Mode, ModeNames);
	DefaultConversationMode = static_cast<uint8>(Mode >= 0 && Mode <= GeneralMode ? Mode : GeneralMode);
	Visitor.Property(TEXT("ProjectDescription"), ProjectDescription);
	Visitor.Property(TEXT("CurrentAreaOfFocus"), CurrentAreaOfFocus);
	Visitor.Property(TEXT("GuidelinesAndTips"), GuidelinesAndTips);
	Visitor.Property(TEXT("Constraints"), Constraints);
	Visitor.Group(TEXT("Code Index"));
	Visitor.Property(TEXT("bIncludeEngineSource"), bIncludeEngineSource);
	Visitor.Property(TEXT("EngineSourceFolder"), EngineSourceFolder);
}

FString UVelmoraSettings::GetConfigName() const
{
	return TEXT("EditorPerProjectUserSettings");
}

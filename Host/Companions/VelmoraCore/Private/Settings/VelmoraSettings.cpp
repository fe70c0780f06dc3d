#include "Settings/VelmoraSettings.h"

#include "Host/HostConfig.h"
#include "UObject/Class.h"

IMPLEMENT_HOST_CLASS(UVelmoraSettings, UObject, "VelmoraCore")

void UVelmoraSettings::VisitConfigProperties(FHostConfigVisitor& Visitor)
{
	Super::VisitConfigProperties(Visitor);
	int32 Mode = DefaultConversationMode;
	Visitor.Property(TEXT("DefaultConversationMode"), Mode, 0, 3);
	DefaultConversationMode = static_cast<uint8>(Mode);
	Visitor.Property(TEXT("bIncludeEngineSource"), bIncludeEngineSource);
	Visitor.Property(TEXT("ProjectDescription"), ProjectDescription);
	Visitor.Property(TEXT("CurrentAreaOfFocus"), CurrentAreaOfFocus);
	Visitor.Property(TEXT("GuidelinesAndTips"), GuidelinesAndTips);
	Visitor.Property(TEXT("Constraints"), Constraints);
}

FString UVelmoraSettings::GetConfigName() const
{
	return TEXT("EditorPerProjectUserSettings");
}

#include "PluginDescription.h"

#include "Dom/JsonObject.h"
#include "Misc/FileHelper.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"

bool ReadPluginDescription(const FString& Path, FPluginDescriptor& OutDescriptor, FString& OutComplaint)
{
	FString Text;
	if (!FFileHelper::LoadFileToString(Text, *Path))
	{
		OutComplaint = FString::Printf(TEXT("The plug-in's description \"%s\" cannot be read."), *Path);
		return false;
	}
	TSharedPtr<FJsonObject> Object;
	const TSharedRef<TJsonReader<>> Reader = TJsonReaderFactory<>::Create(Text);
	if (!FJsonSerializer::Deserialize(Reader, Object) || !Object)
	{
		OutComplaint = FString::Printf(TEXT("The plug-in's description \"%s\" is no JSON object."), *Path);
		return false;
	}
	Object->TryGetNumberField(TEXT("Version"), OutDescriptor.Version);
	Object->TryGetStringField(TEXT("VersionName"), OutDescriptor.VersionName);
	Object->TryGetStringField(TEXT("FriendlyName"), OutDescriptor.FriendlyName);
	Object->TryGetStringField(TEXT("Description"), OutDescriptor.Description);
	Object->TryGetStringField(TEXT("Category"), OutDescriptor.Category);
	Object->TryGetStringField(TEXT("CreatedBy"), OutDescriptor.CreatedBy);
	Object->TryGetBoolField(TEXT("CanContainContent"), OutDescriptor.bCanContainContent);
	return true;
}

#include "PluginDescription.h"

#include "Dom/JsonObject.h"
#include "Misc/FileHelper.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"

bool ReadPluginDescription(const FString& Path, FPluginDescriptor& OutDescriptor, FString& OutComplaint)
{
	// The file is part of what is installed; without it nothing finds the module's resources.
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
	// Fields that are missing keep their defaults, as the editor takes them.
	Object->TryGetNumberField(TEXT("Version"), OutDescriptor.Version);
	Object->TryGetStringField(TEXT("VersionName"), OutDescriptor.VersionName);
	Object->TryGetStringField(TEXT("FriendlyName"), OutDescriptor.FriendlyName);
	Object->TryGetStringField(TEXT("Description"), OutDescriptor.Description);
	Object->TryGetStringField(TEXT("Category"), OutDescriptor.Category);
	Object->TryGetStringField(TEXT("CreatedBy"), OutDescriptor.CreatedBy);
	Object->TryGetBoolField(TEXT("CanContainContent"), OutDescriptor.bCanContainContent);
	return true;
}

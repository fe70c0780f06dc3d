#include "EditorServices.h"

#include "Host/HostAssets.h"
#include "Host/HostEditor.h"
#include "Host/HostFileNames.h"
#include "Host/HostServices.h"
#include "Misc/Paths.h"
#include "ProblemToasts.h"
#include "UObject/Object.h"

#include <filesystem>
#include <string>
#include <system_error>

namespace
{
	/** With all links followed; empty when there is no such thing. */
	std::string GetRealPath(const FString& Path)
	{
		std::error_code Error;
		const std::filesystem::path Real = std::filesystem::canonical(HostFileNameToBytes(Path), Error);
		return Error ? std::string() : Real.native();
	}

	bool Open(FHostLaunchRequest::EKind Kind, const FString& Path)
	{
		FHostLaunchRequest Request;
		Request.Kind = Kind;
		Request.Target = Path;
		// What keeps it from opening has been told to the user by the launcher.
		FString Reason;
		return FHostServices::Launch(Request, Reason);
	}

	bool OpenAssetFile(const UObject& Asset)
	{
		const FString File = FHostAssets::FindAssetFile(Asset.GetPathName());
		// An object path cannot leave the content folder by its text, but a link in the folder can.
		const std::string Folder = GetRealPath(FPaths::ProjectContentDir());
		const std::string Real = GetRealPath(File);
		if (Folder.empty() || !Real.starts_with(Folder + "/"))
		{
			return false;
		}
		return Open(FHostLaunchRequest::EKind::File, HostFileNameFromBytes(Real));
	}
}

void FEditorServices::Install()
{
	FHostEditor::StartUp();
	FHostEditor::SetOpenSourceHook([](const FHostOpenedSource& Source) { return Open(FHostLaunchRequest::EKind::Source, Source.Path); });
	// In the editor nothing would happen; here a user has clicked on something and wants to know.
	FHostEditor::SetMissingSourceHook([](const FString& Path) { FProblemToasts::Tell(Path + TEXT(" does not exist.")); });
	FHostEditor::SetOpenAssetHook([](UObject* Asset) { return OpenAssetFile(*Asset); });
}

void FEditorServices::Uninstall()
{
	FHostEditor::ShutDown();
}

#include "Changes/SteeringFiles.h"

#include <algorithm>
#include <iterator>

#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		constexpr std::string_view VersionControl = "it steers version control, which may run what it says";
		constexpr std::string_view BuildServer = "it says what a build server runs";
		constexpr std::string_view Editor = "it says what an editor runs";
		constexpr std::string_view Shell = "a shell runs it when it starts or enters the folder";
		constexpr std::string_view Debugger = "a debugger or editor runs it when it starts in the folder";
		constexpr std::string_view Packages = "a package or build tool runs what it says";
		constexpr std::string_view OwnSettings = "it holds settings of this program";

		struct FSteeringRow
		{
			/** Lower case. With a '/' at the end a folder, with a '*' at the start an ending, else a file's whole name. */
			std::string_view Name;
			std::string_view Why;
		};

		// clang-format off
		constexpr FSteeringRow SteeringRows[] = {
			// Folders, wherever they stand on the way.
			{ ".git/", VersionControl }, { ".hg/", VersionControl }, { ".svn/", VersionControl }, { ".jj/", VersionControl },
			{ ".husky/", VersionControl }, { ".githooks/", VersionControl },
			{ ".ci/", BuildServer }, { ".github/", BuildServer }, { ".gitlab/", BuildServer }, { ".gitea/", BuildServer },
			{ ".forgejo/", BuildServer }, { ".circleci/", BuildServer }, { ".buildkite/", BuildServer }, { ".woodpecker/", BuildServer },
			{ ".vscode/", Editor }, { ".idea/", Editor }, { ".vs/", Editor }, { ".zed/", Editor }, { ".fleet/", Editor },
			{ ".devcontainer/", Editor }, { ".nova/", Editor },
			{ ".cargo/", Packages }, { ".yarn/", Packages }, { ".mvn/", Packages }, { ".bundle/", Packages },
			{ ".config/fish/", Shell }, { "saved/config/", OwnSettings },
			// Files.
			{ ".git", VersionControl }, { ".gitattributes", VersionControl }, { ".gitmodules", VersionControl },
			{ ".gitconfig", VersionControl },
			{ ".hgrc", VersionControl }, { ".pre-commit-config.yaml", VersionControl }, { "lefthook.yml", VersionControl },
			{ "pre-commit", VersionControl }, { "commit-msg", VersionControl }, { "prepare-commit-msg", VersionControl },
			{ "post-commit", VersionControl }, { "pre-push", VersionControl }, { "post-checkout", VersionControl },
			{ "post-merge", VersionControl }, { "pre-rebase", VersionControl }, { "post-rewrite", VersionControl },
			{ "pre-receive", VersionControl }, { "post-receive", VersionControl },
			{ ".gitlab-ci.yml", BuildServer }, { ".travis.yml", BuildServer }, { "appveyor.yml", BuildServer },
			{ ".appveyor.yml", BuildServer },
			{ "azure-pipelines.yml", BuildServer }, { "jenkinsfile", BuildServer }, { ".drone.yml", BuildServer },
			{ ".woodpecker.yml", BuildServer },
			{ "bitbucket-pipelines.yml", BuildServer }, { ".cirrus.yml", BuildServer }, { "cloudbuild.yaml", BuildServer },
			{ "*.code-workspace", Editor }, { ".vimrc", Editor }, { ".nvimrc", Editor }, { ".exrc", Editor }, { ".nvim.lua", Editor },
			{ ".dir-locals.el", Editor }, { ".lvimrc", Editor },
			{ ".envrc", Shell }, { ".bashrc", Shell }, { ".bash_profile", Shell }, { ".bash_login", Shell }, { ".bash_logout", Shell },
			{ ".bash_aliases", Shell }, { ".profile", Shell }, { ".zshrc", Shell }, { ".zshenv", Shell }, { ".zprofile", Shell },
			{ ".zlogin", Shell }, { ".zlogout", Shell }, { ".kshrc", Shell }, { ".mkshrc", Shell }, { ".cshrc", Shell },
			{ ".tcshrc", Shell },
			{ ".login", Shell }, { ".logout", Shell }, { ".inputrc", Shell }, { ".xprofile", Shell }, { ".xsession", Shell },
			{ ".xinitrc", Shell },
			{ "config.fish", Shell }, { "profile.ps1", Shell }, { ".mise.toml", Shell }, { "mise.toml", Shell },
			{ ".gdbinit", Debugger }, { ".lldbinit", Debugger },
			{ ".npmrc", Packages }, { ".yarnrc", Packages }, { ".yarnrc.yml", Packages }, { ".pypirc", Packages },
			{ "pip.conf", Packages },
			{ "sitecustomize.py", Packages }, { "usercustomize.py", Packages },
		};

		constexpr std::string_view SecretNames[] = {
			".env", ".netrc", ".pgpass", ".git-credentials", ".npmrc", ".pypirc", "id_rsa", "id_dsa", "id_ecdsa",
			"id_ed25519", "credentials",
		};
		constexpr std::string_view SecretEndings[] = { ".pem", ".key", ".p12", ".pfx", ".jks", ".keystore", ".kdbx", ".ppk" };
		// clang-format on

		std::string_view LastPart(std::string_view Path)
		{
			return Path.substr(Path.rfind('/') + 1);
		}

		bool Steers(const FSteeringRow& Row, std::string_view LowerPath)
		{
			if (Row.Name.back() == '/')
			{
				return Utf8Text::StartsWith(LowerPath, Row.Name) || LowerPath.find('/' + std::string(Row.Name)) != std::string_view::npos;
			}
			const std::string_view Name = LastPart(LowerPath);
			return Row.Name.front() == '*' ? Utf8Text::EndsWith(Name, Row.Name.substr(1)) : Name == Row.Name;
		}
	}

	std::string DescribeSteering(std::string_view Path)
	{
		const std::string Lower = Utf8Text::ToLower(Path);
		const auto Row = std::find_if(
			std::begin(SteeringRows), std::end(SteeringRows), [&Lower](const FSteeringRow& Known) { return Steers(Known, Lower); });
		return Row == std::end(SteeringRows) ? std::string() : std::string(Row->Why);
	}

	bool IsSecretName(std::string_view Path)
	{
		const std::string Lower = Utf8Text::ToLower(Path);
		const std::string_view Name = LastPart(Lower);
		return std::find(std::begin(SecretNames), std::end(SecretNames), Name) != std::end(SecretNames) ||
			Utf8Text::StartsWith(Name, ".env.") ||
			std::any_of(std::begin(SecretEndings), std::end(SecretEndings),
				[Name](std::string_view Ending) { return Utf8Text::EndsWith(Name, Ending); });
	}
}

#pragma once

#include "CodeIntel/CodeIntelIndexManager.h"
#include "FileCache/ProjectFileCache.h"
#include "Host/CodeIndexControl.h"
#include "Host/HostTasks.h"
#include "Host/ProjectFileCacheControl.h"
#include "TemporaryProject.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

/** The index manager on a project of its own, with its files beside the project, and all that it told the user. */
class FCodeIndexTest : public ::testing::Test
{
protected:
	using FManager = Velmora::CodeIntel::FCodeIntelIndexManager;
	using FControl = Velmora::CodeIntel::FCodeIndexControl;
	using EIndexKind = Velmora::CodeIntel::EIndexKind;

	void SetUp() override
	{
		Folder = Project.Root.parent_path() / (Project.Root.filename().native() + "-index");
		std::filesystem::create_directories(Folder);
		Options.ProjectFolder = Text(Project.Root.native());
		Options.ProjectIndexPath = Text(GetIndexPath());
		Options.FindEngineFolder = [Engine = Text((Folder / "engine").native())] { return Engine; };
		Options.EngineIndexPath = Text((Folder / "engine.index.db").native());
		FControl::SetProblemHandler(
			[this](const FString& Sentence)
			{
				EXPECT_TRUE(IsInGameThread());
				Problems.push_back(Utf8(Sentence));
			});
	}

	void TearDown() override
	{
		FControl::Shutdown();
		FControl::SetProblemHandler(nullptr);
		Velmora::FProjectFileCacheControl::Shutdown();
		FHostTasks::WaitForBackground(10.0);
		FHostTasks::RunGameThreadTasks();
		std::error_code Error;
		std::filesystem::remove_all(Folder, Error);
	}

	static FManager& Manager() { return FManager::Get(); }

	std::string GetIndexPath() const { return (Folder / "project.index.db").native(); }

	/** Starts the manager and waits until the index it found is open. */
	void Open()
	{
		FControl::Initialize(Options);
		Settle();
	}

	void OpenAndBuild()
	{
		Open();
		Manager().RebuildIndex(true);
		Settle();
	}

	/** What runs in the background comes to its end, and what it tells arrives. */
	void Settle()
	{
		EXPECT_TRUE(FHostTasks::WaitForBackground(60.0));
		FHostTasks::RunGameThreadTasks();
	}

	static bool WaitUntil(const std::function<bool()>& Condition, double Seconds = 30.0)
	{
		const auto End = std::chrono::steady_clock::now() + std::chrono::duration<double>(Seconds);
		while (!Condition())
		{
			if (std::chrono::steady_clock::now() > End)
			{
				return false;
			}
			std::this_thread::sleep_for(std::chrono::milliseconds(2));
		}
		return true;
	}

	/** "Source/A.cpp:3 class FThing", with the scope in brackets. */
	static std::vector<std::string> Find(const std::string& Name, EIndexKind Kind = EIndexKind::Project)
	{
		std::vector<std::string> Lines;
		for (const Velmora::CodeIntel::FIndexSymbol& Symbol : FControl::FindSymbol(Name, 50, Kind).Symbols)
		{
			Lines.push_back(Symbol.Path + ':' + std::to_string(Symbol.Line) + ' ' + Symbol.Kind + ' ' + Symbol.Name +
				(Symbol.Scope.empty() ? "" : " [" + Symbol.Scope + ']'));
		}
		return Lines;
	}

	/** A script that stands in for the extractor. */
	void UseScript(const std::string& Body)
	{
		const std::filesystem::path Script = Folder / "extractor";
		std::ofstream(Script) << "#!/bin/sh\n" << Body;
		std::filesystem::permissions(Script, std::filesystem::perms::owner_all);
		Options.Extractor.Program = Text(Script.native());
	}

	std::string ReadBytes(const std::filesystem::path& Path) const
	{
		std::ifstream Stream(Path, std::ios::binary);
		return std::string(std::istreambuf_iterator<char>(Stream), {});
	}

	using FLines = std::vector<std::string>;

	FTemporaryProject Project;
	std::filesystem::path Folder;
	Velmora::CodeIntel::FCodeIndexOptions Options;
	std::vector<std::string> Problems;
};

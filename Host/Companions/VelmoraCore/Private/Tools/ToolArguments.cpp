#include "Tools/ToolArguments.h"

#include <charconv>
#include <utility>

#include "Dom/JsonObject.h"
#include "Dom/JsonValue.h"
#include "Serialization/JsonReader.h"
#include "Serialization/JsonSerializer.h"
#include "Text/Utf8Text.h"

namespace Velmora
{
	namespace
	{
		/** Lists within lists are nothing that a tool takes. */
		constexpr int MaxArgumentDepth = 3;

		/** Numbers as a person would write them: whole ones without a point. */
		std::string NumberText(double Number)
		{
			const bool bIsWhole = Number > -1e15 && Number < 1e15 && Number == static_cast<double>(static_cast<long long>(Number));
			return bIsWhole ? std::to_string(static_cast<long long>(Number)) : std::to_string(Number);
		}

		bool TakeObject(const FJsonObject& Object, int Depth, FToolArguments& Out, std::string& OutProblem);

		bool TakeScalar(const FJsonValue& Value, std::string& Out)
		{
			switch (Value.Type)
			{
			case EJson::String:
				Out = Utf8Text::FromString(Value.AsString());
				return true;
			case EJson::Number:
				Out = NumberText(Value.AsNumber());
				return true;
			case EJson::Boolean:
				Out = Value.AsBool() ? "true" : "false";
				return true;
			default:
				return false;
			}
		}

		bool TakeList(const std::string& Name, const FJsonValue& List, int Depth, FToolArguments& Out, std::string& OutProblem)
		{
			for (const TSharedPtr<FJsonValue>& Item : List.AsArray())
			{
				FToolArguments Taken;
				std::string Scalar;
				if (Item.IsValid() && Item->Type == EJson::Object)
				{
					if (!TakeObject(*Item->AsObject(), Depth + 1, Taken, OutProblem))
					{
						return false;
					}
				}
				// A list of plain texts is taken as a list of objects with a text each: models write either.
				else if (Item.IsValid() && TakeScalar(*Item, Scalar))
				{
					Taken.Set("text", std::move(Scalar));
				}
				else
				{
					OutProblem = "\"" + Name + "\" holds what is neither a text nor an object";
					return false;
				}
				Out.Add(Name, std::move(Taken));
			}
			return true;
		}

		bool TakeObject(const FJsonObject& Object, int Depth, FToolArguments& Out, std::string& OutProblem)
		{
			if (Depth > MaxArgumentDepth)
			{
				OutProblem = "the arguments are nested too deeply";
				return false;
			}
			for (const auto& [Key, Value] : Object.Values)
			{
				const std::string Name = Utf8Text::FromString(Key);
				std::string Scalar;
				// As if it had not been given, which is how models leave out what they need not say.
				if (!Value.IsValid() || Value->Type == EJson::Null)
				{
					continue;
				}
				if (TakeScalar(*Value, Scalar))
				{
					Out.Set(Name, std::move(Scalar));
				}
				else if (Value->Type == EJson::Array)
				{
					if (!TakeList(Name, *Value, Depth, Out, OutProblem))
					{
						return false;
					}
				}
				else
				{
					OutProblem = "\"" + Name + "\" is an object, which no tool takes there";
					return false;
				}
			}
			return true;
		}
	}

	bool FToolArguments::Parse(std::string_view Json, FToolArguments& Out, std::string& OutProblem)
	{
		Out = FToolArguments();
		// Some servers send nothing at all for a tool without arguments.
		if (Utf8Text::Trim(Json).empty())
		{
			return true;
		}
		TSharedPtr<FJsonObject> Object;
		const TSharedRef<TJsonReader<>> Reader = TJsonReaderFactory<>::Create(Utf8Text::ToString(Json));
		if (!FJsonSerializer::Deserialize(Reader, Object) || !Object.IsValid())
		{
			OutProblem = "the arguments are no JSON object";
			return false;
		}
		return TakeObject(*Object, 1, Out, OutProblem);
	}

	FToolArguments& FToolArguments::Set(std::string_view Name, std::string Value)
	{
		Texts.insert_or_assign(std::string(Name), std::move(Value));
		return *this;
	}

	FToolArguments& FToolArguments::Add(std::string_view Name, FToolArguments Item)
	{
		Lists[std::string(Name)].push_back(std::move(Item));
		return *this;
	}

	const std::string& FToolArguments::GetText(std::string_view Name) const
	{
		static const std::string None;
		const auto Found = Texts.find(Name);
		return Found == Texts.end() ? None : Found->second;
	}

	bool FToolArguments::GetNumber(std::string_view Name, int Default, int& Out) const
	{
		const auto Found = Texts.find(Name);
		Out = Default;
		if (Found == Texts.end())
		{
			return true;
		}
		const std::string& Text = Found->second;
		const auto [End, Error] = std::from_chars(Text.data(), Text.data() + Text.size(), Out);
		return Error == std::errc() && End == Text.data() + Text.size() && Out >= 0;
	}

	const std::vector<FToolArguments>& FToolArguments::GetList(std::string_view Name) const
	{
		static const std::vector<FToolArguments> None;
		const auto Found = Lists.find(Name);
		return Found == Lists.end() ? None : Found->second;
	}

	std::vector<std::string> FToolArguments::GetNames() const
	{
		std::vector<std::string> Names;
		for (const auto& Entry : Texts)
		{
			Names.push_back(Entry.first);
		}
		for (const auto& Entry : Lists)
		{
			Names.push_back(Entry.first);
		}
		return Names;
	}
}
